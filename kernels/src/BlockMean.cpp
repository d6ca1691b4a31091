#include "kernels/BlockMean.h"

#include "kernels/BlockAverage.h"
#include "kernels/Parallel.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace kernels {
namespace {

/// The mean of one channel of a block whose first value is at `first`.
template <class T>
T meanOf(const T* first, std::size_t stride, std::size_t channels, std::size_t factor)
{
  // 2^32 values of 32 bits fit into 64.
  using Sum = std::conditional_t<std::is_integral_v<T>, std::int64_t, double>;
  Sum sum = 0;
  for (std::size_t y = 0; y < factor; ++y)
    for (std::size_t x = 0; x < factor; ++x) sum += static_cast<Sum>(first[y * stride + x * channels]);
  return static_cast<T>(sum / static_cast<Sum>(factor * factor));
}

/// Calls make(pixel of the output, first pixel of its block) for all blocks.
template <class Make>
void forBlocks(int width, int height, int factor, Make make)
{
  const auto f = static_cast<std::size_t>(factor);
  const auto outWidth = static_cast<std::size_t>(width / factor);
  forRows(0, height / factor, rowGrain(width) / factor, [&](int begin, int end) {
    for (auto y = static_cast<std::size_t>(begin); y < static_cast<std::size_t>(end); ++y)
      for (std::size_t x = 0; x < outWidth; ++x)
        make(y * outWidth + x, y * f * static_cast<std::size_t>(width) + x * f);
  });
}

} // namespace

template <class T>
void blockMean(const T* src, int width, int height, int channels, int factor, T* dst)
{
  if constexpr (std::is_same_v<T, std::uint8_t>) {
    blockAverage(src, width, height, channels, factor, dst);
  } else {
    const auto n = static_cast<std::size_t>(channels);
    forBlocks(width, height, factor, [&](std::size_t pixel, std::size_t block) {
      for (std::size_t c = 0; c < n; ++c)
        dst[pixel * n + c] = meanOf(src + block * n + c, static_cast<std::size_t>(width) * n, n,
                                    static_cast<std::size_t>(factor));
    });
  }
}

template <class T>
void blockCentre(const T* src, int width, int height, int factor, T* dst)
{
  const auto half = static_cast<std::size_t>(factor / 2);
  const std::size_t centre = half * static_cast<std::size_t>(width) + half;
  forBlocks(width, height, factor,
            [&](std::size_t pixel, std::size_t block) { dst[pixel] = src[block + centre]; });
}

#define ZX_BLOCKS(T)                                                                                         \
  template void blockMean<T>(const T*, int, int, int, int, T*);                                              \
  template void blockCentre<T>(const T*, int, int, int, T*);
ZX_BLOCKS(std::uint8_t)
ZX_BLOCKS(std::int16_t)
ZX_BLOCKS(std::uint16_t)
ZX_BLOCKS(std::int32_t)
ZX_BLOCKS(float)
ZX_BLOCKS(double)
#undef ZX_BLOCKS

} // namespace kernels
