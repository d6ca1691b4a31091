#include "zxalign/ZxAutoAlignMethod.h"

#include "kernels/Moments.h"
#include "mc/McMath.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignSlices.h"

#include <algorithm>
#include <cmath>

namespace {

struct Direction {
  double x, y;
};

/// The direction of the least spread, across the principal axis: the eigenvector of the smaller eigenvalue of
/// [[a20, a11], [a11, a02]]; (0, 1) where every direction is one, that is, where the eigenvalues differ by no
/// more than rounding.
Direction crossDirection(double a20, double a11, double a02, double rounding)
{
  const double spread = std::sqrt(std::max(0.0, (a20 - a02) * (a20 - a02) / 4.0 + a11 * a11));
  if (!(spread > rounding)) return {0.0, 1.0};
  const double lambda = (a20 + a02) / 2.0 + spread;
  const double p = a02 - lambda;
  const double q = a20 - lambda;
  if (std::abs(p) > std::abs(q))
    return std::abs(p) > std::abs(a11) ? Direction{a11 / p, 1.0} : Direction{1.0, p / a11};
  if (std::abs(q) > std::abs(a11)) return {1.0, a11 / q};
  return a11 != 0.0 ? Direction{q / a11, 1.0} : Direction{0.0, 1.0};
}

} // namespace

void ZxAutoAlignMethod::computeCenterAndOrientation(const unsigned char* image, McVec2f& center, float& angle,
                                                    int flipped) const
{
  const ZxDims& dims = m_module->sliceData().getDims();
  kernels::Moments m = kernels::momentsOf(image, dims.width, dims.height);
  if (m.m00 == 0.0) m.m00 = 1.0;
  const double cx = m.m10 / m.m00;
  const double cy = m.m01 / m.m00;
  const double a20 = (m.m20 - 2.0 * cx * m.m10 + cx * cx * m.m00) / m.m00;
  const double a11 = (m.m11 - cx * m.m01 - cy * m.m10 + cx * cy * m.m00) / m.m00;
  const double a02 = (m.m02 - 2.0 * cy * m.m01 + cy * cy * m.m00) / m.m00;
  // The central moments are small differences of these sums.
  const Direction d = crossDirection(a20, a11, a02, 1e-12 * (m.m20 + m.m02) / m.m00);
  const double length = std::sqrt(d.x * d.x + d.y * d.y);
  angle = static_cast<float>(mc::atan2(d.y / length, (flipped ? -d.x : d.x) / length));
  center = {static_cast<float>(cx), static_cast<float>(cy)};
}
