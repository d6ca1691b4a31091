#pragma once

#include "SliceViewGeometry.h"

#include <QRect>

#include <optional>

/// The outline of a result image's extent over the view of a slice: what was asked for, so that it can be
/// drawn at any time.
struct ResultFrame {
  float scaleX = 1.0f; ///< size of the result over the size of the slice
  float scaleY = 1.0f;
  int x = -1; ///< pixels that the result reaches beyond the slice's left edge; -1 for either = centred
  int y = -1;

  /// The pixels of the viewport that the outline runs over, none unless both scales are at least 1. It is
  /// measured from what is visible of the slice, also where that is a part only.
  std::optional<QRect> outline(const SliceViewGeometry& geometry) const;
};
