#include "kernels/Resample.h"

#include "kernels/Parallel.h"

#include "ColumnRange.h"

#include "mc/McRound.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <type_traits>
#include <vector>

namespace kernels {

namespace {

// The rule of every stored value.
template <class T>
T storedAs(float v)
{
  if constexpr (std::is_floating_point_v<T>)
    return static_cast<T>(v);
  else
    return mc::roundHalfEven<T>(v);
}

bool isFinite(const Affine& m)
{
  for (const double c : {m.m11, m.m12, m.m21, m.m22, m.dx, m.dy})
    if (!std::isfinite(c)) return false;
  return true;
}

// Positions in the slice along one output row, moved by shift.
struct RowPositions {
  Affine inverse;
  double left, y, shift;

  double xAt(int column) const { return inverse.mapX(static_cast<double>(column) - left, y) + shift; }
  double yAt(int column) const { return inverse.mapY(static_cast<double>(column) - left, y) + shift; }

  // The columns with 0 <= x < limitX and 0 <= y < limitY.
  ColumnRange inside(ColumnRange all, double limitX, double limitY) const
  {
    // A product that overflows makes a position infinite or not a number; neither is inside.
    if (!std::isfinite(inverse.m21 * y) || !std::isfinite(inverse.m22 * y)) return {};
    const auto above = [](double v) { return v >= 0.0; };
    const auto inX = columnsInside(
        all, inverse.m11 >= 0.0, [this](int i) { return xAt(i); }, above,
        [limitX](double v) { return v < limitX; });
    return columnsInside(
        inX, inverse.m12 >= 0.0, [this](int i) { return yAt(i); }, above,
        [limitY](double v) { return v < limitY; });
  }
};

// Adding one half first makes the nearest pixel the truncated position.
RowPositions positionsOf(const ResampleFrame& frame, Interpolation interpolation, int row)
{
  const double shift = interpolation == Interpolation::Nearest ? 0.5 : 0.0;
  return {frame.inverse, static_cast<double>(frame.left), static_cast<double>(row) - frame.top, shift};
}

// The columns of a row that the slice reaches; empty ranges begin at 0.
ColumnRange columnsOf(const ResampleFrame& frame, Interpolation interpolation, const RowPositions& positions)
{
  if (!isFinite(frame.inverse)) return {};
  const int beyond = interpolation == Interpolation::Linear ? 1 : 0;
  const ColumnRange columns =
      positions.inside({0, frame.outWidth}, frame.width - beyond, frame.height - beyond);
  return columns.begin < columns.end ? columns : ColumnRange{};
}

// Some pixels of a row: where they fall into the slice. Found before the look-up, so that it becomes vector
// code.
constexpr int kBlock = 128;
struct Block {
  int count;
  int x[kBlock], y[kBlock];
  float fx[kBlock], fy[kBlock]; // how far the position lies beyond the pixel, 0 ... 1
};

void locate(const RowPositions& positions, int column, Block& block)
{
  for (int k = 0; k < block.count; ++k) {
    const double x = positions.xAt(column + k);
    const double y = positions.yAt(column + k);
    block.x[k] = mc::truncToIndex(x);
    block.y[k] = mc::truncToIndex(y);
    block.fx[k] = static_cast<float>(x - block.x[k]);
    block.fy[k] = static_cast<float>(y - block.y[k]);
  }
}

template <class T>
struct Samples {
  const T* values;
  std::size_t width, channels;

