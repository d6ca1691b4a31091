#pragma once

#include <QWidget>

/// A slider with two ends over a range of values: each end and the part between them can be dragged.
///
/// Left and Right move what was touched last by a hundredth of the limits, Page keys by a tenth; Up chooses
/// the high end for them, Down the low one.
class QxRangeSlider : public QWidget {
  Q_OBJECT
public:
  explicit QxRangeSlider(QWidget* parent);

  /// The range of the whole slider; minimum is below maximum.
  void setLimits(double minimum, double maximum);
  /// The ends; one outside of the limits is drawn at the border. Emits nothing.
  void setRange(double low, double high);
  double low() const noexcept { return m_low; }
  double high() const noexcept { return m_high; }
  QSize sizeHint() const override;

Q_SIGNALS:
  /// The user has moved an end.
  void rangeEntered(double low, double high);

protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

private:
  enum class Part { Low, High, Both };
  double position(double value) const;
  double valueAt(double x) const;
  Part partAt(double x) const;
  void move(Part part, double distance);
  QRectF track() const;

  double m_minimum = 0.0;
  double m_maximum = 255.0;
  double m_low = 0.0;
  double m_high = 255.0;
  Part m_part = Part::Low;
  double m_lastValue = 0.0; // under the mouse while it drags
};
