#pragma once

#include <cstddef>
#include <cstdint>

/// The plain loop over the pixels of every block that kernels::blockAverage must equal.
namespace reference {

inline void plainBlockAverage(const std::uint8_t* src, int width, int height, int channels, int factor,
                              std::uint8_t* dst)
{
  const auto at = [&](int x, int y, int c) {
    const auto pixel =
        static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    return src[pixel * static_cast<std::size_t>(channels) + static_cast<std::size_t>(c)];
  };
  for (int y = 0; y + factor <= height; y += factor)
    for (int x = 0; x + factor <= width; x += factor)
      for (int c = 0; c < channels; ++c) {
        std::uint64_t sum = 0;
        for (int j = 0; j < factor; ++j)
          for (int i = 0; i < factor; ++i) sum += at(x + i, y + j, c);
        *dst++ = static_cast<std::uint8_t>(
            sum / (static_cast<std::uint64_t>(factor) * static_cast<std::uint64_t>(factor)));
      }
}

} // namespace reference
