#include "QxPortPanel.h"

#include "QxObjectText.h"
#include "QxPoolWatcher.h"
#include "QxPortWidget.h"
#include "zx/ZxModule.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>

QxPortPanel::QxPortPanel(QxPoolWatcher* watcher, QWidget* parent) : QScrollArea(parent)
{
  setObjectName("portPanel");
  setFrameShape(NoFrame);
  setWidgetResizable(true);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  connect(watcher, &QxPoolWatcher::changed, this, &QxPortPanel::refresh);
  connect(watcher, &QxPoolWatcher::removed, this, [this](ZxObject* gone) {
    if (gone == m_object) setObject(nullptr);
  });
  rebuild();
}

void QxPortPanel::setObject(ZxObject* object)
{
  if (object == m_object) return;
  m_object = object;
  rebuild();
}

void QxPortPanel::rebuild()
{
  m_rows.clear();
  // The panel may be told of its object's end by a control of its own.
  if (QWidget* before = takeWidget()) {
    before->hide();
    before->deleteLater();
  }
  auto* page = new QWidget(this);
  auto* grid = new QGridLayout(page);
  grid->setColumnStretch(1, 1);
  auto* head = new QHBoxLayout;
  m_icon = new QLabel(page);
  m_title = new QLabel(page);
  m_title->setObjectName("objectTitle");
  m_title->setTextFormat(Qt::PlainText);
  QFont bold = m_title->font();
  bold.setBold(true);
  m_title->setFont(bold);
  head->addWidget(m_icon);
  head->addWidget(m_title, 1);
  grid->addLayout(head, 0, 0, 1, 2);
  m_details = new QLabel(page);
  m_details->setObjectName("objectDetails");
  m_details->setTextFormat(Qt::PlainText);
  m_details->setWordWrap(true);
  m_details->setTextInteractionFlags(Qt::TextSelectableByMouse);
  grid->addWidget(m_details, 1, 0, 1, 2);
  if (auto* module = dynamic_cast<ZxModule*>(m_object)) addPorts(*module, page, grid);
  grid->setRowStretch(grid->rowCount(), 1);
  setWidget(page);
  refresh();
}

void QxPortPanel::addPorts(ZxModule& module, QWidget* page, QGridLayout* grid)
{
  const int lineHeight = QPushButton(page).sizeHint().height();
  const int longestLabel = fontMetrics().averageCharWidth() * 22; // One is not to narrow all controls.
  for (ZxPort* port : module.getPorts()) {
    QxPortWidget* widget = QxPortWidget::create(*port, page);
    if (!widget) continue;
    auto* label = new QLabel(QxObjectText::portLabel(*port), page);
    label->setToolTip(QString::fromStdString(port->getTip()));
    const int row = grid->rowCount();
    if (label->sizeHint().width() > longestLabel) {
      grid->addWidget(label, row, 0, 1, 2);
      grid->addWidget(widget, row + 1, 1);
    } else {
      const bool mayHaveRows = widget->layout()->hasHeightForWidth();
      if (mayHaveRows) label->setMinimumHeight(lineHeight); // It stands beside the first one.
      grid->addWidget(label, row, 0, mayHaveRows ? Qt::AlignTop : Qt::AlignVCenter);
      grid->addWidget(widget, row, 1);
    }
    m_rows.push_back({widget, label});
  }
}

void QxPortPanel::refresh()
{
  m_icon->setVisible(m_object);
  m_details->setVisible(m_object && m_rows.empty());
  m_title->setEnabled(m_object);
  if (!m_object) {
    m_title->setText(tr("Nothing is selected."));
    return;
  }
  const int size = fontMetrics().height();
  m_icon->setPixmap(QxObjectText::icon(*m_object).pixmap(size, size));
  m_title->setText(QxObjectText::label(*m_object));
  m_details->setText(QxObjectText::toolTip(*m_object).section('\n', 1));
  for (const Row& row : m_rows) {
    const ZxPort& port = row.widget->port();
    row.widget->refresh();
    row.widget->setEnabled(port.isSensitive());
    row.label->setEnabled(port.isSensitive());
    row.widget->setVisible(port.isVisible());
    row.label->setVisible(port.isVisible());
  }
  // Narrower than its content the panel would have to be scrolled sideways.
  setMinimumWidth(widget()->minimumSizeHint().width() + verticalScrollBar()->sizeHint().width());
}
