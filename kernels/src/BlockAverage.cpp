#include "kernels/BlockAverage.h"

#include "kernels/Parallel.h"

#include <cstddef>

namespace kernels {

namespace {

struct Rows {
  const std::uint8_t* pixels;
  std::size_t stride, channels, factor;
};

std::uint8_t averageOf(const Rows& src, const std::uint8_t* block)
{
  std::uint64_t sum = 0;
  for (std::size_t y = 0; y < src.factor; ++y)
    for (std::size_t x = 0; x < src.factor; ++x) sum += block[y * src.stride + x * src.channels];
  return static_cast<std::uint8_t>(sum / (src.factor * src.factor));
}

} // namespace

void blockAverage(const std::uint8_t* src, int width, int height, int channels, int factor, std::uint8_t* dst)
{
  const auto n = static_cast<std::size_t>(channels);
  const Rows rows{src, static_cast<std::size_t>(width) * n, n, static_cast<std::size_t>(factor)};
  const auto outWidth = static_cast<std::size_t>(width / factor);
  forRows(0, height / factor, rowGrain(width) / factor, [&](int begin, int end) {
    for (auto y = static_cast<std::size_t>(begin); y < static_cast<std::size_t>(end); ++y) {
      const std::uint8_t* const blocks = rows.pixels + y * rows.factor * rows.stride;
      std::uint8_t* const out = dst + y * outWidth * n;
      for (std::size_t x = 0; x < outWidth; ++x)
        for (std::size_t c = 0; c < n; ++c)
          out[x * n + c] = averageOf(rows, blocks + x * rows.factor * n + c);
    }
  });
}

} // namespace kernels
