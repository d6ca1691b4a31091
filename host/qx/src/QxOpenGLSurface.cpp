#include "QxOpenGLSurface.h"

#include "QxImageViewerScene.h"
#include "QxOpenGLSupport.h"
#include "mc/McRound.h"
#include "qx/QxImageViewer.h"
#include "qx/QxImageViewerShape.h"

#include <QOpenGLContext>

#include <algorithm>

namespace {

// Around each tile, so that a smoothed picture has no seams between two.
constexpr int kBorder = 1;
// Larger tiles would upload much that is not seen.
constexpr int kLargestTexture = 2048;
constexpr int kSmallestTexture = 2 * kBorder + 1;

// A line at a whole coordinate would lie between two rows of pixels: moved by this part of a pixel it falls
// into the one below, where the painter draws it.
constexpr double kLineShift = 1.0 / 128.0;

int textureLimit = 0;

void loadMatrix(const QTransform& t)
{
  const double columns[16] = {t.m11(), t.m12(), 0, 0, t.m21(), t.m22(), 0, 0,
                              0,       0,       1, 0, t.dx(),  t.dy(),  0, 1};
  glMatrixMode(GL_MODELVIEW);
  glLoadMatrixd(columns);
}

/// Widget coordinates, moved by a part of a device pixel.
void loadProjection(const QSize& size, double shift)
{
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glOrtho(0.0, size.width(), size.height(), 0.0, -1.0, 1.0);
  glTranslated(shift, shift, 0.0);
}

void uploadTexture(const QImage& image, const QRect& part)
{
  const bool grey = image.format() == QImage::Format_Grayscale8;
  const int bytes = grey ? 1 : 4;
  const uchar* first = image.constScanLine(part.y()) + qsizetype(part.x()) * bytes;
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, static_cast<int>(image.bytesPerLine() / bytes));
  if (grey)
    glTexImage2D(GL_TEXTURE_2D, 0, GL_LUMINANCE8, part.width(), part.height(), 0, GL_LUMINANCE,
                 GL_UNSIGNED_BYTE, first);
  else
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB8, part.width(), part.height(), 0, GL_BGRA,
                 GL_UNSIGNED_INT_8_8_8_8_REV, first);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
}

void setFilter(bool smooth)
{
  const int filter = smooth ? GL_LINEAR : GL_NEAREST;
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
}

/// Part of an image on the rectangle of equal coordinates; `part` is what the texture holds.
void drawTextured(const QRectF& rect, const QRect& part)
{
  const double left = (rect.left() - part.x()) / part.width();
  const double right = (rect.right() - part.x()) / part.width();
  const double top = (rect.top() - part.y()) / part.height();
  const double bottom = (rect.bottom() - part.y()) / part.height();
  glBegin(GL_QUADS);
  glTexCoord2d(left, top);
  glVertex2d(rect.left(), rect.top());
  glTexCoord2d(right, top);
  glVertex2d(rect.right(), rect.top());
  glTexCoord2d(right, bottom);
  glVertex2d(rect.right(), rect.bottom());
  glTexCoord2d(left, bottom);
  glVertex2d(rect.left(), rect.bottom());
  glEnd();
}

} // namespace

QxOpenGLSurface::QxOpenGLSurface(QxImageViewerScene& scene) : QOpenGLWidget(scene.viewer), m_scene(scene)
{
  setObjectName("surface");
  setAttribute(Qt::WA_TransparentForMouseEvents);
  setFormat(QxOpenGLSupport::format());
}

QxOpenGLSurface::~QxOpenGLSurface()
{
  if (!context()) return;
  disconnect(context(), nullptr, this, nullptr); // It ends later than the textures' list.
  makeCurrent();
  dropTextures();
  doneCurrent();
}

void QxOpenGLSurface::setTextureLimit(int pixels) { textureLimit = std::max(0, pixels); }

void QxOpenGLSurface::imageChanged()
{
  m_outdated = true;
  update();
}

QImage QxOpenGLSurface::snapshot()
{
  QImage image = grabFramebuffer().convertToFormat(QImage::Format_RGB32);
  image.setDevicePixelRatio(devicePixelRatio());
  return image;
}

