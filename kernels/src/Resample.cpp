#include "kernels/Resample.h"

#include "kernels/Parallel.h"

#include "ColumnRange.h"

#include "mc/McRound.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <type_traits>
#include <vector>

namespace kernels
{

namespace
{

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

// Positions in the slice along one output row.
class RowPositions
{
public:
  RowPositions(const ResampleFrame& frame, int row, double shift)
    : m_inverse(frame.inverse), m_left(frame.left), m_y(static_cast<double>(row) - frame.top), m_shift(shift)
  {
  }
  double x(int column) const { return m_inverse.mapX(static_cast<double>(column) - m_left, m_y) + m_shift; }
  double y(int column) const { return m_inverse.mapY(static_cast<double>(column) - m_left, m_y) + m_shift; }

  // The columns with 0 <= x < limitX and 0 <= y < limitY.
  ColumnRange inside(ColumnRange all, double limitX, double limitY) const
  {
    // A product that overflows makes a position infinite or not a number; neither is inside.
    if (!std::isfinite(m_inverse.m21 * m_y) || !std::isfinite(m_inverse.m22 * m_y)) return {};
    const auto above = [](double v) { return v >= 0.0; };
    const auto inX = columnsInside(
        all, m_inverse.m11 >= 0.0, [this](int i) { return x(i); }, above,
        [limitX](double v) { return v < limitX; });
    return columnsInside(
        inX, m_inverse.m12 >= 0.0, [this](int i) { return y(i); }, above,
        [limitY](double v) { return v < limitY; });
  }

private:
  const Affine& m_inverse;
  double m_left;
  double m_y;
  double m_shift;
};

// Adding one half first makes the nearest pixel the truncated position.
constexpr double shiftOf(Interpolation interpolation)
{
  return interpolation == Interpolation::Nearest ? 0.5 : 0.0;
}

ColumnRange columnsOf(const ResampleFrame& frame, Interpolation interpolation, const RowPositions& positions)
{
  const int beyond = interpolation == Interpolation::Linear ? 1 : 0;
  return positions.inside({0, frame.outWidth}, frame.width - beyond, frame.height - beyond);
}

template <class T>
struct Samples {
  const T* values;
  std::size_t width, channels;

  const T* at(std::size_t x, std::size_t y) const { return values + (y * width + x) * channels; }
};

// floor of a position that is known to lie inside the slice.
std::size_t pixelOf(double position) { return static_cast<std::size_t>(mc::truncToInt(position)); }

template <class T>
void sampleNearest(const Samples<T>& slice, double x, double y, T* out)
{
  const T* p = slice.at(pixelOf(x), pixelOf(y));
  for (std::size_t c = 0; c < slice.channels; ++c) out[c] = storedAs<T>(static_cast<float>(p[c]));
}

template <class T>
void sampleLinear(const Samples<T>& slice, double x, double y, T* out)
{
  const std::size_t ix = pixelOf(x);
  const std::size_t iy = pixelOf(y);
  const float fx = static_cast<float>(x - static_cast<double>(ix));
  const float fy = static_cast<float>(y - static_cast<double>(iy));
  const float w00 = (1.0f - fx) * (1.0f - fy);
  const float w10 = fx * (1.0f - fy);
  const float w01 = (1.0f - fx) * fy;
  const float w11 = fx * fy;
  const T* p = slice.at(ix, iy);
  const T* below = slice.at(ix, iy + 1);
  const std::size_t n = slice.channels;
  for (std::size_t c = 0; c < n; ++c) {
    const float v = w00 * static_cast<float>(p[c]) + w10 * static_cast<float>(p[c + n]) +
                    w01 * static_cast<float>(below[c]) + w11 * static_cast<float>(below[c + n]);
    out[c] = storedAs<T>(v);
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

// Writes the output rows: background outside the slice, sample(x, y, out) inside.
template <class T, class Sample>
void resampleBand(const ResampleFrame& frame, Interpolation interpolation, const std::vector<T>& background,
                  T* output, int rowBegin, int rowEnd, const Sample& sample)
{
  const bool usable = isFinite(frame.inverse);
  const auto outWidth = static_cast<std::size_t>(frame.outWidth);
  const std::size_t channels = background.size();
  for (int row = rowBegin; row < rowEnd; ++row) {
    const RowPositions positions(frame, row, shiftOf(interpolation));
    ColumnRange columns = usable ? columnsOf(frame, interpolation, positions) : ColumnRange{};
    if (columns.begin >= columns.end) columns = {};
    T* const out = output + static_cast<std::size_t>(row) * outWidth * channels;
    fill(out, static_cast<std::size_t>(columns.begin), background);
    for (int i = columns.begin; i < columns.end; ++i)
      sample(positions.x(i), positions.y(i), out + static_cast<std::size_t>(i) * channels);
    const auto end = static_cast<std::size_t>(columns.end);
    fill(out + end * channels, outWidth - end, background);
  }
}

template <class T, class Sample>
void resampleAll(const ResampleFrame& frame, Interpolation interpolation, const std::vector<T>& background,
                 T* output, int rowBegin, int rowEnd, const Sample& sample)
{
  if (frame.outWidth <= 0) return;
  forRows(rowBegin, rowEnd, rowGrain(frame.outWidth), [&](int begin, int end) {
    resampleBand(frame, interpolation, background, output, begin, end, sample);
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
                [&slice](double x, double y, T* out) { sampleLinear(slice, x, y, out); });
  else
    resampleAll(frame, interpolation, outside, output, rowBegin, rowEnd,
                [&slice](double x, double y, T* out) { sampleNearest(slice, x, y, out); });
}

template <class T>
void resampleLabelRows(const ResampleFrame& frame, const T* source, T* output, int rowBegin, int rowEnd)
{
  const Samples<T> slice{source, static_cast<std::size_t>(frame.width), 1};
  resampleAll(frame, Interpolation::Nearest, std::vector<T>(1), output, rowBegin, rowEnd,
              [&slice](double x, double y, T* out) { *out = *slice.at(pixelOf(x), pixelOf(y)); });
}

#define ZX_RESAMPLE(T)                                                                                       \
  template void resampleRows<T>(const ResampleFrame&, const T*, int, Interpolation, const float*, T*, int,   \
                                int);
ZX_RESAMPLE(std::uint8_t)
ZX_RESAMPLE(std::int16_t)
ZX_RESAMPLE(std::int32_t)
ZX_RESAMPLE(float)
ZX_RESAMPLE(double)
ZX_RESAMPLE(std::uint16_t)
#undef ZX_RESAMPLE

#define ZX_RESAMPLE_LABELS(T)                                                                                \
  template void resampleLabelRows<T>(const ResampleFrame&, const T*, T*, int, int);
ZX_RESAMPLE_LABELS(std::uint8_t)
ZX_RESAMPLE_LABELS(std::uint16_t)
ZX_RESAMPLE_LABELS(std::int16_t)
ZX_RESAMPLE_LABELS(std::int32_t)
#undef ZX_RESAMPLE_LABELS

} // namespace kernels
