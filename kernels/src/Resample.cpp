#include "kernels/Resample.h"

#include "kernels/Parallel.h"

#include "ColumnRange.h"
#include "ResampleSpan.h"
#include "StoredValue.h"

#include "mc/McRound.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <type_traits>
#include <vector>

namespace kernels {

namespace {

template <class T>
constexpr Element elementOf()
{
  if constexpr (std::is_same_v<T, std::uint8_t>) return Element::UInt8;
  if constexpr (std::is_same_v<T, std::int16_t>) return Element::Int16;
  if constexpr (std::is_same_v<T, std::int32_t>) return Element::Int32;
  if constexpr (std::is_same_v<T, float>) return Element::Float;
  if constexpr (std::is_same_v<T, double>) return Element::Double;
  if constexpr (std::is_same_v<T, std::uint16_t>) return Element::UInt16;
}

// The columns of a row that the slice reaches; empty ranges begin at 0.
ColumnRange columnsReached(const ResampleFrame& frame, const RowPositions& row, int beyond)
{
  const Affine& m = frame.inverse;
  if (!row.isFinite()) return {};
  const auto inX = columnsInside(
      {0, frame.outWidth}, m.m11, [&row](int i) { return row.xAt(i); }, frame.width - beyond);
  const auto columns = columnsInside(
      inX, m.m12, [&row](int i) { return row.yAt(i); }, frame.height - beyond);
  return columns.begin < columns.end ? columns : ColumnRange{};
}

// Whether one column further is one pixel further along a row of the slice, in spite of all rounding: the
// positions are below 2^31, where it stays below 2^-20.
bool shiftsColumns(const Affine& m, SpanRule rule)
{
  constexpr double margin = 1.0 / (1 << 20);
  if (m.m11 != 1.0 || m.m12 != 0.0 || m.m21 != 0.0 || !(std::abs(m.dx) < 1 << 30)) return false;
  const double fraction = m.dx - std::floor(m.dx);
  if (fraction == 0.0) return true;
  return rule == SpanRule::Copy && std::abs(fraction - 0.5) > margin;
}

// Reads a byte of every cache line. Loads, because the processor may ignore mere hints.
void touch(const std::uint8_t* begin, const std::uint8_t* end)
{
  constexpr std::ptrdiff_t line = 64;
  const auto read = [](const volatile std::uint8_t* p) { static_cast<void>(*p); };
  for (; end - begin > line; begin += line) read(begin);
  read(end - 1);
}

// One slice on its way to its output.
struct Task {
  const ResampleFrame& frame;
  SliceBytes slice;
  SpanRule rule;
  SpanFunction span;
  bool shifts;                    // rows are copied where they also lie on a row of the slice
  const std::uint8_t* background; // of one pixel
  std::uint8_t* output;

  std::uint8_t* at(int row, int column) const
  {
    const std::size_t pixels = static_cast<std::size_t>(row) * static_cast<std::size_t>(frame.outWidth) +
                               static_cast<std::size_t>(column);
    return output + pixels * slice.pixelBytes;
  }

  RowPositions positions(int row) const
  {
    return {frame.inverse, static_cast<double>(frame.left), static_cast<double>(row) - frame.top,
            rule == SpanRule::Linear ? 0.0 : 0.5};
  }

  void fill(int row, ColumnRange columns) const
  {
    if (columns.begin >= columns.end) return;
    const std::size_t size = slice.pixelBytes;
    const std::size_t all = static_cast<std::size_t>(columns.end - columns.begin) * size;
    std::uint8_t* const out = at(row, columns.begin);
    std::memcpy(out, background, size);
    // What is filled already is the pattern of the rest.
    for (std::size_t done = size; done < all; done *= 2)
      std::memcpy(out + done, out, std::min(done, all - done));
  }

  // With whole positions the mean of four neighbours is the first of them.
  bool copied(int row, ColumnRange columns) const
  {
    if (!shifts) return false;
    const RowPositions from = positions(row);
    const double y = from.yAt(columns.begin);
    if (rule == SpanRule::Linear && y != std::floor(y)) return false;
    std::memcpy(at(row, columns.begin),
                slice.at(mc::truncInRange(from.xAt(columns.begin)), mc::truncInRange(y)),
                static_cast<std::size_t>(columns.end - columns.begin) * slice.pixelBytes);
    return true;
  }

  // Brings the part of the slice that a tile reads into the cache. The processor foresees no short runs on
  // many rows, and look-ups that each wait for memory take three times as long. Loads, because it may ignore
  // hints.
  void fetch(ColumnRange rows, ColumnRange columns) const
  {
    double xBegin = frame.width, xEnd = 0.0, yBegin = frame.height, yEnd = 0.0;
    for (const int row : {rows.begin, rows.end})
      for (const int column : {columns.begin, columns.end}) {
        const RowPositions corner = positions(row);
        const double x = corner.xAt(column), y = corner.yAt(column);
        xBegin = std::min(xBegin, x), xEnd = std::max(xEnd, x);
        yBegin = std::min(yBegin, y), yEnd = std::max(yEnd, y);
      }
    const auto within = [](double v, int size) { return std::clamp(mc::truncToInt(v), 0, size - 1); };
    const int left = within(xBegin, frame.width), right = within(xEnd + 1.0, frame.width);
    const int top = within(yBegin, frame.height), bottom = within(yEnd + 1.0, frame.height);
    const int reach = 4 * std::max(tileRows, tileColumns);
    if (right - left > reach || bottom - top > reach) return; // most of it would not be read
    for (int y = top; y <= bottom; ++y) touch(slice.at(left, y), slice.at(right, y) + slice.pixelBytes);
  }

