#include "QxWorkArea.h"

#include "mc/McRound.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>

#include <algorithm>

namespace {

constexpr int barSteps = 1000;
constexpr int repaintMilliseconds = 100;

bool isInput(QEvent::Type type)
{
  switch (type) {
  case QEvent::MouseButtonPress:
  case QEvent::MouseButtonRelease:
  case QEvent::MouseButtonDblClick:
  case QEvent::Wheel:
  case QEvent::KeyPress:
  case QEvent::Shortcut:
  case QEvent::ShortcutOverride:
  case QEvent::ContextMenu:
  case QEvent::TouchBegin:
  case QEvent::TabletPress:
  case QEvent::DragEnter:
  case QEvent::Drop:
    return true;
  default:
    return false;
  }
}

} // namespace

QxWorkArea::QxWorkArea(QStatusBar* statusBar)
  : QObject(statusBar), m_label(new QLabel(statusBar)), m_bar(new QProgressBar(statusBar)),
    m_button(new QPushButton(tr("Stop"), statusBar))
{
  m_label->setObjectName("progressText");
  m_label->setIndent(m_label->fontMetrics().averageCharWidth());
  m_label->setTextFormat(Qt::PlainText);
  m_label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // A long text widens no window.
  m_bar->setObjectName("progressBar");
  m_bar->setRange(0, barSteps);
  m_bar->setFixedWidth(m_bar->fontMetrics().averageCharWidth() * 32);
  m_button->setObjectName("stopButton");
  m_button->setToolTip(tr("Stop the work that is going on (Esc)"));
  statusBar->addWidget(m_label, 1);
  statusBar->addPermanentWidget(m_bar);
  statusBar->addPermanentWidget(m_button);
  keepUsable(m_button);
  m_bar->hide();
  m_button->hide();
  connect(m_button, &QPushButton::clicked, this, &QxWorkArea::stop);
  m_lastRepaint.start();
  setTheWorkArea(this);
}

QxWorkArea::~QxWorkArea()
{
  if (getTheWorkArea() == this) setTheWorkArea(nullptr);
  if (m_wasBusy) QApplication::restoreOverrideCursor();
}

void QxWorkArea::processPendingEvents() { QCoreApplication::processEvents(); }

void QxWorkArea::stop()
{
  if (!isWorking()) return;
  m_stop = true;
  m_button->setEnabled(false);
}

void QxWorkArea::show()
{
  m_label->setText(QString::fromStdString(getProgressText()));
  m_label->setToolTip(m_label->text());
  m_bar->setValue(mc::roundHalfUp(static_cast<double>(getProgressFraction()) * barSteps));
  // Work that seldom looks for events is seen to go on, too.
  if (!isWorking() || m_lastRepaint.elapsed() < repaintMilliseconds) return;
  m_lastRepaint.restart();
  m_label->repaint();
  m_bar->repaint();
}

void QxWorkArea::workingChanged()
{
  m_stop = false;
  if (isWorking()) m_textBefore = m_label->text();
  m_bar->setVisible(isWorking());
  m_button->setVisible(isWorking());
  m_button->setEnabled(isWorking());
  show();
  // What is said of work that has ended is said after it; until then what was said before it holds.
  if (!isWorking()) m_label->setText(m_textBefore);
  followBusy();
}

void QxWorkArea::followBusy()
{
  if (isBusy() == m_wasBusy) return;
  m_wasBusy = isBusy();
  if (m_wasBusy) {
    QApplication::setOverrideCursor(Qt::BusyCursor);
    qApp->installEventFilter(this);
  } else {
    qApp->removeEventFilter(this);
    QApplication::restoreOverrideCursor();
  }
}

bool QxWorkArea::mayReceive(QObject* watched, QEvent* event)
{
  const QWidget* dialog = QApplication::activeModalWidget();
  if (event->type() == QEvent::Shortcut) return dialog; // Those of other windows do not fire beside a dialog.
  auto* widget = qobject_cast<QWidget*>(watched);
  if (!widget || std::find(m_usable.begin(), m_usable.end(), widget) != m_usable.end())
    return true; // Windows pass on to the widgets inside.
  if (dialog) return widget->window() == dialog || widget->window() == QApplication::activePopupWidget();
  const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride;
  const int key = isKey ? static_cast<QKeyEvent*>(event)->key() : 0;
  if (key == Qt::Key_Escape) stop();
  // These do nothing by themselves; who missed them would take the next key for another one.
  return key == Qt::Key_Control || key == Qt::Key_Shift;
}

bool QxWorkArea::eventFilter(QObject* watched, QEvent* event)
{
  if (!isInput(event->type())) return false;
  if (mayReceive(watched, event)) return false;
  event->setAccepted(event->type() != QEvent::ShortcutOverride && event->type() != QEvent::DragEnter);
  return true;
}
