#pragma once

#include "RigidMotion.h"

namespace robust {

/// The motions that are looked for.
struct Limits {
  RigidMotion middle;            ///< what is looked for lies around this motion
  double largestDegrees = 180.0; ///< to both sides; 0: the angle is known
  double largestShift = 0.5;     ///< of the displacement, as a share of the slice's width
  bool upright = true;           ///< the moved slice as it lies
  bool mirrored = false;         ///< the moved slice turned over

  bool turns() const noexcept { return largestDegrees > 0.0; }
  bool allow(double degrees) const;
  bool allow(const RigidMotion& motion, int width) const;
};

} // namespace robust
