#include "QxFloatField.h"

#include "QxObjectText.h"

#include <QKeyEvent>

#include <charconv>
#include <cmath>
#include <optional>

namespace {

std::optional<float> parse(const QString& text)
{
  const QByteArray bytes = text.trimmed().toLatin1();
  const char* begin = bytes.startsWith('+') ? bytes.data() + 1 : bytes.data();
  const char* const end = bytes.data() + bytes.size();
  float value = 0.0f;
  const auto [rest, error] = std::from_chars(begin, end, value);
  if (error != std::errc() || rest != end || !std::isfinite(value)) return std::nullopt;
  return value;
}

} // namespace

QxFloatField::QxFloatField(QWidget* parent) : QLineEdit(parent)
{
  setMinimumWidth(sizeHint().width());
  giveBack();
  connect(this, &QLineEdit::editingFinished, this, &QxFloatField::take);
}

QSize QxFloatField::sizeHint() const
{
  return {fontMetrics().averageCharWidth() * 10, QLineEdit::sizeHint().height()};
}

void QxFloatField::setValue(float value)
{
  m_value = value;
  if (!hasFocus() || !isModified()) giveBack();
}

void QxFloatField::take()
{
  const std::optional<float> entered = isModified() ? parse(text()) : std::nullopt;
  const bool isOther = entered && *entered != m_value;
  if (isOther) m_value = *entered;
  giveBack();
  if (isOther) Q_EMIT valueEntered(m_value);
}

void QxFloatField::keyPressEvent(QKeyEvent* event)
{
  if (event->key() == Qt::Key_Escape && isModified()) {
    giveBack();
    selectAll();
    return;
  }
  QLineEdit::keyPressEvent(event);
}

void QxFloatField::giveBack()
{
  const QString shown = QxObjectText::number(m_value);
  if (text() != shown) setText(shown);
  setModified(false);
}