void QxOpenGLSurface::initializeGL()
{
  // A window that gets another parent gets another context.
  connect(
      context(), &QOpenGLContext::aboutToBeDestroyed, this,
      [this] {
        makeCurrent();
        dropTextures();
        doneCurrent();
      },
      Qt::DirectConnection);
  m_textures.clear();
  int allowed = 0;
  glGetIntegerv(GL_MAX_TEXTURE_SIZE, &allowed);
  int edge = std::min(allowed, kLargestTexture);
  if (textureLimit > 0) edge = std::min(edge, textureLimit);
  m_tileEdge = std::max(edge, kSmallestTexture) - 2 * kBorder;
}

void QxOpenGLSurface::dropTextures()
{
  for (const auto& [tile, texture] : m_textures) glDeleteTextures(1, &texture);
  m_textures.clear();
  m_outdated = false;
}

void QxOpenGLSurface::paintGL()
{
  if (m_outdated) dropTextures();
  const QColor surround = QxImageViewerScene::surround();
  glClearColor(surround.redF(), surround.greenF(), surround.blueF(), 1.0f);
  glClear(GL_COLOR_BUFFER_BIT);
  glPushAttrib(GL_ALL_ATTRIB_BITS);
  glDisable(GL_BLEND);
  glDisable(GL_DEPTH_TEST);
  glDisable(GL_LIGHTING);
  if (!m_scene.levels.isEmpty()) drawImage();
  drawShapes();
  glPopAttrib();
}

void QxOpenGLSurface::drawImage()
{
  const QxImageViewerGeometry& geometry = m_scene.geometry();
  const double devicePixels = std::max(geometry.pixelWidth(), geometry.pixelHeight()) * devicePixelRatio();
  const int level = m_scene.levels.levelFor(devicePixels);
  const QImage& image = m_scene.levels.level(level);
  const double step = 1 << level;
  const QTransform toWidget = QTransform::fromScale(step, step) * geometry.imageToWidget();
  const QRectF seen = toWidget.inverted().mapRect(QRectF(rect()));
  const QRect part = seen.toAlignedRect() & image.rect();
  if (part.isEmpty()) return;

  loadProjection(size(), 0.0);
  loadMatrix(toWidget);
  glEnable(GL_TEXTURE_2D);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
  for (int row = part.top() / m_tileEdge; row <= part.bottom() / m_tileEdge; ++row)
    for (int column = part.left() / m_tileEdge; column <= part.right() / m_tileEdge; ++column)
      drawTile(level, column, row, devicePixels * step < 1.0);
  glDisable(GL_TEXTURE_2D);
}

void QxOpenGLSurface::drawTile(int level, int column, int row, bool smooth)
{
  const QImage& image = m_scene.levels.level(level);
  const QRect tile = QRect(column * m_tileEdge, row * m_tileEdge, m_tileEdge, m_tileEdge) & image.rect();
  const QRect part = tile.adjusted(-kBorder, -kBorder, kBorder, kBorder) & image.rect();
  glBindTexture(GL_TEXTURE_2D, textureOf({level, column, row}, image, part));
  setFilter(smooth);
  // The last pixel of a reduction may reach beyond an image of odd size.
  const QSizeF extent = QSizeF(m_scene.geometry().imageSize()) / (1 << level);
  drawTextured(QRectF(tile) & QRectF(QPointF(0, 0), extent), part);
}

unsigned int QxOpenGLSurface::textureOf(const Tile& tile, const QImage& image, const QRect& part)
{
  const auto known = m_textures.find(tile);
  if (known != m_textures.end()) return known->second;
  unsigned int texture = 0;
  glGenTextures(1, &texture);
  glBindTexture(GL_TEXTURE_2D, texture);
  uploadTexture(image, part);
  m_textures.emplace(tile, texture);
  return texture;
}

void QxOpenGLSurface::drawShapes()
{
  loadProjection(size(), kLineShift / devicePixelRatio());
  for (QxImageViewerShape* shape : m_scene.shapes) {
    loadMatrix(m_scene.geometry().screenToWidget());
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glColor3f(1.0f, 1.0f, 1.0f);
    shape->render(m_scene.viewer);
    glPopAttrib();
  }
}
