#pragma once

#include <QPointF>
#include <QSize>
#include <QTransform>

/// Where the image of a viewer lies: a value without widgets. The frames are those of QxImageViewer.
///
/// The place is kept as the image point in the middle of the viewer, so it stays while the viewer is resized
/// or zoomed.
class QxImageViewerGeometry {
public:
  void setImageSize(const QSize& size);
  void setPixelScale(double x, double y);
  void setTransposed(bool transposed) { m_transposed = transposed; }
  void setZoom(double zoom) { m_zoom = zoom; }
  /// Size of the viewer, and device pixels per device-independent one: the image starts on whole ones.
  void setViewport(const QSize& size, double pixelRatio);

  const QSize& imageSize() const { return m_image; }
  bool isTransposed() const { return m_transposed; }
  double zoom() const { return m_zoom; }
  double scaleX() const { return m_scaleX; }
  double scaleY() const { return m_scaleY; }
  /// Widget pixels per image pixel along rows and columns.
  double pixelWidth() const { return m_zoom * m_scaleX; }
  double pixelHeight() const { return m_zoom * m_scaleY; }

  /// Zoom at which the image just fits; 1 without an image or a viewer.
  double fittingZoom() const;
  QTransform screenToWidget() const;
  QTransform imageToWidget() const;
  QPointF widgetToImage(const QPointF& point) const;

  /// True when some of the image lies outside of the viewer.
  bool canMove() const;
  void centerOn(const QPointF& imagePoint);
  void moveBy(const QPointF& widgetPixels);
  /// Changes the zoom and keeps the image point under a widget point there, as far as the edges allow.
  void zoomAround(const QPointF& widgetPoint, double zoom);

private:
  QSizeF shownSize() const;
  QPointF offset() const;
  void keepCentreInside();

  QSize m_image{0, 0};
  QSize m_viewport{0, 0};
  double m_pixelRatio = 1.0;
  double m_scaleX = 1.0, m_scaleY = 1.0;
  double m_zoom = 1.0;
  bool m_transposed = false;
  QPointF m_centre; // image point in the middle of the viewer
};
