#include "QxImageViewerGeometry.h"

#include "mc/McRound.h"

#include <algorithm>

namespace {

/// Start of an extent in a viewer of a size, when `middle` of the extent shall lie in the viewer's middle.
double placed(double extent, double size, double middle)
{
  if (extent <= size) return 0.5 * (size - extent);
  return std::clamp(0.5 * size - middle, size - extent, 0.0);
}

} // namespace

void QxImageViewerGeometry::setImageSize(const QSize& size)
{
  if (m_image == size) return;
  m_image = size;
  m_centre = QPointF(0.5 * size.width(), 0.5 * size.height());
}

void QxImageViewerGeometry::setPixelScale(double x, double y)
{
  m_scaleX = x;
  m_scaleY = y;
}

void QxImageViewerGeometry::setViewport(const QSize& size, double pixelRatio)
{
  m_viewport = size;
  m_pixelRatio = pixelRatio;
}

QSizeF QxImageViewerGeometry::shownSize() const
{
  const QSizeF size(m_image.width() * pixelWidth(), m_image.height() * pixelHeight());
  return m_transposed ? size.transposed() : size;
}

QPointF QxImageViewerGeometry::offset() const
{
  const QSizeF shown = shownSize();
  QPointF middle(m_centre.x() * pixelWidth(), m_centre.y() * pixelHeight());
  if (m_transposed) middle = middle.transposed();
  const double x = placed(shown.width(), m_viewport.width(), middle.x());
  const double y = placed(shown.height(), m_viewport.height(), middle.y());
  return {mc::roundHalfUpReal(x * m_pixelRatio) / m_pixelRatio,
          mc::roundHalfUpReal(y * m_pixelRatio) / m_pixelRatio};
}

double QxImageViewerGeometry::fittingZoom() const
{
  if (m_image.isEmpty() || m_viewport.isEmpty()) return 1.0;
  QSizeF natural(m_image.width() * m_scaleX, m_image.height() * m_scaleY);
  if (m_transposed) natural.transpose();
  return std::min(m_viewport.width() / natural.width(), m_viewport.height() / natural.height());
}

QTransform QxImageViewerGeometry::screenToWidget() const
{
  const QPointF start = offset();
  return m_transposed ? QTransform(0, 1, 1, 0, start.x(), start.y())
                      : QTransform(1, 0, 0, 1, start.x(), start.y());
}

QTransform QxImageViewerGeometry::imageToWidget() const
{
  return QTransform(pixelWidth(), 0, 0, pixelHeight(), 0, 0) * screenToWidget();
}

QPointF QxImageViewerGeometry::widgetToImage(const QPointF& point) const
{
  QPointF screen = point - offset();
  if (m_transposed) screen = screen.transposed();
  return {screen.x() / pixelWidth(), screen.y() / pixelHeight()};
}

bool QxImageViewerGeometry::canMove() const
{
  const QSizeF shown = shownSize();
  return shown.width() > m_viewport.width() || shown.height() > m_viewport.height();
}

void QxImageViewerGeometry::centerOn(const QPointF& imagePoint)
{
  m_centre = imagePoint;
  keepCentreInside();
}

/// Moves the remembered centre to what is really in the middle, so that a move back is felt at once.
void QxImageViewerGeometry::keepCentreInside()
{
  m_centre = widgetToImage(QPointF(0.5 * m_viewport.width(), 0.5 * m_viewport.height()));
}

void QxImageViewerGeometry::moveBy(const QPointF& widgetPixels)
{
  const QPointF middle(0.5 * m_viewport.width(), 0.5 * m_viewport.height());
  centerOn(widgetToImage(middle - widgetPixels));
}

void QxImageViewerGeometry::zoomAround(const QPointF& widgetPoint, double zoom)
{
  const QPointF held = widgetToImage(widgetPoint);
  m_zoom = zoom;
  moveBy(widgetPoint - imageToWidget().map(held));
}
