#pragma once

#include <cstdint>

namespace kernels {

/// Reduces an 8-bit image with interleaved channels by whole blocks of factor x factor pixels.
///
/// dst receives (width / factor) x (height / factor) pixels, each the integer sum of its block divided by
/// factor^2 and truncated, per channel; blocks that do not fit are dropped. dst and src do not overlap;
/// a factor below 1 writes nothing. Uses all threads.
void blockAverage(const std::uint8_t* src, int width, int height, int channels, int factor,
                  std::uint8_t* dst);

} // namespace kernels
