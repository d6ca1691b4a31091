#include "QxPainterSurface.h"

#include "QxImageViewerScene.h"
#include "qx/QxImageViewer.h"
#include "qx/QxImageViewerShape.h"

#include <QPainter>

#include <algorithm>

void QxPainterSurface::redraw() { m_scene.viewer->update(); }

void QxPainterSurface::paintViewer()
{
  QPainter painter(m_scene.viewer);
  paint(painter);
}

QImage QxPainterSurface::snapshot()
{
  const QxImageViewer& viewer = *m_scene.viewer;
  QImage image(viewer.size() * viewer.devicePixelRatio(), QImage::Format_RGB32);
  image.setDevicePixelRatio(viewer.devicePixelRatio());
  QPainter painter(&image);
  paint(painter);
  return image;
}

void QxPainterSurface::paint(QPainter& painter)
{
  painter.fillRect(m_scene.viewer->rect(), QxImageViewerScene::surround());
  if (!m_scene.levels.isEmpty()) paintImage(painter);
  for (QxImageViewerShape* shape : m_scene.shapes) {
    painter.save();
    painter.setTransform(m_scene.geometry().screenToWidget(), true);
    shape->paint(painter, m_scene.viewer);
    painter.restore();
  }
}

void QxPainterSurface::paintImage(QPainter& painter)
{
  const QxImageViewerGeometry& geometry = m_scene.geometry();
  const double widest = std::max(geometry.pixelWidth(), geometry.pixelHeight());
  const double devicePixels = widest * m_scene.viewer->devicePixelRatio();
  const int level = m_scene.levels.levelFor(devicePixels);
  const QImage& image = m_scene.levels.level(level);
  const double step = 1 << level;
  const QTransform toWidget = QTransform::fromScale(step, step) * geometry.imageToWidget();

  painter.save();
  // The last pixel of a reduction may reach beyond an image of odd size.
  painter.setClipRect(geometry.imageToWidget().mapRect(QRectF(QPointF(0, 0), geometry.imageSize())));
  painter.setTransform(toWidget, true);
  painter.setRenderHint(QPainter::SmoothPixmapTransform, devicePixels * step < 1.0);
  const QRectF seen = toWidget.inverted().mapRect(QRectF(m_scene.viewer->rect()));
  const QRect part = seen.toAlignedRect().adjusted(-1, -1, 1, 1) & image.rect();
  painter.drawImage(part.topLeft(), image, part);
  painter.restore();
}
