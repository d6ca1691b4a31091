#include "kernels/Projection.h"

#include "kernels/Parallel.h"

#include "ColumnRange.h"
#include "ResampleSpan.h"

#include "mc/McRound.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace kernels {

namespace {

// The columns of a row whose position truncates to a pixel of the slice: towards zero, hence from above -1
// on.
ColumnRange columnsReached(const RowPositions& row, int width, int height)
{
  if (!row.isFinite()) return {};
  const auto above = [](double v) { return v > -1.0; };
  const auto below = [](int size) { return [size](double v) { return v < size; }; };
  const ColumnRange inX = columnsInside(
      {0, width}, row.inverse.m11 >= 0.0, [&row](int i) { return row.xAt(i); }, above, below(width));
  return columnsInside(
      inX, row.inverse.m12 >= 0.0, [&row](int i) { return row.yAt(i); }, above, below(height));
}

} // namespace

void projectSlice(const std::uint8_t* slice, int width, int height, const Affine& inverse,
                  std::uint8_t* image)
{
  const SliceBytes bytes{slice, static_cast<std::size_t>(width), static_cast<std::size_t>(height), 1, 1};
  const SpanFunction lookUp = spanFunction(Element::UInt8, SpanRule::Copy, bytes);
  forRows(0, height, rowGrain(width), [&](int rowBegin, int rowEnd) {
    constexpr int piece = 1024;
    std::array<std::uint8_t, piece> found;
    for (int y = rowBegin; y < rowEnd; ++y) {
      const RowPositions row{inverse, 0.0, static_cast<double>(y), 0.5};
      const ColumnRange columns = columnsReached(row, width, height);
      std::uint8_t* const out = image + std::int64_t{y} * width;
      for (int x = columns.begin; x < columns.end; x += piece) {
        const int end = std::min(x + piece, columns.end);
        lookUp(bytes, row, {x, end}, found.data());
        std::transform(out + x, out + end, found.begin(), out + x,
                       [](std::uint8_t a, std::uint8_t b) { return std::max(a, b); });
      }
    }
  });
}

void windowProjected(std::uint8_t* image, std::size_t n, float min, float scale)
{
  std::array<std::uint8_t, 256> table;
  for (std::size_t v = 0; v < table.size(); ++v)
    table[v] = mc::truncToByte((static_cast<float>(v) - min) * scale);
  for (std::size_t i = 0; i < n; ++i) image[i] = table[image[i]];
}

} // namespace kernels
