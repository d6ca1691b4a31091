#pragma once

#include <array>
#include <cstdint>

/// One object on a plain background: which pixels belong to it, where it lies, where a ray meets its edge.
namespace kernels {

/// An 8-bit image of 1 channel (grey) or 4 (R, G, B, A), rows without padding, neither side above 65,535;
/// borrowed. The grey value of a colour pixel is (R + G + B) / 3 in integers.
struct ObjectImage {
  const std::uint8_t* pixels = nullptr;
  int width = 0;
  int height = 0;
  int channels = 1;
};

/// The grey values of the object: below the threshold where the object is dark, else above it.
struct ObjectTest {
  int threshold = 0;
  bool dark = false;

  bool operator()(int grey) const noexcept { return dark ? grey < threshold : grey > threshold; }
};

/// The square that decides whether a point lies in the object, and the points that are tested.
///
/// Points lie on every raster-th row and column from 0. Around each the pixels at offsets
/// -half, -half + step, ... up to half in x and in y are tested; those outside 1 ... size - 1 do not count,
/// so that the first row and column never do. A point belongs to the object when more than limit pixels do.
struct ObjectSquare {
  int half = 0;
  int step = 1;   ///< 1 or more
  int raster = 1; ///< 1 or more
  int limit = 0;
};

/// How many points belong to the object, and the sums of their positions.
struct ObjectPoints {
  std::int64_t count = 0, sumX = 0, sumY = 0;

  friend ObjectPoints operator+(const ObjectPoints& a, const ObjectPoints& b) noexcept
  {
    return {a.count + b.count, a.sumX + b.sumX, a.sumY + b.sumY};
  }
  friend bool operator==(const ObjectPoints&, const ObjectPoints&) = default;
};

/// Tests the points of the raster by the grey values around them. Uses all threads.
ObjectPoints objectPoints(const ObjectImage& image, const ObjectTest& test, const ObjectSquare& square);

/// How often each grey value occurs in the image without a frame of `margin` pixels.
std::array<std::uint64_t, 256> greyHistogram(const ObjectImage& image, int margin);

struct PixelPosition {
  int x = 0;
  int y = 0;
  friend bool operator==(const PixelPosition&, const PixelPosition&) = default;
};

/// Walks the line of pixels from one position to another, both included and both allowed to lie outside the
/// image, and stops at the first with more than 5 object pixels among the 7 x 7 around it. In colour a pixel
/// belongs to the object when each of its three channels passes the test. False, and edge stays as it is,
/// when the line meets none.
bool findEdge(const ObjectImage& image, const ObjectTest& test, PixelPosition from, PixelPosition to,
              PixelPosition& edge);

} // namespace kernels
