#pragma once

#include <cstdint>
#include <vector>

namespace robust {

/// A slice as it lies in the input: 8-bit samples of one channel (grey) or four (RGBA, of which three count),
/// row-major without padding, borrowed.
struct SliceImage {
  int width = 0;
  int height = 0;
  int channels = 1;
  const unsigned char* samples = nullptr;
  std::vector<std::uint8_t> mask; ///< one byte a pixel, 0 where a mask excludes it; empty without a mask
};

} // namespace robust
