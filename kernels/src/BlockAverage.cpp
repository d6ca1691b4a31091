#include "kernels/BlockAverage.h"

#include "kernels/Parallel.h"

#include <cstddef>

namespace kernels {

namespace {

struct Blocks {
  std::size_t stride, channels, factor, area;
};

std::uint8_t averageOf(const Blocks& blocks, const std::uint8_t* first)
{
  std::uint64_t sum = 0;
  for (std::size_t y = 0; y < blocks.factor; ++y)
    for (std::size_t x = 0; x < blocks.factor; ++x) sum += first[y * blocks.stride + x * blocks.channels];
  return static_cast<std::uint8_t>(sum / blocks.area);
}

} // namespace

void blockAverage(const std::uint8_t* src, int width, int height, int channels, int factor, std::uint8_t* dst)
{
  if (factor < 1) return;
  const auto n = static_cast<std::size_t>(channels);
  const auto f = static_cast<std::size_t>(factor);
  const Blocks blocks{static_cast<std::size_t>(width) * n, n, f, f * f};
  const auto outWidth = static_cast<std::size_t>(width / factor);
  forRows(0, height / factor, rowGrain(width) / factor, [&](int begin, int end) {
    for (auto y = static_cast<std::size_t>(begin); y < static_cast<std::size_t>(end); ++y) {
      const std::uint8_t* const row = src + y * f * blocks.stride;
      std::uint8_t* const out = dst + y * outWidth * n;
      for (std::size_t x = 0; x < outWidth; ++x)
        for (std::size_t c = 0; c < n; ++c) out[x * n + c] = averageOf(blocks, row + x * f * n + c);
    }
  });
}

} // namespace kernels
