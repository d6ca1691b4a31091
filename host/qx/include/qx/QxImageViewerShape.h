#pragma once

class QPainter;
class QxImageViewer;

/// Something drawn over the image of a QxImageViewer.
///
/// Both operations draw the same, in oriented screen coordinates of the viewer (see there), of which the
/// viewer has set up the transformation.
class QxImageViewerShape {
public:
  virtual ~QxImageViewerShape() = default;
  /// Draws with the OpenGL calls of a compatibility profile; the viewer's context is current.
  virtual void render(QxImageViewer* viewer) = 0;
  /// Draws with a painter, on the surface without OpenGL.
  virtual void paint(QPainter& painter, QxImageViewer* viewer) = 0;
};
