#include "qx/QxFullSlider.h"

#include "qx/QxSlider.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QLocale>

#include <algorithm>

namespace {

constexpr int kFieldBorder = 14; // frame, inner margins and cursor of the field beside its text, pixels

} // namespace

QxFullSlider::QxFullSlider(QWidget* parent, const char* name)
  : QWidget(parent), m_slider(new QxSlider(this)), m_field(new QLineEdit(this))
{
  setObjectName(QString::fromUtf8(name));
  m_slider->setObjectName("slider");
  m_field->setObjectName("field");
  m_slider->setAccessibleName(objectName());
  m_field->setAccessibleName(objectName());
  m_field->setAlignment(Qt::AlignRight);
  // A field lower than its style would like still shows whole digits.
  m_slider->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  m_field->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
  m_field->setMinimumHeight(1);
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);

  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(4);
  row->addWidget(m_slider);
  row->addWidget(m_field);

  connect(m_slider, &QxSlider::valueChanged, this, [this](float value) {
    showValue();
    Q_EMIT valueChanged(value);
  });
  connect(m_field, &QLineEdit::editingFinished, this, &QxFullSlider::takeText);
  fitField();
  showValue();
}

float QxFullSlider::getValue() const noexcept { return m_slider->getValue(); }
float QxFullSlider::getMinimum() const noexcept { return m_slider->getMinimum(); }
float QxFullSlider::getMaximum() const noexcept { return m_slider->getMaximum(); }

void QxFullSlider::setMinMax(float minimum, float maximum)
{
  m_slider->setMinMax(minimum, maximum);
  fitField();
}

void QxFullSlider::setIncrement(float increment)
{
  m_slider->setIncrement(increment);
  fitField();
}

void QxFullSlider::setFormat(const char* format)
{
  m_format = QString::fromUtf8(format);
  fitField();
  showValue();
}

void QxFullSlider::setSliderFrameStyle(int style) { m_slider->setFrameStyle(style); }

void QxFullSlider::setValue(float value) { m_slider->setValue(value); }

QString QxFullSlider::textOf(float value) const
{
  return QString::asprintf(m_format.toUtf8().constData(), double(value));
}

void QxFullSlider::showValue() { m_field->setText(textOf(getValue())); }

void QxFullSlider::takeText()
{
  // Text that nobody has changed may be a rounded form of the value, which is not to be lost.
  if (!m_field->isModified()) return;
  bool isNumber = false;
  const float typed = QLocale::c().toFloat(m_field->text().trimmed(), &isNumber);
  if (isNumber) setValue(typed);
  showValue();
}

void QxFullSlider::fitField()
{
  const float low = getMinimum(), high = getMaximum();
  const float step = m_slider->getIncrement() > 0.0f ? m_slider->getIncrement() : (high - low) / 100.0f;
  int width = 0;
  for (const float value : {low, high, low + step, high - step})
    width = std::max(width, m_field->fontMetrics().horizontalAdvance(textOf(value)));
  m_field->setFixedWidth(width + kFieldBorder);
  updateGeometry();
}

void QxFullSlider::keyPressEvent(QKeyEvent* event)
{
  // What the field does not take arrives here. Return has been dealt with: no default button may see it.
  switch (event->key()) {
  case Qt::Key_Return:
  case Qt::Key_Enter:
    return event->accept();
  case Qt::Key_Escape:
    if (!m_field->isModified()) return event->ignore();
    return showValue();
  case Qt::Key_Up:
    return m_slider->stepBy(1);
  case Qt::Key_Down:
    return m_slider->stepBy(-1);
  default:
    QWidget::keyPressEvent(event);
  }
}

void QxFullSlider::changeEvent(QEvent* event)
{
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) fitField();
  QWidget::changeEvent(event);
}
