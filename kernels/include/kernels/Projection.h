#pragma once

#include "kernels/Affine.h"

#include <cstddef>
#include <cstdint>

namespace kernels {

/// Adds one slice to a maximum-intensity projection: every pixel (x, y) of image keeps the larger of its
/// value and the slice's value at (trunc(sx + 0.5), trunc(sy + 0.5)), where (sx, sy) = inverse(x, y).
///
/// Truncation is towards zero on purpose, so positions down to just above -1.5 still count as pixel 0. slice
/// and image are width x height bytes and do not overlap; positions that are not finite count as outside.
/// Uses all threads.
void projectSlice(const std::uint8_t* slice, int width, int height, const Affine& inverse,
                  std::uint8_t* image);

/// Applies the display window to a finished projection, in place: trunc(clamp((v - min) * scale, 0, 255)).
/// Unlike the mapping of a single slice it does not round to the nearest.
void windowProjected(std::uint8_t* image, std::size_t n, float min, float scale);

} // namespace kernels
