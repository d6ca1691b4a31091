#pragma once

#include "mc/McPrimType.h"

#include <QImage>
#include <QPointF>
#include <QWidget>

#include <memory>

class QTransform;
class QxImageViewerShape;

/// Shows one image with zoom, pan, a physical aspect ratio and shapes drawn over it.
///
/// Coordinates, all with y downwards. Image: (0, 0) is the upper left corner of the first pixel, (width,
/// height) the lower right one of the last. Oriented screen: device-independent pixels from the corner of the
/// image that is (0, 0) there, with x along the image's rows and y along its columns; one image pixel covers
/// zoom x pixel scale, so the image ends at zoom x getImageScreenWidth(), wherever it has been moved. Widget:
/// device-independent pixels from the upper left corner of the viewer; while the viewer is transposed, x of
/// the oriented screen runs down there and y to the right.
///
/// An image smaller than the viewer lies in its middle; a larger one is dragged with the left or middle
/// button and cannot be moved off its edges. The wheel with Ctrl zooms around the mouse. The viewer takes no
/// focus by itself; one that has been given a focus policy zooms with plus and minus, fits with 0, moves with
/// the arrows.
///
/// The image is drawn by OpenGL where a hardware context exists or the setting asks for it, else by a
/// painter; both look the same. Enlarged pixels are plain rectangles; a reduced image is averaged.
class QxImageViewer : public QWidget {
  Q_OBJECT
public:
  enum class Surface {
    Automatic, ///< OpenGL where it is drawn in hardware, or where the setting "viewer/openGL" says so
    Painter,
    OpenGL ///< falls back to the painter on a platform that has no OpenGL
  };
  explicit QxImageViewer(QWidget* parent = nullptr, Surface surface = Surface::Automatic);
  ~QxImageViewer() override;

  /// Shows grey values: black is black, white is white, in between linear, beyond them clamped; a white below
  /// black inverts. Where they are equal, values above are white. NaN is black. Copies what it needs. Rows
  /// lie without padding, width x height values of the type.
  void setGreyImage(const void* pixels, McPrimType type, int width, int height, float black, float white);
  /// Shows red, green, blue, alpha of 8 bits each; alpha is ignored. Copies.
  void setColorImage(const unsigned char* rgba, int width, int height);
  void clearImage();
  /// 0 while there is no image.
  int imageWidth() const noexcept;
  int imageHeight() const noexcept;

  /// Device-independent pixels per image pixel at zoom 1, along rows and columns; what is not positive and
  /// finite counts as 1.
  void setPixelScale(float x, float y);
  /// True: image rows run from top to bottom on the screen and columns from left to right.
  void setTransposed(bool transposed);
  bool isTransposed() const noexcept;
  /// Sets a positive zoom; the middle of the viewer stays where it is in the image. Emits zoomFactorChanged()
  /// when it is another one. Others than positive, finite values change nothing.
  void setZoomFactor(float zoom);
  float getZoomFactor() const noexcept;
  /// Zoom at which the image just fits the viewer; kept while the viewer is resized and for other images
  /// until another zoom is set.
  void zoomToFit();
  bool isZoomedToFit() const noexcept;
  /// Width and height of the image in oriented screen pixels at zoom 1: its size times the pixel scale.
  float getImageScreenWidth() const noexcept;
  float getImageScreenHeight() const noexcept;

  /// Image to oriented screen.
  QPointF mapImageToScreen(const QPointF& imagePoint) const;
  /// Widget to image; may lie outside of the image.
  QPointF mapWidgetToImage(const QPointF& widgetPoint) const;
  QPointF mapImageToWidget(const QPointF& imagePoint) const;
  /// From the oriented screen to the widget: what a shape's coordinates go through.
  QTransform screenToWidget() const;
  /// Moves the image until this point of it is in the middle of the viewer, as far as its edges allow.
  void centerOn(const QPointF& imagePoint);

  /// Draws a shape over the image, those added first below the others. Not owned: it is removed before it is
  /// deleted.
  void addShape(QxImageViewerShape* shape);
  void removeShape(QxImageViewerShape* shape);

  /// Asks for a repaint of image and shapes.
  void redraw();
  /// What the viewer shows, opaque, in device pixels.
  QImage snapshot();
  bool usesOpenGL() const noexcept;
  /// The longest edge of a texture in viewers that draw by OpenGL, below what the driver allows; 0 leaves it
  /// to the driver. Images beyond it are drawn in tiles.
  static void setTextureLimit(int pixels);

  QSize sizeHint() const override;

Q_SIGNALS:
  void zoomFactorChanged(float zoom);
  /// The mouse has come over this image pixel; inside is false when it is beside the image or has left the
  /// viewer, the pixel is (-1, -1) then.
  void pixelHovered(int x, int y, bool inside);
  /// The wheel was turned without Ctrl (with Ctrl it zooms) by so many steps, up being positive.
  void wheelStepped(int steps);

protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

private:
  class Private;
  std::unique_ptr<Private> m_private;
};
