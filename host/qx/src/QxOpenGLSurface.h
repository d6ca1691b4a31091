#pragma once

#include "QxImageViewerSurface.h"

#include <QOpenGLWidget>
#include <QTransform>

#include <map>
#include <tuple>

struct QxImageViewerScene;

/// Draws by OpenGL, on a child that covers the viewer.
///
/// The image is cut into tiles, each a texture that is uploaded when it is first seen and kept until the
/// image changes. Mouse events go to the viewer.
class QxOpenGLSurface : public QOpenGLWidget, public QxImageViewerSurface {
public:
  /// The scene outlives the surface; the viewer of the scene becomes its parent.
  explicit QxOpenGLSurface(QxImageViewerScene& scene);
  ~QxOpenGLSurface() override;

  void imageChanged() override;
  void redraw() override { update(); }
  void paintViewer() override {}
  QImage snapshot() override;

  static void setTextureLimit(int pixels);

protected:
  void initializeGL() override;
  void paintGL() override;

private:
  using Tile = std::tuple<int, int, int>; // level, column, row

  void dropTextures();
  void drawImage();
  void drawTile(int level, int column, int row, bool smooth);
  unsigned int textureOf(const Tile& tile, const QImage& image, const QRect& part);
  void drawShapes();

  QxImageViewerScene& m_scene;
  std::map<Tile, unsigned int> m_textures; // of the present context
  int m_tileEdge = 0;                      // pixels of the image along the edge of a tile
  bool m_outdated = false;                 // the textures show a former image
};
