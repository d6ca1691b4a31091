#include "zxalign/QxViewAlignSlicesOrthogonalLineShape.h"

#include "mc/McRound.h"
#include "qx/QxImageViewer.h"

#include <QPainter>
#include <qopengl.h>

namespace {

void drawLine(const QLineF& line)
{
  glBegin(GL_LINES);
  glVertex2f(static_cast<float>(line.x1()), static_cast<float>(line.y1()));
  glVertex2f(static_cast<float>(line.x2()), static_cast<float>(line.y2()));
  glEnd();
}

} // namespace

void QxViewAlignSlicesOrthogonalLineShape::setOrthoViewLineWidth(int percent)
{
  if (percent >= 0 && percent <= 100) m_lineLength = percent;
}

QxViewAlignSlicesOrthogonalLineShape::Lines
QxViewAlignSlicesOrthogonalLineShape::lines(const QxImageViewer& viewer) const
{
  // The middle of the slice's row.
  const double y = mc::floorToInt(viewer.mapImageToScreen(QPointF(0.0, m_sliceNumber + 0.5)).y());
  const double width = double(viewer.getZoomFactor()) * viewer.getImageScreenWidth();
  const double length = mc::roundHalfUp(m_lineLength / 200.0 * width);
  const double end = mc::roundHalfUp(width);
  return {QLineF(0.0, y, length, y), QLineF(end - length, y, end, y)};
}

void QxViewAlignSlicesOrthogonalLineShape::render(QxImageViewer* viewer)
{
  const Lines l = lines(*viewer);
  glLineWidth(1.0f);
  glColor3f(1.0f, 0.0f, 0.0f);
  drawLine(l.left);
  drawLine(l.right);
}

void QxViewAlignSlicesOrthogonalLineShape::paint(QPainter& painter, QxImageViewer* viewer)
{
  const double thickness = 1.0 / viewer->devicePixelRatioF();
  const Lines l = lines(*viewer);
  for (const QLineF& line : {l.left, l.right})
    painter.fillRect(QRectF(line.x1(), line.y1(), line.dx(), thickness), QColor(255, 0, 0));
}
