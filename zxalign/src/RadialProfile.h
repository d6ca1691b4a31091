#pragma once

#include "kernels/ObjectPixels.h"

#include <vector>

/// The radius of an object along rays around its centre: entry k belongs to the direction k * step degrees,
/// x towards y (downwards); whole pixels.
using RadialProfile = std::vector<float>;

/// Number of entries for an angular step in degrees, above 0: 360 / step, cut off.
int radialProfileLength(float step);

/// Measures n entries. The rays start on the circle of half the larger side and walk to the centre until they
/// meet the object; a ray that meets nothing takes the hit of the ray before, the first one the centre.
///
/// A ray and the three at right angles to it are measured together and go to the entries k, k + n / 4,
/// k + n / 2 and k + 3 n / 4 in whole numbers: where n is not divisible by 4 some entries stay 0.
RadialProfile measureRadialProfile(const kernels::ObjectImage& image, const kernels::ObjectTest& test,
                                   kernels::PixelPosition centre, int n, float step);

/// The cyclic shift of the editable profile that fits the reference profile best.
struct ProfileMatch {
  /// editable[(i + shift) mod n] belongs to reference[i], or to reference[n - 1 - i] when mirrored
  int shift = 0;
  bool mirrored = false;
};

enum class MirroredToo { No, Yes };

/// Finds the shift with the smallest sum of absolute differences; the first of equal ones, and a mirrored one
/// only when it is strictly better. The profiles have the same length.
ProfileMatch matchProfiles(const RadialProfile& reference, const RadialProfile& editable,
                           MirroredToo mirroredToo);
