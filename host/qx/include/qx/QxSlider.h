#pragma once

#include "mc/McDArray.h"

#include <QWidget>

class QStyleOptionSlider;

/// A horizontal slider over a range of real values, with tick marks at given values.
///
/// The mouse drags it, the wheel and the arrow keys step by the increment, Page keys (and the wheel with
/// Ctrl) by ten, Home and End go to the limits. Larger values lie on the right. Holds no more than what it
/// shows; setting the value it has emits nothing. Takes the focus by Tab and by click unless setFocusPolicy()
/// says otherwise.
class QxSlider : public QWidget {
  Q_OBJECT
  Q_PROPERTY(float value READ getValue WRITE setValue NOTIFY valueChanged USER true)
public:
  /// A range of 0 to 1, and the value 0.
  explicit QxSlider(QWidget* parent = nullptr);

  /// The value, between the limits.
  float getValue() const noexcept { return m_value; }
  float getMinimum() const noexcept { return m_minimum; }
  float getMaximum() const noexcept { return m_maximum; }
  /// Limits of the value; a maximum below the minimum counts as equal to it. A value outside of them moves to
  /// the nearer one, which emits valueChanged().
  void setMinMax(float minimum, float maximum);
  /// Step of keys and wheel, and the grid, counted from the minimum, that dragging snaps to. 0, as at the
  /// start, has no grid and steps by a hundredth of the range.
  void setIncrement(float increment);
  float getIncrement() const noexcept { return m_increment; }
  /// Marks these values instead of those marked before.
  void setTicks(const McDArray<float>& values);
  const McDArray<float>& getTicks() const noexcept { return m_ticks; }
  /// The style of the frame around the slider, as for QFrame::setFrameStyle(): shape and shadow.
  void setFrameStyle(int style);
  /// Moves the value by so many increments.
  void stepBy(int steps);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

public Q_SLOTS:
  /// Clamps to the limits; emits valueChanged() when that is another value. NaN changes nothing.
  void setValue(float value);

Q_SIGNALS:
  /// The value is another one, whoever has changed it.
  void valueChanged(float value);

protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

private:
  int frameWidth() const;
  QStyleOptionSlider styleOption() const;
  double pixelOf(float value) const;
  float valueAt(double pixel) const;
  void drawFrame(QPainter& painter) const;
  void drawFocus(QPainter& painter) const;
  void drawTicks(QPainter& painter) const;

  float m_value = 0.0f;
  float m_minimum = 0.0f;
  float m_maximum = 1.0f;
  float m_increment = 0.0f;
  McDArray<float> m_ticks;
  int m_frameStyle = 0;
  bool m_dragging = false;
  double m_grip = 0.0;  // where the handle is held: pixels to the right of its centre
  int m_wheelAngle = 0; // what is left of a wheel step, in eighths of a degree
};
