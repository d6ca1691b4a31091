#pragma once

#include "kernels/Affine.h"

#include <cstdint>

namespace kernels {

/// An 8-bit image, rows without padding; borrowed. Neither side may exceed 65,535 pixels.
struct PairImage {
  const std::uint8_t* pixels = nullptr;
  int width = 0;
  int height = 0;
};

/// Byte mask of an image at full resolution; borrowed. Not zero = the pixel counts.
///
/// The image that is compared may be a reduced one of size w x h. Its pixel (px, py) is looked up at
/// trunc(py * (fullHeight / h) * w) + trunc(px * (fullWidth / w)) with real quotients: the row is scaled to
/// full resolution but multiplied by the reduced width. At full size this is the plain index y * w + x; for
/// reduced images it is kept on purpose.
struct PairMask {
  const std::uint8_t* bytes = nullptr;
  int fullWidth = 0;
  int fullHeight = 0;
};

/// Result of comparing two slices on the grid of the aligned frame.
///
/// `squares` is the exact sum of squared differences over the `count` grid points that fall into both
/// slices; integers, so neither the order of summation nor the number of threads can change it.
struct PairDifference {
  std::uint64_t squares = 0; ///< grey levels squared; with colour summed over the three components
  std::uint64_t count = 0;   ///< grid points, also with colour

  friend PairDifference operator+(const PairDifference& a, const PairDifference& b) noexcept
  {
    return {a.squares + b.squares, a.count + b.count};
  }
  friend bool operator==(const PairDifference&, const PairDifference&) = default;
};

/// Compares two images over a grid of gridWidth x gridHeight points, each at most 65,535.
///
/// ma and mb map a grid point into the images. A point counts when it lies in both, that is
/// 0 <= x < width * 65536 and 0 <= y < height * 65536; the pixel is (x >> 16, y >> 16). With 4 channels the
/// first three bytes of a pixel are compared; every other number of channels is one grey byte a pixel. Images
/// or grids without a point or above the limits give zeros. Uses all threads.
PairDifference pairDifference(const PairImage& a, const Affine16& ma, const PairImage& b, const Affine16& mb,
                              int gridWidth, int gridHeight, int channels);

/// As pairDifference; a point counts only when, in addition, both mask bytes are not zero and their indices
/// lie in 0 ... width * height - 1 of the compared image.
PairDifference pairDifferenceMasked(const PairImage& a, const Affine16& ma, const PairMask& maskA,
                                    const PairImage& b, const Affine16& mb, const PairMask& maskB,
                                    int gridWidth, int gridHeight, int channels);

} // namespace kernels
