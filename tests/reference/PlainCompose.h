#pragma once

#include "kernels/Compose.h"

#include <array>

/// The plain loop over all pixels that kernels::composePair must equal.
namespace reference {

struct SlicePixel {
  bool present = false;
  std::array<int, 3> rgb{};
};

inline SlicePixel pixelOf(const kernels::Composition& c, const kernels::ComposeSlice& slice, std::int64_t x,
                          std::int64_t y)
{
  const kernels::Affine16& m = slice.inverse;
  const std::int64_t px = m.dx + x * m.m11 + y * m.m21;
  const std::int64_t py = m.dy + x * m.m12 + y * m.m22;
  if (px < 0 || px >= std::int64_t{c.width} * 65536 || py < 0 || py >= std::int64_t{c.height} * 65536)
    return {};
  const std::uint8_t* const p = slice.pixels + ((py >> 16) * c.width + (px >> 16)) * c.channels;
  return c.channels == 4 ? SlicePixel{true, {p[0], p[1], p[2]}} : SlicePixel{true, {p[0], p[0], p[0]}};
}

inline int composed(const kernels::Composition& c, const SlicePixel& a, const SlicePixel& b, int channel,
                    bool odd)
{
  const auto index = static_cast<std::size_t>(channel);
  const int va = a.rgb[index];
  const int vb = b.rgb[index];
  if (c.show == kernels::ComposeShow::First) return va;
  if (c.show == kernels::ComposeShow::Second) return vb;
  if (c.mode == kernels::ComposeMode::RedGreen) return channel == 1 ? va : vb;
  if (c.mode == kernels::ComposeMode::Checkerboard) return odd ? va : vb;
  const int shown = c.mode == kernels::ComposeMode::InvertedOverlay ? 255 - va : va;
  if (a.present && b.present) return (vb + shown) >> 1;
  return a.present ? shown : b.present ? vb : 0;
}

inline std::uint32_t plainPixel(const kernels::Composition& c, std::int64_t x, std::int64_t y)
{
  const SlicePixel a = pixelOf(c, c.first, x, y);
  const SlicePixel b = pixelOf(c, c.second, x, y);
  const bool odd = (x / c.fieldSize + y / c.fieldSize) % 2 == 1;
  std::uint32_t pixel = 0;
  for (int channel = 0; channel < 3; ++channel)
    pixel = pixel * 256 + static_cast<std::uint32_t>(composed(c, a, b, channel, odd));
  return pixel;
}

inline void plainCompose(const kernels::Composition& c, std::uint32_t* picture, int outWidth, int outHeight,
                         std::ptrdiff_t stride)
{
  for (int j = 0; j < outHeight; ++j)
    for (int i = 0; i < outWidth; ++i)
      picture[j * stride + i] = plainPixel(c, std::int64_t{c.left} + i, std::int64_t{c.top} + j);
}

} // namespace reference
