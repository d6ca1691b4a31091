#include "qx/QxImageViewer.h"

#include "QxGreyLevels.h"
#include "QxImageViewerScene.h"
#include "QxOpenGLSupport.h"
#include "QxOpenGLSurface.h"
#include "QxPainterSurface.h"
#include "mc/McRound.h"
#include "zx/ZxMessage.h"

#include <QMouseEvent>
#include <QSettings>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kWheelStep = 120;         // one notch, in eighths of a degree
constexpr double kZoomStep = 1.25;      // of one notch with Ctrl, or one key
constexpr double kSmallestImage = 8.0;  // what the wheel shrinks an image to, widget pixels
constexpr double kLargestPixel = 256.0; // what the wheel enlarges a pixel to, widget pixels
constexpr double kKeyMove = 40.0;       // widget pixels

bool drawsByOpenGL(QxImageViewer::Surface surface)
{
  switch (surface) {
  case QxImageViewer::Surface::Painter:
    return false;
  case QxImageViewer::Surface::OpenGL:
    return QxOpenGLSupport::isAvailable();
  default:
    const QVariant wanted = QSettings("zxalign", "orvel").value("viewer/openGL");
    if (wanted.isValid()) return wanted.toBool() && QxOpenGLSupport::isAvailable();
    return QxOpenGLSupport::isHardware();
  }
}

} // namespace

class QxImageViewer::Private {
public:
  void setZoom(double zoom);
  void setImage(QImage image);
  void fit();
  void wheelZoom(const QPointF& position, int steps);
  void hover(const QPointF& position);
  void noHover();

  QxImageViewerScene scene;
  std::unique_ptr<QxImageViewerSurface> surface;
  QWidget* surfaceWidget = nullptr; // the same as the surface where that has a widget
  bool fits = false;
  bool dragging = false;
  QPointF dragPoint;
  QPoint hovered{-1, -1};
  bool hoveredInside = false;
  int wheelAngle = 0; // what is left of a wheel step, in eighths of a degree
};

void QxImageViewer::Private::setZoom(double zoom)
{
  const bool changed = zoom != scene.geometry().zoom();
  scene.geometry().setZoom(zoom);
  surface->redraw();
  if (changed) Q_EMIT scene.viewer->zoomFactorChanged(static_cast<float>(zoom));
}

void QxImageViewer::Private::fit()
{
  if (fits) setZoom(scene.geometry().fittingZoom());
}

void QxImageViewer::Private::setImage(QImage image)
{
  scene.geometry().setImageSize(image.size());
  scene.levels.setImage(std::move(image));
  surface->imageChanged();
  surface->redraw();
  fit();
}

void QxImageViewer::Private::wheelZoom(const QPointF& position, int steps)
{
  QxImageViewerGeometry& geometry = scene.geometry();
  if (steps == 0 || geometry.imageSize().isEmpty()) return;
  const double largest = kLargestPixel / std::max(geometry.scaleX(), geometry.scaleY());
  const double width = geometry.imageSize().width() * geometry.scaleX();
  const double height = geometry.imageSize().height() * geometry.scaleY();
  const double smallest = std::min(largest, kSmallestImage / std::max(width, height));
  // A zoom beyond these limits, set from code, still moves towards them.
  const double old = geometry.zoom();
  const double wanted = old * std::pow(kZoomStep, steps);
  const double zoom =
      steps > 0 ? std::max(old, std::min(wanted, largest)) : std::min(old, std::max(wanted, smallest));
  if (zoom == old) return;
  fits = false;
  geometry.zoomAround(position, zoom);
  surface->redraw();
  Q_EMIT scene.viewer->zoomFactorChanged(static_cast<float>(zoom));
}

void QxImageViewer::Private::hover(const QPointF& position)
{
  const QPointF point = scene.geometry().widgetToImage(position);
  const QPoint pixel(mc::floorToInt(point.x()), mc::floorToInt(point.y()));
  if (!QRect(QPoint(0, 0), scene.geometry().imageSize()).contains(pixel)) return noHover();
  if (hoveredInside && pixel == hovered) return;
  hovered = pixel;
  hoveredInside = true;
  Q_EMIT scene.viewer->pixelHovered(pixel.x(), pixel.y(), true);
}

