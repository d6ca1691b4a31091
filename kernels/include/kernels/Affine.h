#pragma once

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

} // namespace kernels
