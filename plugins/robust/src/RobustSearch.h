#pragma once

#include "Confidence.h"
#include "Limits.h"
#include "Pyramid.h"

#include <functional>

namespace robust {

/// What a search has found.
struct Finding {
  bool found = false; ///< whether there is a motion at all; false also when the search was stopped
  RigidMotion motion;
  Evidence evidence;
  double confidence = 0.0; ///< 0 to 1; 0 when nothing was found
};

/// Finds how the moved slice lies on the reference: candidates, the best of them refined at full resolution
/// to below 0.01 pixels, and judged.
///
/// stopped is asked between pieces of the work, some hundredths of a second apart for slices of 1000 pixels.
Finding findMotion(
    const Pyramid& reference, const Pyramid& moved, const Limits& limits,
    const std::function<bool()>& stopped = [] { return false; });

/// The motion refined from a start on all levels up to full resolution.
RigidMotion refined(
    const Pyramid& reference, const Pyramid& moved, const RigidMotion& start, bool turns,
    const std::function<bool()>& stopped = [] { return false; });

} // namespace robust