void QxImageViewer::Private::noHover()
{
  if (!hoveredInside) return;
  hoveredInside = false;
  Q_EMIT scene.viewer->pixelHovered(-1, -1, false);
}

QxImageViewer::QxImageViewer(QWidget* parent, Surface surface)
  : QWidget(parent), m_private(std::make_unique<Private>())
{
  m_private->scene.viewer = this;
  if (drawsByOpenGL(surface)) {
    auto openGL = std::make_unique<QxOpenGLSurface>(m_private->scene);
    m_private->surfaceWidget = openGL.get();
    m_private->surface = std::move(openGL);
  } else {
    m_private->surface = std::make_unique<QxPainterSurface>(m_private->scene);
  }
  setAttribute(Qt::WA_OpaquePaintEvent);
  setMouseTracking(true);
  setMinimumSize(32, 32);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

QxImageViewer::~QxImageViewer() = default;

void QxImageViewer::setGreyImage(const void* pixels, McPrimType type, int width, int height, float black,
                                 float white)
{
  if (!pixels || width <= 0 || height <= 0) return clearImage();
  QImage image = greyImageOf(pixels, type, width, height, black, white);
  if (image.isNull()) ZxMessage::getTheMsg()->memError(std::size_t(width) * std::size_t(height));
  m_private->setImage(std::move(image));
}

void QxImageViewer::setColorImage(const unsigned char* rgba, int width, int height)
{
  if (!rgba || width <= 0 || height <= 0) return clearImage();
  QImage image(width, height, QImage::Format_RGB32);
  if (image.isNull()) ZxMessage::getTheMsg()->memError(std::size_t(width) * std::size_t(height) * 4);
  for (int y = 0; y < image.height(); ++y) {
    auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
    for (int x = 0; x < width; ++x, rgba += 4) row[x] = qRgb(rgba[0], rgba[1], rgba[2]);
  }
  m_private->setImage(std::move(image));
}

void QxImageViewer::clearImage() { m_private->setImage(QImage()); }

int QxImageViewer::imageWidth() const noexcept { return m_private->scene.geometry().imageSize().width(); }
int QxImageViewer::imageHeight() const noexcept { return m_private->scene.geometry().imageSize().height(); }

void QxImageViewer::setPixelScale(float x, float y)
{
  const auto usable = [](float scale) { return scale > 0.0f && std::isfinite(scale) ? double(scale) : 1.0; };
  m_private->scene.geometry().setPixelScale(usable(x), usable(y));
  m_private->surface->redraw();
  m_private->fit();
}

void QxImageViewer::setTransposed(bool transposed)
{
  m_private->scene.geometry().setTransposed(transposed);
  m_private->surface->redraw();
  m_private->fit();
}

bool QxImageViewer::isTransposed() const noexcept { return m_private->scene.geometry().isTransposed(); }

void QxImageViewer::setZoomFactor(float zoom)
{
  if (!(zoom > 0.0f) || !std::isfinite(zoom)) return;
  m_private->fits = false;
  m_private->setZoom(zoom);
}

float QxImageViewer::getZoomFactor() const noexcept
{
  return static_cast<float>(m_private->scene.geometry().zoom());
}

void QxImageViewer::zoomToFit()
{
  m_private->fits = true;
  m_private->fit();
}

bool QxImageViewer::isZoomedToFit() const noexcept { return m_private->fits; }

float QxImageViewer::getImageScreenWidth() const noexcept
{
  return static_cast<float>(imageWidth() * m_private->scene.geometry().scaleX());
}

float QxImageViewer::getImageScreenHeight() const noexcept
{
  return static_cast<float>(imageHeight() * m_private->scene.geometry().scaleY());
}

QPointF QxImageViewer::mapImageToScreen(const QPointF& imagePoint) const
{
  const QxImageViewerGeometry& geometry = m_private->scene.geometry();
  return {imagePoint.x() * geometry.pixelWidth(), imagePoint.y() * geometry.pixelHeight()};
}

QPointF QxImageViewer::mapWidgetToImage(const QPointF& widgetPoint) const
{
  return m_private->scene.geometry().widgetToImage(widgetPoint);
}

QPointF QxImageViewer::mapImageToWidget(const QPointF& imagePoint) const
{
  return m_private->scene.geometry().imageToWidget().map(imagePoint);
}

QTransform QxImageViewer::screenToWidget() const { return m_private->scene.geometry().screenToWidget(); }

void QxImageViewer::centerOn(const QPointF& imagePoint)
{
  m_private->scene.geometry().centerOn(imagePoint);
  m_private->surface->redraw();
}

void QxImageViewer::addShape(QxImageViewerShape* shape)
{
  m_private->scene.shapes.push_back(shape);
  m_private->surface->redraw();
}

void QxImageViewer::removeShape(QxImageViewerShape* shape)
{
  std::erase(m_private->scene.shapes, shape);
  m_private->surface->redraw();
}

void QxImageViewer::redraw() { m_private->surface->redraw(); }

QImage QxImageViewer::snapshot() { return m_private->surface->snapshot(); }

bool QxImageViewer::usesOpenGL() const noexcept { return m_private->surfaceWidget != nullptr; }

void QxImageViewer::setTextureLimit(int pixels) { QxOpenGLSurface::setTextureLimit(pixels); }

QSize QxImageViewer::sizeHint() const { return {400, 300}; }

void QxImageViewer::paintEvent(QPaintEvent*) { m_private->surface->paintViewer(); }

void QxImageViewer::resizeEvent(QResizeEvent*)
{
  if (m_private->surfaceWidget) m_private->surfaceWidget->setGeometry(rect());
  m_private->surface->redraw();
  m_private->fit();
}

void QxImageViewer::mousePressEvent(QMouseEvent* event)
{
  const bool drags = event->button() == Qt::LeftButton || event->button() == Qt::MiddleButton;
  if (!drags) return event->ignore();
  m_private->dragging = true;
  m_private->dragPoint = event->position();
  if (m_private->scene.geometry().canMove()) setCursor(Qt::ClosedHandCursor);
}

void QxImageViewer::mouseMoveEvent(QMouseEvent* event)
{
  if (m_private->dragging && m_private->scene.geometry().canMove()) {
    m_private->scene.geometry().moveBy(event->position() - m_private->dragPoint);
    m_private->dragPoint = event->position();
    m_private->surface->redraw();
  }
  m_private->hover(event->position());
}

void QxImageViewer::mouseReleaseEvent(QMouseEvent* event)
{
  if (!m_private->dragging) return event->ignore();
  m_private->dragging = false;
  unsetCursor();
}

void QxImageViewer::leaveEvent(QEvent*) { m_private->noHover(); }

void QxImageViewer::wheelEvent(QWheelEvent* event)
{
  m_private->wheelAngle += event->angleDelta().y();
  const int steps = m_private->wheelAngle / kWheelStep;
  m_private->wheelAngle -= steps * kWheelStep;
  if (event->modifiers() & Qt::ControlModifier) {
    m_private->wheelZoom(event->position(), steps);
    m_private->hover(event->position());
  } else if (steps != 0) {
    Q_EMIT wheelStepped(steps);
  }
  event->accept();
}

void QxImageViewer::keyPressEvent(QKeyEvent* event)
{
  const auto move = [this](double x, double y) {
    m_private->scene.geometry().moveBy(QPointF(x, y));
    m_private->surface->redraw();
  };
  switch (event->key()) {
  case Qt::Key_Plus:
  case Qt::Key_Equal:
    return m_private->wheelZoom(QRectF(rect()).center(), 1);
  case Qt::Key_Minus:
    return m_private->wheelZoom(QRectF(rect()).center(), -1);
  case Qt::Key_0:
    return zoomToFit();
  case Qt::Key_Left:
    return move(kKeyMove, 0);
  case Qt::Key_Right:
    return move(-kKeyMove, 0);
  case Qt::Key_Up:
    return move(0, kKeyMove);
  case Qt::Key_Down:
    return move(0, -kKeyMove);
  default:
    QWidget::keyPressEvent(event);
  }
}
