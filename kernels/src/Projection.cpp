#include "kernels/Projection.h"

#include "kernels/Parallel.h"

#include "mc/McRound.h"

#include <algorithm>
#include <array>

namespace kernels {

namespace {

// Index of trunc(position + 0.5) within 0 ... size - 1, or -1.
std::int64_t nearestWithin(double position, int size)
{
  const double moved = position + 0.5;
  return moved > -1.0 && moved < size ? mc::truncToInt64(moved) : -1;
}

} // namespace

void projectSlice(const std::uint8_t* slice, int width, int height, const Affine& inverse,
                  std::uint8_t* image)
{
  forRows(0, height, rowGrain(width), [&](int rowBegin, int rowEnd) {
    for (int y = rowBegin; y < rowEnd; ++y) {
      std::uint8_t* const out = image + std::int64_t{y} * width;
      for (int x = 0; x < width; ++x) {
        const std::int64_t ix = nearestWithin(inverse.mapX(x, y), width);
        const std::int64_t iy = nearestWithin(inverse.mapY(x, y), height);
        if (ix >= 0 && iy >= 0) out[x] = std::max(out[x], slice[iy * width + ix]);
      }
    }
  });
}

void windowProjected(std::uint8_t* image, std::size_t n, float min, float scale)
{
  std::array<std::uint8_t, 256> table;
  for (std::size_t v = 0; v < table.size(); ++v)
    table[v] = mc::truncToByte((static_cast<float>(v) - min) * scale);
  for (std::size_t i = 0; i < n; ++i) image[i] = table[image[i]];
}

} // namespace kernels
