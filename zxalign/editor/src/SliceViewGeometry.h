#pragma once

#include "mc/McVec2f.h"

#include <QPoint>
#include <QSize>

/// Where the zoomed slice lies in the viewport. All lengths but the slice's own are device-independent
/// pixels.
///
/// The contents are the zoomed slice; the screen image is the part of them that is visible, one of its pixels
/// to a pixel of the viewport.
struct SliceViewGeometry {
  QSize viewport;
  QSize slice; ///< pixels of the slice
  float zoom = 1.0f;
  QPoint scroll; ///< position of the scroll bars

  /// The zoomed size, not cut off to whole pixels.
  float zoomedWidth() const;
  float zoomedHeight() const;
  /// The zoomed size in whole pixels.
  QSize contents() const;
  QSize screen() const;
  /// The position of the contents at the screen image's top left pixel; 0 on an axis where all is visible.
  QPoint origin() const;
  /// The position of the screen image in the viewport; 0 on an axis where not all is visible.
  QPoint offset() const;

  /// The position in pixels of the slice's frame at a pixel of the viewport, without rounding.
  McVec2f windowToImage(QPoint window) const;
  /// The position of the contents at a pixel of the viewport.
  QPoint windowToContents(QPoint window) const;
};
