#pragma once

#include "mc/McDArray.h"

#include <QWidget>

/// A horizontal slider over a range of real values, with tick marks at given values.
///
/// The mouse drags it, the wheel and the arrow keys step by the increment, Page keys by ten, Home and End go
/// to the limits. Holds no more than what it shows; setting the value it has emits nothing.
class QxSlider : public QWidget {
  Q_OBJECT
public:
  explicit QxSlider(QWidget* parent = nullptr);

  float getValue() const noexcept { return m_value; }
  float getMinimum() const noexcept { return m_minimum; }
  float getMaximum() const noexcept { return m_maximum; }
  /// Limits of the value, which moves inside them. maximum is not below minimum.
  void setMinMax(float minimum, float maximum);
  /// Step of keys and wheel, and the grid, counted from the minimum, that dragging snaps to; positive.
  void setIncrement(float increment);
  /// Marks these values instead of those marked before.
  void setTicks(const McDArray<float>& values);
  const McDArray<float>& getTicks() const noexcept { return m_ticks; }
  /// The style of the frame around the slider, as for QFrame::setFrameStyle().
  void setFrameStyle(int style);

  QSize sizeHint() const override;

public Q_SLOTS:
  /// Clamps to the limits; emits valueChanged() when that is another value.
  void setValue(float value);

Q_SIGNALS:
  void valueChanged(float value);

protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

private:
  float m_value = 0.0f;
  float m_minimum = 0.0f;
  float m_maximum = 1.0f;
  float m_increment = 0.0f;
  McDArray<float> m_ticks;
  int m_frameStyle = 0;
};
