#include "QxRangeSlider.h"

#include <QKeyEvent>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr double handleWidth = 9.0;
constexpr double trackHeight = 8.0;

} // namespace

QxRangeSlider::QxRangeSlider(QWidget* parent) : QWidget(parent)
{
  setFocusPolicy(Qt::StrongFocus);
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

QSize QxRangeSlider::sizeHint() const
{
  return {fontMetrics().averageCharWidth() * 30, fontMetrics().height() + 6};
}

void QxRangeSlider::setLimits(double minimum, double maximum)
{
  m_minimum = minimum;
  m_maximum = std::max(maximum, std::nextafter(minimum, maximum + 1.0));
  update();
}

void QxRangeSlider::setRange(double low, double high)
{
  m_low = low;
  m_high = high;
  update();
}

QRectF QxRangeSlider::track() const
{
  const double side = handleWidth / 2 + 1;
  return QRectF(rect()).adjusted(side, (height() - trackHeight) / 2, -side, -(height() - trackHeight) / 2);
}

double QxRangeSlider::position(double value) const
{
  const double share = (value - m_minimum) / (m_maximum - m_minimum);
  return track().left() + std::clamp(share, 0.0, 1.0) * track().width();
}

double QxRangeSlider::valueAt(double x) const
{
  return m_minimum + (x - track().left()) / std::max(1.0, track().width()) * (m_maximum - m_minimum);
}

QxRangeSlider::Part QxRangeSlider::partAt(double x) const
{
  const double toLow = std::abs(x - position(m_low)), toHigh = std::abs(x - position(m_high));
  if (x > position(m_low) + handleWidth && x < position(m_high) - handleWidth) return Part::Both;
  // Where the ends lie on each other the one that can move there is meant.
  if (toLow == toHigh) return x < position(m_low) ? Part::Low : Part::High;
  return toLow < toHigh ? Part::Low : Part::High;
}

void QxRangeSlider::move(Part part, double distance)
{
  double low = m_low, high = m_high;
  if (part == Part::Low) low = std::clamp(low + distance, m_minimum, high);
  if (part == Part::High) high = std::clamp(high + distance, low, m_maximum);
  if (part == Part::Both) {
    // An end that lies outside of the limits does not jump to them.
    const double down = std::min(0.0, m_minimum - low), up = std::max(0.0, m_maximum - high);
    low += std::clamp(distance, down, up);
    high += std::clamp(distance, down, up);
  }
  if (low == m_low && high == m_high) return;
  setRange(low, high);
  Q_EMIT rangeEntered(low, high);
}

void QxRangeSlider::paintEvent(QPaintEvent*)
{
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QRectF bar = track();
  QLinearGradient grey(position(m_low), 0, std::max(position(m_high), position(m_low) + 0.5), 0);
  grey.setColorAt(0, Qt::black);
  grey.setColorAt(1, Qt::white);
  painter.setPen(palette().color(QPalette::Mid));
  painter.setBrush(grey);
  painter.drawRect(bar);
  for (const double x : {position(m_low), position(m_high)}) {
    const QRectF handle(x - handleWidth / 2, 2, handleWidth, height() - 4);
    const bool isActive = hasFocus() && x == position(m_part == Part::High ? m_high : m_low);
    painter.setPen(palette().color(isActive ? QPalette::Highlight : QPalette::Dark));
    painter.setBrush(palette().color(QPalette::Button));
    painter.drawRoundedRect(handle, 2, 2);
  }
}

void QxRangeSlider::mousePressEvent(QMouseEvent* event)
{
  if (event->button() != Qt::LeftButton) return;
  m_part = partAt(event->position().x());
  m_lastValue = valueAt(event->position().x());
  update();
}

void QxRangeSlider::mouseMoveEvent(QMouseEvent* event)
{
  if (!(event->buttons() & Qt::LeftButton)) return;
  const double value = valueAt(event->position().x());
  if (m_part == Part::Low) move(m_part, value - m_low);
  if (m_part == Part::High) move(m_part, value - m_high);
  if (m_part == Part::Both) move(m_part, value - m_lastValue);
  m_lastValue = value;
}

void QxRangeSlider::keyPressEvent(QKeyEvent* event)
{
  const double step = (m_maximum - m_minimum) / 100;
  switch (event->key()) {
  case Qt::Key_Left:
    return move(m_part, -step);
  case Qt::Key_Right:
    return move(m_part, step);
  case Qt::Key_PageDown:
    return move(m_part, -10 * step);
  case Qt::Key_PageUp:
    return move(m_part, 10 * step);
  case Qt::Key_Down:
    m_part = Part::Low;
    return update();
  case Qt::Key_Up:
    m_part = Part::High;
    return update();
  default:
    QWidget::keyPressEvent(event);
  }
}
