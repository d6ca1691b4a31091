#pragma once

#include "kernels/Affine.h"

#include "ColumnRange.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace kernels {

/// The slice that a span looks up, as bytes.
struct SliceBytes {
  const std::uint8_t* bytes = nullptr;
  std::size_t width = 0, height = 0; ///< pixels
  std::size_t channels = 1;
  std::size_t pixelBytes = 1; ///< of all channels together

  std::size_t rowBytes() const noexcept { return width * pixelBytes; }
  const std::uint8_t* at(int x, int y) const noexcept
  {
    return bytes + static_cast<std::size_t>(y) * rowBytes() + static_cast<std::size_t>(x) * pixelBytes;
  }
};

/// Positions in the slice along one output row, moved by shift: one half makes the nearest pixel the
/// truncated position.
struct RowPositions {
  Affine inverse;
  double left = 0.0, y = 0.0, shift = 0.0;

  /// False where the positions may be infinite or no numbers; none of them is inside a slice then.
  bool isFinite() const noexcept
  {
    const Affine& m = inverse;
    for (const double c : {m.m11, m.m12, m.m21, m.m22, m.dx, m.dy, m.m21 * y, m.m22 * y})
      if (!std::isfinite(c)) return false;
    return true;
  }
  double xAt(int column) const noexcept
  {
    return inverse.mapX(static_cast<double>(column) - left, y) + shift;
  }
  double yAt(int column) const noexcept
  {
    return inverse.mapY(static_cast<double>(column) - left, y) + shift;
  }
};

/// What becomes of a position: the nearest pixel byte for byte, the nearest pixel's values through float, or
/// the weighted sum of the four neighbours in float.
enum class SpanRule : std::uint8_t { Copy, ThroughFloat, Linear };

enum class Element : std::uint8_t { UInt8, Int16, Int32, Float, Double, UInt16 };

/// Fills the pixels of some columns of one output row. All of them lie inside the slice by the rule; out is
/// the pixel of the first column. Taken by value, so that no store to out can be one to what a loop reads.
using SpanFunction = void (*)(SliceBytes slice, RowPositions row, ColumnRange columns, void* out);

/// The function for the instruction set of this machine. Copy only looks at the size of a pixel.
SpanFunction spanFunction(Element element, SpanRule rule, const SliceBytes& slice);

/// The same without vector code: for machines without it, and for the few columns that it cannot do.
SpanFunction plainSpanFunction(Element element, SpanRule rule);

} // namespace kernels
