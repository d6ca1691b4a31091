#pragma once

class QPainter;
class QxImageViewer;

/// Something drawn over the image of a QxImageViewer.
///
/// Both operations draw the same, in oriented screen coordinates of the viewer (see there): the viewer has
/// set up the transformation, which also turns what is drawn when the viewer is transposed.
class QxImageViewerShape {
public:
  virtual ~QxImageViewerShape() = default;
  /// Draws with the OpenGL calls of a compatibility profile; the viewer's context is current, textures and
  /// lighting are off, the colour is white. The viewer puts back what is changed of colour and line width.
  virtual void render(QxImageViewer* viewer) = 0;
  /// Draws with a painter, on the surface without OpenGL. The painter's state is put back afterwards.
  virtual void paint(QPainter& painter, QxImageViewer* viewer) = 0;
};
