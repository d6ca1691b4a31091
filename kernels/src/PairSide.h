#pragma once

#include "kernels/Affine.h"
#include "kernels/PairDifference.h"
#include "kernels/RowSpan.h"

#include <cstddef>
#include <cstdint>

namespace kernels {

/// Points that are looked up together.
inline constexpr int kPairBlock = 16;

/// One image of a pair as the rows of the grid are read from it.
struct PairSide {
  /// How the pixels of a row of the grid lie in the image.
  enum class Path {
    Row,      ///< side by side in one row
    Runs,     ///< side by side in long runs, each a row or a column further than the one before
    Turned,   ///< every block of points within kPairBlock columns of a few rows
    Gathered, ///< no two points further apart than a pixel
    Plain     ///< anywhere
  };

  PairSide() = default;
  PairSide(const PairImage& image, const Affine16& mapping, int channels);

  const std::uint8_t* pixels = nullptr;
  const std::uint8_t* end = nullptr; ///< behind the last byte that may be read
  std::int64_t stride = 0;           ///< bytes from row to row
  int width = 0;
  int height = 0;
  int pixelBytes = 1;
  Affine16 m;
  Path path = Path::Row;
  int blockRows = 1; ///< rows that a block of points can touch; Turned only

  /// Turned: how the points of a block lie behind the lowest column and row that the block touches. Numbers
  /// of 16 bits, each for a point with an even and the next with an odd number, for two blocks.
  struct Steps {
    alignas(32) std::int16_t place[kPairBlock] = {}; ///< whole part, column + 16 * row; odd: times 256
    alignas(32)
        std::int16_t carryX[kPairBlock] = {}; ///< a fraction (less 32768) above carries to the next column
    alignas(32) std::int16_t carryY[kPairBlock] = {}; ///< ... to the next row
  };
  Steps even, odd;

private:
  void makeSteps();
};

/// The exact sum of the squared differences over the rows [rowBegin, rowEnd) of the grid; the columns of row
/// j are spans[j - rowBegin], all of them inside both images.
std::uint64_t sumPairRows(const PairSide& a, const PairSide& b, const RowSpan* spans, int rowBegin,
                          int rowEnd);

/// Writes the pixels of these rows of the grid to their places in an image of the grid's size, whose first
/// pixel is at `out` and whose rows are `outStride` bytes apart.
void fetchPairRows(const PairSide& side, const RowSpan* spans, int rowBegin, int rowEnd, std::uint8_t* out,
                   std::int64_t outStride);

} // namespace kernels
