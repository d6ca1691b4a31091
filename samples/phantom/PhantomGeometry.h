#pragma once

#include "phantom/PhantomRandom.h"

#include <cmath>

namespace samples {

/// How many pixels thick a section is: one slice down counts as far as this many pixels sideways.
inline constexpr double kPixelsPerSlice = 5.0;

/// A place in the tissue: x and y in pixels, y downwards; z in pixels as well, relative to the slice at hand.
struct Place {
  double x = 0, y = 0, z = 0;
};

inline Place operator+(Place a, Place b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Place operator-(Place a, Place b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Place operator*(Place a, double f) { return {a.x * f, a.y * f, a.z * f}; }
inline double dot(Place a, Place b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline double length(Place a) { return std::sqrt(dot(a, a)); }

/// A round part of a slice.
struct Disc {
  double x = 0, y = 0, radius = 0;
};

/// A direction evenly distributed over the sphere.
inline Place randomDirection(PhantomRandom& random)
{
  for (;;) {
    const double x = random.within(-1, 1), y = random.within(-1, 1), z = random.within(-1, 1);
    const double l = length({x, y, z});
    if (l > 0.1 && l <= 1.0) return Place{x, y, z} * (1.0 / l);
  }
}

/// A direction within the slice.
inline Place randomHeading(PhantomRandom& random)
{
  for (;;) {
    const double x = random.within(-1, 1), y = random.within(-1, 1);
    const double l = length({x, y, 0});
    if (l > 0.1 && l <= 1.0) return {x / l, y / l, 0};
  }
}

/// 0 below -width, 1 above width, smooth between.
inline double edge(double distance, double width)
{
  const double t = std::fmin(1.0, std::fmax(0.0, 0.5 + 0.5 * distance / width));
  return t * t * (3.0 - 2.0 * t);
}

/// 1 at 0, falling smoothly to 0 at +-width.
inline double ridge(double distance, double width)
{
  const double t = distance / width;
  const double rest = std::fmax(0.0, 1.0 - t * t);
  return rest * rest;
}

inline double mix(double a, double b, double share) { return a + (b - a) * share; }

} // namespace samples
