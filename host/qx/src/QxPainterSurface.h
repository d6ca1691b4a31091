#pragma once

#include "QxImageViewerSurface.h"

class QPainter;
struct QxImageViewerScene;

/// Draws with a painter, on the viewer itself.
class QxPainterSurface : public QxImageViewerSurface {
public:
  /// The scene outlives the surface.
  explicit QxPainterSurface(QxImageViewerScene& scene) : m_scene(scene) {}

  void imageChanged() override {}
  void redraw() override;
  void paintViewer() override;
  QImage snapshot() override;

private:
  void paint(QPainter& painter);
  void paintImage(QPainter& painter);

  QxImageViewerScene& m_scene;
};
