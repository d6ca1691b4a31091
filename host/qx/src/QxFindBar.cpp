#include "QxFindBar.h"

#include "qx/ZxResource.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTextBlock>
#include <QTextBrowser>
#include <QToolButton>

#include <algorithm>

namespace {

QToolButton* makeButton(const char* name, const char* icon, const QString& tip, QWidget* parent)
{
  auto* button = new QToolButton(parent);
  button->setObjectName(name);
  button->setIcon(ZxResource::readIcon(icon));
  button->setToolTip(tip);
  button->setAutoRaise(true);
  return button;
}

} // namespace

QxFindBar::QxFindBar(QTextBrowser* browser, QWidget* parent)
  : QWidget(parent), m_browser(browser), m_text(new QLineEdit(this)), m_result(new QLabel(this))
{
  m_text->setObjectName("find");
  m_text->setPlaceholderText(tr("Find in this page"));
  m_text->setClearButtonEnabled(true);
  m_text->setMaximumWidth(280);
  m_result->setObjectName("findResult");
  auto* next = makeButton("findNext", "Down.png", tr("Next place (F3)"), this);
  auto* previous = makeButton("findPrevious", "Up.png", tr("Previous place (Shift+F3)"), this);
  auto* close = makeButton("findClose", "Close.png", tr("Close (Esc)"), this);

  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(8, 4, 8, 4);
  for (QWidget* widget : {static_cast<QWidget*>(m_text), static_cast<QWidget*>(previous),
                          static_cast<QWidget*>(next), static_cast<QWidget*>(m_result)})
    row->addWidget(widget);
  row->addStretch(1);
  row->addWidget(close);

  connect(m_text, &QLineEdit::textChanged, this, [this] {
    markAll();
    move(false);
  });
  connect(next, &QToolButton::clicked, this, &QxFindBar::next);
  connect(previous, &QToolButton::clicked, this, &QxFindBar::previous);
  connect(close, &QToolButton::clicked, this, &QWidget::hide);
  connect(m_browser, &QTextBrowser::sourceChanged, this, &QxFindBar::markAll);
  hide();
}

void QxFindBar::open()
{
  show();
  m_text->setFocus();
  m_text->selectAll();
}

void QxFindBar::search(const QString& text, int number)
{
  show();
  m_text->setText(text);
  markAll();
  if (number < m_places.size()) select(m_places[number]);
}

void QxFindBar::markAll()
{
  m_places.clear();
  QList<QTextEdit::ExtraSelection> marks;
  const QString text = m_text->text();
  if (!text.isEmpty()) {
    QTextEdit::ExtraSelection mark;
    mark.format.setBackground(QColor(255, 213, 79));
    mark.format.setForeground(Qt::black);
    for (mark.cursor = m_browser->document()->find(text, 0); !mark.cursor.isNull();
         mark.cursor = m_browser->document()->find(text, mark.cursor)) {
      m_places.append(mark.cursor.selectionStart());
      marks.append(mark);
    }
  }
  m_browser->setExtraSelections(marks);
  // Typing on extends the place that is selected instead of leaving it.
  QTextCursor cursor = m_browser->textCursor();
  cursor.setPosition(cursor.selectionStart());
  m_browser->setTextCursor(cursor);
  showResult();
}

void QxFindBar::move(bool backwards)
{
  if (m_places.isEmpty()) return;
  const QTextCursor old = m_browser->textCursor();
  const int from = old.selectionStart() + (!backwards && old.hasSelection() ? 1 : 0);
  auto place = std::lower_bound(m_places.cbegin(), m_places.cend(), from);
  if (backwards) place = place == m_places.cbegin() ? m_places.cend() - 1 : place - 1;
  if (place == m_places.cend()) place = m_places.cbegin();
  select(*place);
}

void QxFindBar::select(int place)
{
  QTextCursor cursor(m_browser->document());
  cursor.setPosition(place);
  cursor.setPosition(place + static_cast<int>(m_text->text().size()), QTextCursor::KeepAnchor);
  m_browser->setTextCursor(cursor);
  showResult();
}

void QxFindBar::showResult()
{
  const auto place = m_places.indexOf(m_browser->textCursor().selectionStart());
  if (m_text->text().isEmpty())
    m_result->clear();
  else if (m_places.isEmpty())
    m_result->setText(tr("Not found"));
  else if (place < 0 || !m_browser->textCursor().hasSelection())
    m_result->setText(m_places.size() == 1 ? tr("1 place") : tr("%1 places").arg(m_places.size()));
  else
    m_result->setText(tr("%1 of %2").arg(place + 1).arg(m_places.size()));
}

void QxFindBar::keyPressEvent(QKeyEvent* event)
{
  switch (event->key()) {
  case Qt::Key_Return:
  case Qt::Key_Enter:
    return move(bool(event->modifiers() & Qt::ShiftModifier));
  case Qt::Key_Escape:
    hide();
    return m_browser->setFocus();
  default:
    QWidget::keyPressEvent(event);
  }
}
