#include "QxCommandLine.h"

#include <QKeyEvent>
#include <QRegularExpression>

#include <algorithm>

namespace {

constexpr int longestHistory = 500;

QString commonStart(const QStringList& words)
{
  QString start = words.value(0);
  for (const QString& word : words)
    while (!word.startsWith(start)) start.chop(1);
  return start;
}

} // namespace

QxCommandLine::QxCommandLine(QWidget* parent) : QLineEdit(parent)
{
  connect(this, &QLineEdit::returnPressed, this, &QxCommandLine::enter);
}

bool QxCommandLine::event(QEvent* event)
{
  if (event->type() == QEvent::KeyPress) {
    auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() == Qt::Key_Tab && key->modifiers() == Qt::NoModifier && !text().isEmpty()) {
      complete();
      return true;
    }
  }
  return QLineEdit::event(event);
}

void QxCommandLine::keyPressEvent(QKeyEvent* event)
{
  if (event->key() == Qt::Key_Up)
    walk(-1);
  else if (event->key() == Qt::Key_Down)
    walk(1);
  else
    QLineEdit::keyPressEvent(event);
}

void QxCommandLine::enter()
{
  const QString command = text().trimmed();
  if (command.isEmpty()) return;
  if (m_history.isEmpty() || m_history.last() != command) m_history << command;
  if (m_history.size() > longestHistory) m_history.removeFirst();
  m_position = static_cast<int>(m_history.size());
  clear();
  Q_EMIT entered(command);
}

void QxCommandLine::walk(int step)
{
  const int size = static_cast<int>(m_history.size());
  const int position = std::clamp(m_position + step, 0, size);
  if (position == m_position) return;
  if (m_position == size) m_draft = text();
  m_position = position;
  setText(position == size ? m_draft : m_history[position]);
}

void QxCommandLine::complete()
{
  if (!m_completions) return;
  const QString before = text().left(cursorPosition());
  const QStringList choices = m_completions(before);
  if (choices.isEmpty()) return;
  const QString completed = choices.size() == 1 ? choices.first() + ' ' : commonStart(choices);
  const auto begin = before.lastIndexOf(QRegularExpression("[\\s\\[;]")) + 1;
  const QString word = before.mid(begin);
  if (completed.size() <= word.size() && completed != word + ' ') {
    Q_EMIT choicesFound(choices);
    return;
  }
  setSelection(static_cast<int>(begin), static_cast<int>(word.size()));
  insert(completed);
}
