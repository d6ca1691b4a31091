#pragma once

#include <cmath>

/// Transcendental functions with the same result on every machine.
///
/// The double versions of the C library differ in the last bit with and without fused multiply-add. These are
/// computed in long double and narrowed.
namespace mc {

inline constexpr double kPi = 3.14159265358979323846;

inline double cos(double v) noexcept { return static_cast<double>(std::cos(static_cast<long double>(v))); }
inline double sin(double v) noexcept { return static_cast<double>(std::sin(static_cast<long double>(v))); }
inline double exp(double v) noexcept { return static_cast<double>(std::exp(static_cast<long double>(v))); }
inline double log(double v) noexcept { return static_cast<double>(std::log(static_cast<long double>(v))); }
inline double atan2(double y, double x) noexcept
{
  return static_cast<double>(std::atan2(static_cast<long double>(y), static_cast<long double>(x)));
}

/// Sine and cosine of an angle in degrees. Multiples of 90 degrees give exactly 0, 1 and -1. An angle that is
/// not finite counts as 0.
inline void sinCosDegrees(double degrees, double& sine, double& cosine) noexcept
{
  if (!std::isfinite(degrees)) degrees = 0.0;
  int quarter = 0;
  const double rest = std::remquo(degrees, 90.0, &quarter); // exact, within +-45
  const long double a = static_cast<long double>(rest) * (3.141592653589793238462643383279502884L / 180.0L);
  const double s = static_cast<double>(std::sin(a));
  const double c = static_cast<double>(std::cos(a));
  // remquo gives the low bits of the quotient with its sign; & 3 is the quadrant for negative ones, too.
  switch (quarter & 3) {
  case 0:
    sine = s, cosine = c;
    break;
  case 1:
    sine = c, cosine = -s;
    break;
  case 2:
    sine = -s, cosine = -c;
    break;
  default:
    sine = -c, cosine = s;
    break;
  }
}

} // namespace mc
