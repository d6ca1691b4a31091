#pragma once

#include "kernels/PairDifference.h"

#include <cstddef>

/// The plain loop over all grid points that kernels::pairDifference must equal; null masks = no masks.
namespace reference {

inline bool contains(const kernels::PairImage& image, std::int64_t x, std::int64_t y)
{
  return x >= 0 && x < std::int64_t{image.width} * 65536 && y >= 0 && y < std::int64_t{image.height} * 65536;
}

inline bool isMasked(const kernels::PairImage& image, const kernels::PairMask* mask, std::int64_t px,
                     std::int64_t py)
{
  if (!mask) return false;
  const double w = image.width;
  const double h = image.height;
  const auto index = static_cast<std::int64_t>(static_cast<double>(py) * (mask->fullHeight / h) * w) +
                     static_cast<std::int64_t>(static_cast<double>(px) * (mask->fullWidth / w));
  return index < 0 || index >= std::int64_t{image.width} * image.height || mask->bytes[index] == 0;
}

inline kernels::PairDifference plainPairDifference(const kernels::PairImage& a, const kernels::Affine16& ma,
                                                   const kernels::PairImage& b, const kernels::Affine16& mb,
                                                   int gridWidth, int gridHeight, int channels,
                                                   const kernels::PairMask* maskA = nullptr,
                                                   const kernels::PairMask* maskB = nullptr)
{
  kernels::PairDifference sum;
  const int step = channels == 4 ? 4 : 1;
  for (int j = 0; j < gridHeight; ++j) {
    std::int64_t ax = ma.dx + j * ma.m21, ay = ma.dy + j * ma.m22;
    std::int64_t bx = mb.dx + j * mb.m21, by = mb.dy + j * mb.m22;
    for (int i = 0; i < gridWidth; ++i, ax += ma.m11, ay += ma.m12, bx += mb.m11, by += mb.m12) {
      if (!contains(a, ax, ay) || !contains(b, bx, by)) continue;
      if (isMasked(a, maskA, ax >> 16, ay >> 16) || isMasked(b, maskB, bx >> 16, by >> 16)) continue;
      const std::uint8_t* const pa = a.pixels + ((ay >> 16) * a.width + (ax >> 16)) * step;
      const std::uint8_t* const pb = b.pixels + ((by >> 16) * b.width + (bx >> 16)) * step;
      for (int c = 0; c < (channels == 4 ? 3 : 1); ++c)
        sum.squares += static_cast<std::uint64_t>((pa[c] - pb[c]) * (pa[c] - pb[c]));
      ++sum.count;
    }
  }
  return sum;
}

} // namespace reference
