#pragma once

#include <cstdint>

namespace kernels {

/// Sums of v, x v, y v, x^2 v, x y v and y^2 v over the pixels of an image; x is the column, y the row, v the
/// grey value.
struct Moments {
  double m00 = 0.0, m10 = 0.0, m01 = 0.0, m20 = 0.0, m11 = 0.0, m02 = 0.0;
};

/// The moments of an 8-bit image of width x height pixels, rows without padding, neither side above 65,535.
///
/// Each row is summed in integers, the rows are added in double from the first to the last, so that the
/// result does not depend on the number of threads. Uses all threads.
Moments momentsOf(const std::uint8_t* image, int width, int height);

} // namespace kernels
