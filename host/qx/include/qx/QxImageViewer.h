#pragma once

#include "mc/McPrimType.h"

#include <QImage>
#include <QPointF>
#include <QWidget>

#include <memory>

class QxImageViewerShape;

/// Shows one image with zoom, pan, a physical aspect ratio and shapes drawn over it.
///
/// Coordinates. Image: (0, 0) is the upper left corner of the first pixel, (width, height) the lower right
/// one of the last. Oriented screen: device-independent pixels from the upper left corner of the viewer, with
/// x along the image's rows and y along its columns, before a transposition. Widget: the same after it; equal
/// to oriented screen while the viewer is not transposed. One image pixel covers zoom x pixel scale.
///
/// The image is drawn by OpenGL where a hardware context exists or the setting asks for it, else by a
/// painter; both look the same. Pixels are shown as squares, without interpolation, when enlarged.
class QxImageViewer : public QWidget {
  Q_OBJECT
public:
  enum class Surface {
    Automatic, ///< OpenGL where it is drawn in hardware, or where the setting "viewer/openGL" says so
    Painter,
    OpenGL
  };
  explicit QxImageViewer(QWidget* parent = nullptr, Surface surface = Surface::Automatic);
  ~QxImageViewer() override;

  /// Shows grey values: black and below is black, white and above is white, in between linear. Copies what it
  /// needs. Rows lie without padding. NaN is black.
  void setGreyImage(const void* pixels, McPrimType type, int width, int height, float black, float white);
  /// Shows red, green, blue, alpha of 8 bits each; alpha is ignored. Copies.
  void setColorImage(const unsigned char* rgba, int width, int height);
  void clearImage();
  int imageWidth() const noexcept;
  int imageHeight() const noexcept;

  /// Screen pixels per image pixel at zoom 1, along rows and columns; positive.
  void setPixelScale(float x, float y);
  /// True: image rows run from top to bottom on the screen and columns from left to right.
  void setTransposed(bool transposed);
  bool isTransposed() const noexcept;
  void setZoomFactor(float zoom);
  float getZoomFactor() const noexcept;
  /// Zoom at which the image just fits the viewer; kept while the viewer is resized until another zoom is
  /// set.
  void zoomToFit();
  /// Width and height of the image in screen pixels at zoom 1: its size times the pixel scale.
  float getImageScreenWidth() const noexcept;
  float getImageScreenHeight() const noexcept;

  /// Image to oriented screen.
  QPointF mapImageToScreen(const QPointF& imagePoint) const;
  /// Widget to image; may lie outside of the image.
  QPointF mapWidgetToImage(const QPointF& widgetPoint) const;

  /// Draws a shape over the image, those added first below the others. Not owned: it is removed before it is
  /// deleted.
  void addShape(QxImageViewerShape* shape);
  void removeShape(QxImageViewerShape* shape);

  /// Asks for a repaint of image and shapes.
  void redraw();
  /// What the viewer shows, opaque, in device pixels.
  QImage snapshot();
  bool usesOpenGL() const noexcept;

Q_SIGNALS:
  void zoomFactorChanged(float zoom);
  /// The mouse is over this image pixel; inside is false when it is beside the image or has left the viewer.
  void pixelHovered(int x, int y, bool inside);
  /// The wheel was turned without Ctrl (with Ctrl it zooms) by so many steps, up being positive.
  void wheelStepped(int steps);

private:
  class Private;
  std::unique_ptr<Private> m_private;
};
