#pragma once

#include <QImage>

/// One way of drawing a viewer's scene.
class QxImageViewerSurface {
public:
  virtual ~QxImageViewerSurface() = default;
  /// The image of the scene is another one now.
  virtual void imageChanged() = 0;
  virtual void redraw() = 0;
  /// The viewer itself is to be painted, which is nothing to a surface with a widget of its own.
  virtual void paintViewer() = 0;
  /// What is shown, opaque, in device pixels.
  virtual QImage snapshot() = 0;
};
