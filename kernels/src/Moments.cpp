#include "kernels/Moments.h"

#include "kernels/Parallel.h"

#include <cstddef>
#include <vector>

namespace kernels {

namespace {

// Sums of v, x v and x^2 v along one row; the last stays below 2^8 * 2^48 / 3.
struct RowMoments {
  std::int64_t v0 = 0, v1 = 0, v2 = 0;
};

RowMoments rowMoments(const std::uint8_t* row, int width)
{
  RowMoments m;
  for (std::int64_t x = 0; x < width; ++x) {
    const std::int64_t v = row[x];
    m.v0 += v;
    m.v1 += x * v;
    m.v2 += x * x * v;
  }
  return m;
}

} // namespace

Moments momentsOf(const std::uint8_t* image, int width, int height)
{
  std::vector<RowMoments> rows(static_cast<std::size_t>(height > 0 ? height : 0));
  forRows(0, height, rowGrain(width), [&](int rowBegin, int rowEnd) {
    for (int y = rowBegin; y < rowEnd; ++y)
      rows[static_cast<std::size_t>(y)] = rowMoments(image + std::int64_t{y} * width, width);
  });
  Moments m;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto y = static_cast<double>(i);
    const auto v0 = static_cast<double>(rows[i].v0);
    m.m00 += v0;
    m.m10 += static_cast<double>(rows[i].v1);
    m.m20 += static_cast<double>(rows[i].v2);
    m.m01 += y * v0;
    m.m11 += y * static_cast<double>(rows[i].v1);
    m.m02 += y * y * v0;
  }
  return m;
}

} // namespace kernels
