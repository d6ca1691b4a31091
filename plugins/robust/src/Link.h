#pragma once

#include "RigidMotion.h"

namespace robust {

/// What has been measured between two slices of a stack.
struct Link {
  int moved = 0;
  int reference = 0;
  RigidMotion motion; ///< how the moved slice lies on the reference
  double weight = 1.0;
};

} // namespace robust