  const T* at(int x, int y) const
  {
    return values + (static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x)) * channels;
  }
};

template <class T>
void storeValues(const float* values, int count, T* out, std::size_t step)
{
  if (step == 1)
    for (int k = 0; k < count; ++k) out[k] = storedAs<T>(values[k]);
  else
    for (int k = 0; k < count; ++k) out[static_cast<std::size_t>(k) * step] = storedAs<T>(values[k]);
}

template <class T>
void copyNearest(const Samples<T> slice, const Block& block, T* out)
{
  const std::size_t n = slice.channels;
  for (int k = 0; k < block.count; ++k) {
    const T* const p = slice.at(block.x[k], block.y[k]);
    for (std::size_t c = 0; c < n; ++c) out[static_cast<std::size_t>(k) * n + c] = p[c];
  }
}

template <class T>
void sampleNearest(const Samples<T> slice, const Block& block, T* out)
{
  // What has no more than the 24 bits of a float comes back from it unchanged.
  if constexpr (sizeof(T) <= 2 || std::is_same_v<T, float>) return copyNearest(slice, block, out);
  float values[kBlock];
  for (std::size_t c = 0; c < slice.channels; ++c) {
    for (int k = 0; k < block.count; ++k) values[k] = static_cast<float>(slice.at(block.x[k], block.y[k])[c]);
    storeValues(values, block.count, out + c, slice.channels);
  }
}

template <class T>
void sampleLinear(const Samples<T> slice, const Block& block, T* out)
{
  const std::size_t right = slice.channels;
  const std::size_t below = slice.channels * slice.width;
  float values[kBlock];
  for (std::size_t c = 0; c < slice.channels; ++c) {
    for (int k = 0; k < block.count; ++k) {
      const T* const p = slice.at(block.x[k], block.y[k]) + c;
      const float fx = block.fx[k];
      const float fy = block.fy[k];
      values[k] = (1.0f - fx) * (1.0f - fy) * static_cast<float>(p[0]) +
                  fx * (1.0f - fy) * static_cast<float>(p[right]) +
                  (1.0f - fx) * fy * static_cast<float>(p[below]) +
                  fx * fy * static_cast<float>(p[below + right]);
    }
    storeValues(values, block.count, out + c, slice.channels);
  }
}

template <class T>
void fill(T* out, std::size_t pixels, const std::vector<T>& background)
{
  if (background.size() == 1)
    std::fill_n(out, pixels, background[0]);
  else
    for (std::size_t i = 0; i < pixels; ++i, out += background.size())
      std::copy(background.begin(), background.end(), out);
}

// Writes one output row: the background outside the slice, sample(block, out) inside.
template <class T, class Sample>
void resampleRow(const ResampleFrame& frame, Interpolation interpolation, const std::vector<T>& background,
                 T* out, int row, const Sample& sample)
{
  const RowPositions positions = positionsOf(frame, interpolation, row);
  const ColumnRange columns = columnsOf(frame, interpolation, positions);
  const auto at = [&](int column) { return out + static_cast<std::size_t>(column) * background.size(); };
  fill(out, static_cast<std::size_t>(columns.begin), background);
  Block block;
  for (int column = columns.begin; column < columns.end; column += kBlock) {
    block.count = std::min(kBlock, columns.end - column);
    locate(positions, column, block);
    sample(block, at(column));
  }
  fill(at(columns.end), static_cast<std::size_t>(frame.outWidth - columns.end), background);
}

template <class T, class Sample>
void resampleAll(const ResampleFrame& frame, Interpolation interpolation, const std::vector<T>& background,
                 T* output, int rowBegin, int rowEnd, const Sample& sample)
{
  if (frame.outWidth <= 0) return;
  const std::size_t rowSize = static_cast<std::size_t>(frame.outWidth) * background.size();
  forRows(rowBegin, rowEnd, rowGrain(frame.outWidth), [&](int begin, int end) {
    for (int row = begin; row < end; ++row)
      resampleRow(frame, interpolation, background, output + static_cast<std::size_t>(row) * rowSize, row,
                  sample);
  });
}

} // namespace

template <class T>
void resampleRows(const ResampleFrame& frame, const T* source, int channels, Interpolation interpolation,
                  const float* background, T* output, int rowBegin, int rowEnd)
{
  std::vector<T> outside(static_cast<std::size_t>(channels));
  std::transform(background, background + channels, outside.begin(), storedAs<T>);
  const Samples<T> slice{source, static_cast<std::size_t>(frame.width), outside.size()};
  if (interpolation == Interpolation::Linear)
    resampleAll(frame, interpolation, outside, output, rowBegin, rowEnd,
                [&slice](const Block& block, T* out) { sampleLinear(slice, block, out); });
  else
    resampleAll(frame, interpolation, outside, output, rowBegin, rowEnd,
                [&slice](const Block& block, T* out) { sampleNearest(slice, block, out); });
}

template <class T>
void resampleLabelRows(const ResampleFrame& frame, const T* source, T* output, int rowBegin, int rowEnd)
{
  const Samples<T> slice{source, static_cast<std::size_t>(frame.width), 1};
  resampleAll(frame, Interpolation::Nearest, std::vector<T>(1), output, rowBegin, rowEnd,
              [&slice](const Block& block, T* out) { copyNearest(slice, block, out); });
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
