#include "Limits.h"

#include <cmath>

namespace robust {

bool Limits::allow(double degrees) const
{
  return std::abs(std::remainder(degrees - middle.degrees, 360.0)) <= largestDegrees + 1e-6;
}

bool Limits::allow(const RigidMotion& motion, int width) const
{
  return allow(motion.degrees) && (motion.mirrored ? mirrored : upright) &&
         std::hypot(motion.shift.x - middle.shift.x, motion.shift.y - middle.shift.y) <= largestShift * width;
}

} // namespace robust
