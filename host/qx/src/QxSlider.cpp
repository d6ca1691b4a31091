#include "qx/QxSlider.h"

#include "QxSliderAccessible.h"

#include "mc/McRound.h"

#include <QFrame>
#include <QKeyEvent>
#include <QPainter>
#include <QStyleOptionSlider>
#include <QStylePainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kStylePositions = 1 << 20; // positions of the handle that the style distinguishes
constexpr int kTickHeight = 4;           // room below the groove, pixels
constexpr double kTickHalfWidth = 3.5;
constexpr int kPage = 10;
constexpr int kWheelStep = 120; // one notch, in eighths of a degree

} // namespace

QxSlider::QxSlider(QWidget* parent) : QWidget(parent)
{
  installSliderAccessibility();
  setFocusPolicy(Qt::StrongFocus);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  setAttribute(Qt::WA_Hover);
}

void QxSlider::setMinMax(float minimum, float maximum)
{
  m_minimum = minimum;
  m_maximum = std::max(minimum, maximum);
  setValue(m_value);
  update();
}

void QxSlider::setIncrement(float increment) { m_increment = std::max(0.0f, increment); }

void QxSlider::setTicks(const McDArray<float>& values)
{
  if (m_ticks == values) return;
  m_ticks = values;
  update();
}

void QxSlider::setFrameStyle(int style)
{
  m_frameStyle = style;
  updateGeometry();
  update();
}

void QxSlider::setValue(float value)
{
  if (std::isnan(value)) return;
  const float inside = std::clamp(value, m_minimum, m_maximum);
  if (inside == m_value) return;
  m_value = inside;
  update();
  announceSliderValue(this);
  Q_EMIT valueChanged(m_value);
}

void QxSlider::stepBy(int steps)
{
  const double minimum = m_minimum;
  const double step = m_increment > 0.0f ? m_increment : (double(m_maximum) - minimum) / 100.0;
  if (!(step > 0.0)) return;
  // From a value on the grid to another one, so that many steps of 0.1 do not add up their errors.
  const double position = (m_value - minimum) / step;
  const double nearest = mc::roundHalfUpReal(position);
  const bool onGrid = std::abs(position - nearest) < 1e-3;
  setValue(static_cast<float>(minimum + ((onGrid ? nearest : position) + steps) * step));
}

int QxSlider::frameWidth() const { return (m_frameStyle & QFrame::Shape_Mask) == QFrame::NoFrame ? 0 : 1; }

QSize QxSlider::sizeHint() const
{
  const int frame = 2 * frameWidth();
  const int thickness = style()->pixelMetric(QStyle::PM_SliderControlThickness, nullptr, this);
  return {160 + frame, std::max(15, thickness) + kTickHeight + frame};
}

QSize QxSlider::minimumSizeHint() const { return {48, sizeHint().height()}; }

QStyleOptionSlider QxSlider::styleOption() const
{
  QStyleOptionSlider option;
  option.initFrom(this);
  const int frame = frameWidth();
  option.rect = rect().adjusted(frame + 1, frame, -frame - 1, -frame - kTickHeight);
  option.state |= QStyle::State_Horizontal;
  option.direction = Qt::LeftToRight;
  option.orientation = Qt::Horizontal;
  option.subControls = QStyle::SC_SliderGroove | QStyle::SC_SliderHandle;
  if (m_dragging) {
    option.activeSubControls = QStyle::SC_SliderHandle;
    option.state |= QStyle::State_Sunken;
  }
  option.maximum = kStylePositions;
  const double range = double(m_maximum) - m_minimum;
  const double fraction = range > 0.0 ? (double(m_value) - m_minimum) / range : 0.0;
  option.sliderPosition = option.sliderValue = mc::roundHalfUp(fraction * kStylePositions);
  return option;
}

double QxSlider::pixelOf(float value) const
{
  const QStyleOptionSlider option = styleOption();
  const int handle = style()->pixelMetric(QStyle::PM_SliderLength, &option, this);
  const double range = double(m_maximum) - m_minimum;
  const double fraction = range > 0.0 ? (double(value) - m_minimum) / range : 0.0;
  return option.rect.x() + 0.5 * handle + fraction * (option.rect.width() - handle);
}

