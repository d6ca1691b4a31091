#pragma once

#include "kernels/Affine.h"

#include <cstddef>
#include <cstdint>

namespace kernels {

/// How the pixels a and b of the first and the second slice make one pixel of the picture; all rules hold for
/// each colour alone.
enum class ComposeMode : std::uint8_t {
  RedGreen,       ///< green = a, red and blue = b; what is absent is 0
  Checkerboard,   ///< a in odd fields, b in even ones; the other slice is not asked, absent is 0
  Average,        ///< (a + b) >> 1; the present one where one is absent; 0 where both are
  InvertedOverlay ///< as Average with 255 - a in place of a
};

/// A slice shown alone is shown as it is in every mode, 0 where it is absent.
enum class ComposeShow : std::uint8_t { First, Second, Both };

/// One slice of the pair: its pixels, borrowed, and the way from a position of the contents into it. Without
/// pixels the slice is absent everywhere.
struct ComposeSlice {
  const std::uint8_t* pixels = nullptr;
  Affine16 inverse;
};

/// What the picture of a pair of slices shows.
///
/// Both slices are width x height pixels, at most 65,535 a side (larger ones are absent), of 1 channel (grey)
/// or 4 (red, green, blue, unused), rows without padding. Pixel (i, j) of the picture is position
/// (X, Y) = (left + i, top + j) of the contents, neither negative nor beyond the range of int. A slice is
/// present where its position (x, y) has 0 <= x < width * 65536 and 0 <= y < height * 65536; it shows the
/// pixel (x >> 16, y >> 16) there. The field of the checkerboard is odd where X / fieldSize + Y / fieldSize
/// is.
///
/// Coefficients for which the walk over the contents would leave 64 bits make their slice absent.
struct Composition {
  int width = 0;
  int height = 0;
  int channels = 1;
  ComposeSlice first;
  ComposeSlice second;
  ComposeMode mode = ComposeMode::InvertedOverlay;
  ComposeShow show = ComposeShow::Both;
  int fieldSize = 50; ///< below 1 counts as 1
  int left = 0;
  int top = 0;
};

/// Composes a picture of outWidth x outHeight pixels, rows `stride` pixels apart. A pixel is the number
/// 0x00RRGGBB, its highest byte always 0. Uses all threads.
void composePair(const Composition& composition, std::uint32_t* picture, int outWidth, int outHeight,
                 std::ptrdiff_t stride);

} // namespace kernels