  // The rows of a tile share the cache lines of the slice, however it is turned.
  static constexpr int tileRows = 32;
  static constexpr int tileColumns = 256;

  void resample(int rowBegin, int rowEnd) const
  {
    for (int row = rowBegin; row < rowEnd; row += tileRows)
      resampleTiles(row, std::min(row + tileRows, rowEnd));
  }

  void resampleTiles(int rowBegin, int rowEnd) const
  {
    std::array<ColumnRange, tileRows> inside;
    ColumnRange all{frame.outWidth, 0};
    for (int row = rowBegin; row < rowEnd; ++row) {
      const ColumnRange columns = columnsReached(frame, positions(row), rule == SpanRule::Linear ? 1 : 0);
      fill(row, {0, columns.begin});
      fill(row, {columns.end, frame.outWidth});
      const bool done = columns.begin >= columns.end || copied(row, columns);
      inside[static_cast<std::size_t>(row - rowBegin)] = done ? ColumnRange{} : columns;
      if (!done) all = {std::min(all.begin, columns.begin), std::max(all.end, columns.end)};
    }
    for (int column = all.begin; column < all.end; column += tileColumns) {
      fetch({rowBegin, rowEnd}, {column, std::min(column + tileColumns, all.end)});
      for (int row = rowBegin; row < rowEnd; ++row) {
        const ColumnRange& columns = inside[static_cast<std::size_t>(row - rowBegin)];
        const ColumnRange part{std::max(columns.begin, column), std::min(columns.end, column + tileColumns)};
        if (part.begin < part.end) span(slice, positions(row), part, at(row, part.begin));
      }
    }
  }
};

template <class T>
void resampleAll(const ResampleFrame& frame, const T* source, SpanRule rule, const std::vector<T>& background,
                 T* output, int rowBegin, int rowEnd)
{
  if (frame.outWidth <= 0) return;
  const SliceBytes slice{reinterpret_cast<const std::uint8_t*>(source), static_cast<std::size_t>(frame.width),
                         static_cast<std::size_t>(frame.height), background.size(),
                         background.size() * sizeof(T)};
  // A float may be infinite, which makes the mean no number, and a large integer is rounded to a float.
  const bool keepsValues = rule == SpanRule::Copy || (rule == SpanRule::Linear && sizeof(T) <= 2);
  const Task task{frame,
                  slice,
                  rule,
                  spanFunction(elementOf<T>(), rule, slice),
                  keepsValues && shiftsColumns(frame.inverse, rule),
                  reinterpret_cast<const std::uint8_t*>(background.data()),
                  reinterpret_cast<std::uint8_t*>(output)};
  forRows(rowBegin, rowEnd, rowGrain(frame.outWidth), [&](int begin, int end) { task.resample(begin, end); });
}

} // namespace

template <class T>
void resampleRows(const ResampleFrame& frame, const T* source, int channels, Interpolation interpolation,
                  const float* background, T* output, int rowBegin, int rowEnd)
{
  std::vector<T> outside(static_cast<std::size_t>(channels));
  std::transform(background, background + channels, outside.begin(), storedAs<T>);
  // What has no more than the 24 bits of a float comes back from it unchanged.
  constexpr bool fitsFloat = sizeof(T) <= 2 || std::is_same_v<T, float>;
  const SpanRule nearest = fitsFloat ? SpanRule::Copy : SpanRule::ThroughFloat;
  resampleAll(frame, source, interpolation == Interpolation::Linear ? SpanRule::Linear : nearest, outside,
              output, rowBegin, rowEnd);
}

template <class T>
void resampleLabelRows(const ResampleFrame& frame, const T* source, T* output, int rowBegin, int rowEnd)
{
  resampleAll(frame, source, SpanRule::Copy, std::vector<T>(1), output, rowBegin, rowEnd);
}

template void resampleRows(const ResampleFrame&, const std::uint8_t*, int, Interpolation, const float*,
                           std::uint8_t*, int, int);
template void resampleRows(const ResampleFrame&, const std::int16_t*, int, Interpolation, const float*,
                           std::int16_t*, int, int);
template void resampleRows(const ResampleFrame&, const std::int32_t*, int, Interpolation, const float*,
                           std::int32_t*, int, int);
template void resampleRows(const ResampleFrame&, const float*, int, Interpolation, const float*, float*, int,
                           int);
template void resampleRows(const ResampleFrame&, const double*, int, Interpolation, const float*, double*,
                           int, int);
template void resampleRows(const ResampleFrame&, const std::uint16_t*, int, Interpolation, const float*,
                           std::uint16_t*, int, int);

template void resampleLabelRows(const ResampleFrame&, const std::uint8_t*, std::uint8_t*, int, int);
template void resampleLabelRows(const ResampleFrame&, const std::uint16_t*, std::uint16_t*, int, int);
template void resampleLabelRows(const ResampleFrame&, const std::int16_t*, std::int16_t*, int, int);
template void resampleLabelRows(const ResampleFrame&, const std::int32_t*, std::int32_t*, int, int);

} // namespace kernels
