#include "kernels/BlockAverage.h"

#include "kernels/Parallel.h"

#include "BlockSums.h"

#include <cstddef>
#include <cstring>
#include <vector>

namespace kernels {

namespace {

// For blocks whose columns are too high for sums of 16 bits.
void averageLarge(const BlockRow& row, std::uint8_t* out)
{
  for (std::size_t i = 0; i < row.values(); ++i) {
    const std::size_t block = i / row.channels;
    const std::uint8_t* const first = row.source + block * row.factor * row.channels + i % row.channels;
    std::uint64_t sum = 0;
    for (std::size_t y = 0; y < row.factor; ++y)
      for (std::size_t x = 0; x < row.factor; ++x) sum += first[y * row.stride + x * row.channels];
    out[i] = static_cast<std::uint8_t>(sum / (row.factor * row.factor));
  }
}

} // namespace

void blockAverage(const std::uint8_t* src, int width, int height, int channels, int factor, std::uint8_t* dst)
{
  if (factor < 1) return;
  const auto n = static_cast<std::size_t>(channels);
  const auto f = static_cast<std::size_t>(factor);
  const BlockRow first{src, static_cast<std::size_t>(width) * n, n, f, static_cast<std::size_t>(width) / f};
  forRows(0, height / factor, rowGrain(width) / factor, [&](int begin, int end) {
    std::vector<std::uint16_t> sums(f <= kLargestColumn ? sumsOf(first) : 0);
    BlockRow row = first;
    for (auto y = static_cast<std::size_t>(begin); y < static_cast<std::size_t>(end); ++y) {
      row.source = src + y * f * row.stride;
      std::uint8_t* const out = dst + y * row.values();
      if (f == 1)
        std::memcpy(out, row.source, row.values());
      else if (f <= kLargestColumn)
        averageBlocks(row, sums.data(), out);
      else
        averageLarge(row, out);
    }
  });
}

} // namespace kernels
