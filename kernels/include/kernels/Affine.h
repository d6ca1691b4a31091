#pragma once

#include <cstdint>

namespace kernels {

/// Affine mapping of the plane in double precision, row-vector convention; x to the right, y downwards, in
/// pixels.
///
/// The two sums are evaluated in exactly the written order, so that every loop which decides by a position
/// comes to the same decision.
struct Affine {
  double m11 = 1.0, m12 = 0.0, m21 = 0.0, m22 = 1.0, dx = 0.0, dy = 0.0;

  double mapX(double x, double y) const noexcept { return m11 * x + m21 * y + dx; }
  double mapY(double x, double y) const noexcept { return m12 * x + m22 * y + dy; }
};

/// Affine mapping in 16.16 fixed point, row-vector convention: grid point (i, j) maps to
/// x = dx + i * m11 + j * m21, y = dy + i * m12 + j * m22.
///
/// Every coefficient lies within +-2^45, as mc::toFixed16 makes it; the sums then stay within 64 bits.
struct Affine16 {
  std::int64_t m11 = 65536, m12 = 0, m21 = 0, m22 = 65536, dx = 0, dy = 0;
};

} // namespace kernels
