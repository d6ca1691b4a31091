#pragma once

#include <algorithm>
#include <cstdint>

/// Walking over an image in 16.16 fixed point, without a test of every pixel.
namespace kernels {

/// The longest side of an image that can be walked over.
inline constexpr int kMaxSide = 65535;

/// Points [begin, end) of a row; none when begin >= end.
struct Span {
  std::int64_t begin, end;
};

/// Where the walk along one row of the grid starts in an image, and its step. Positions inside an image fit
/// into 32 bits; the steps are taken modulo 2^32, which gives the same positions.
struct Walk {
  const std::uint8_t* pixels;
  std::uint32_t x, y, stepX, stepY, width;
};

inline std::int64_t floorDiv(std::int64_t a, std::int64_t b) { return a / b - (a % b < 0 ? 1 : 0); }
inline std::int64_t ceilDiv(std::int64_t a, std::int64_t b) { return a / b + (a % b > 0 ? 1 : 0); }

/// The part of `within` where 0 <= start + i * step < limit.
inline Span inside(std::int64_t start, std::int64_t step, std::int64_t limit, Span within)
{
  const auto contains = [&](std::int64_t i) {
    const std::int64_t v = start + i * step;
    return v >= 0 && v < limit;
  };
  if (within.begin >= within.end || (contains(within.begin) && contains(within.end - 1))) return within;
  if (step == 0) return {0, 0};
  const std::int64_t last = limit - 1;
  const std::int64_t first = step > 0 ? ceilDiv(-start, step) : ceilDiv(start - last, -step);
  const std::int64_t final = step > 0 ? floorDiv(last - start, step) : floorDiv(start, -step);
  return {std::max(within.begin, first), std::min(within.end, final + 1)};
}

inline bool isUnturned(const Walk& w) { return w.stepX == 65536 && w.stepY == 0; }

/// Index of the pixel at a position; below 2^32 for sides up to 65,535.
inline std::uint32_t pixelAt(const Walk& w, std::uint32_t x, std::uint32_t y)
{
  return (y >> 16) * w.width + (x >> 16);
}

/// Pixel indices of the next n points. Kept apart from the look-up, so that it becomes vector code.
inline void nextPixels(Walk& w, int n, std::uint32_t* index)
{
  std::uint32_t x = w.x;
  std::uint32_t y = w.y;
  for (int k = 0; k < n; ++k) {
    index[k] = pixelAt(w, x, y);
    x += w.stepX;
    y += w.stepY;
  }
  w.x = x;
  w.y = y;
}

} // namespace kernels
