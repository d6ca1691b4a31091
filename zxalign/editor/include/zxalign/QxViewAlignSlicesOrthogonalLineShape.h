#pragma once

#include "qx/QxImageViewerShape.h"

#include <QLineF>

/// The red marker of an orthogonal view at the slice that is being edited: two lines, one pixel thick, that
/// reach from both sides of the image towards its middle. At 100 percent they meet.
class QxViewAlignSlicesOrthogonalLineShape : public QxImageViewerShape {
public:
  /// Marks a slice, counted from 0.
  explicit QxViewAlignSlicesOrthogonalLineShape(int sliceNumber) : m_sliceNumber(sliceNumber) {}

  int sliceNumber() const noexcept { return m_sliceNumber; }
  void setSliceNumber(int z) { m_sliceNumber = z; }
  /// Length of both lines together in percent of the image's width; values outside of 0 to 100 are ignored.
  void setOrthoViewLineWidth(int percent);
  int orthoViewLineWidth() const noexcept { return m_lineLength; }

  void render(QxImageViewer* viewer) override;
  void paint(QPainter& painter, QxImageViewer* viewer) override;

private:
  struct Lines {
    QLineF left, right; // oriented screen, whole pixels
  };
  Lines lines(const QxImageViewer& viewer) const;

  int m_sliceNumber;
  int m_lineLength = 50;
};