float QxSlider::valueAt(double pixel) const
{
  const double first = pixelOf(m_minimum);
  const double width = pixelOf(m_maximum) - first;
  if (!(width > 0.0)) return m_value;
  const double offset = (double(m_maximum) - m_minimum) * std::clamp((pixel - first) / width, 0.0, 1.0);
  const double step = m_increment;
  const double snapped = step > 0.0 ? mc::roundHalfUpReal(offset / step) * step : offset;
  return static_cast<float>(m_minimum + snapped);
}

void QxSlider::drawFrame(QPainter& painter) const
{
  if (frameWidth() == 0) return;
  QStyleOptionFrame option;
  option.initFrom(this);
  option.frameShape = QFrame::Shape(m_frameStyle & QFrame::Shape_Mask);
  option.lineWidth = 1;
  const int shadow = m_frameStyle & QFrame::Shadow_Mask;
  if (shadow == QFrame::Sunken) option.state |= QStyle::State_Sunken;
  if (shadow == QFrame::Raised) option.state |= QStyle::State_Raised;
  // A frame without a shadow is a quiet line: the style would draw it in the colour of text.
  if (shadow != QFrame::Sunken && shadow != QFrame::Raised)
    option.palette.setColor(foregroundRole(), palette().color(QPalette::Mid));
  style()->drawControl(QStyle::CE_ShapedFrame, &option, &painter, this);
}

/// As fields of text show it: not every style marks a slider.
void QxSlider::drawFocus(QPainter& painter) const
{
  if (!hasFocus()) return;
  painter.setPen(palette().color(QPalette::Highlight));
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 2.0, 2.0);
}

void QxSlider::drawTicks(QPainter& painter) const
{
  painter.setPen(Qt::NoPen);
  painter.setBrush(palette().color(QPalette::WindowText));
  const double bottom = height() - frameWidth();
  for (const float value : m_ticks) {
    if (!(value >= m_minimum && value <= m_maximum)) continue;
    const double x = pixelOf(value);
    painter.drawPolygon(QPolygonF({QPointF(x, bottom - kTickHeight), QPointF(x + kTickHalfWidth, bottom),
                                   QPointF(x - kTickHalfWidth, bottom)}));
  }
}

void QxSlider::paintEvent(QPaintEvent*)
{
  QStylePainter painter(this);
  drawFrame(painter);
  const QStyleOptionSlider option = styleOption();
  painter.drawComplexControl(QStyle::CC_Slider, option);
  painter.setRenderHint(QPainter::Antialiasing);
  drawTicks(painter);
  drawFocus(painter);
}

void QxSlider::mousePressEvent(QMouseEvent* event)
{
  if (event->button() != Qt::LeftButton) return event->ignore();
  const QStyleOptionSlider option = styleOption();
  const double x = event->position().x();
  const double handle = style()->pixelMetric(QStyle::PM_SliderLength, &option, this);
  const double offset = x - pixelOf(m_value);
  m_dragging = true;
  m_grip = std::abs(offset) <= 0.5 * handle ? offset : 0.0;
  if (m_grip != offset) setValue(valueAt(x));
  update();
}

void QxSlider::mouseMoveEvent(QMouseEvent* event)
{
  if (m_dragging) setValue(valueAt(event->position().x() - m_grip));
}

void QxSlider::mouseReleaseEvent(QMouseEvent* event)
{
  if (event->button() != Qt::LeftButton) return event->ignore();
  m_dragging = false;
  update();
}

void QxSlider::wheelEvent(QWheelEvent* event)
{
  const QPoint angle = event->angleDelta();
  m_wheelAngle += angle.y() != 0 ? angle.y() : -angle.x();
  const int steps = m_wheelAngle / kWheelStep;
  m_wheelAngle -= steps * kWheelStep;
  stepBy((event->modifiers() & Qt::ControlModifier) ? steps * kPage : steps);
  event->accept();
}

void QxSlider::keyPressEvent(QKeyEvent* event)
{
  switch (event->key()) {
  case Qt::Key_Left:
  case Qt::Key_Down:
    return stepBy(-1);
  case Qt::Key_Right:
  case Qt::Key_Up:
    return stepBy(1);
  case Qt::Key_PageDown:
    return stepBy(-kPage);
  case Qt::Key_PageUp:
    return stepBy(kPage);
  case Qt::Key_Home:
    return setValue(m_minimum);
  case Qt::Key_End:
    return setValue(m_maximum);
  default:
    QWidget::keyPressEvent(event);
  }
}
