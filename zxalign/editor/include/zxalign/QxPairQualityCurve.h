#pragma once

#include <QWidget>

class PairQualities;

/// The quality of all pairs as a curve over the stack, with the worst pair and the present one marked. A
/// click chooses a pair.
class QxPairQualityCurve : public QWidget {
  Q_OBJECT
public:
  /// The qualities outlive the widget.
  explicit QxPairQualityCurve(const PairQualities& qualities, QWidget* parent = nullptr);
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

  /// The pair whose point is nearest to a column of the widget; -1 without pairs.
  int pairAt(double x) const;
  /// Where the point of a pair is drawn; the upper end of the scale while its quality is not known.
  QPointF pointOf(int lower) const;

Q_SIGNALS:
  /// A pair was clicked; its lower slice.
  void pairChosen(int lower);

protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  bool event(QEvent* event) override;

private:
  QRectF plot() const;
  /// The lower end of the scale: a multiple of a tenth that is below every quality.
  double lowest() const;
  void paintScale(QPainter& painter) const;
  void paintCurve(QPainter& painter) const;
  void paintMarks(QPainter& painter) const;

  const PairQualities& m_qualities;
};
