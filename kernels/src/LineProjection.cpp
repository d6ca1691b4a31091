#include "kernels/LineProjection.h"

#include "kernels/Parallel.h"

#include "mc/McRound.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <type_traits>

namespace kernels {

namespace {

// Lines that are followed side by side: neighbours touch the same cache lines.
constexpr int kBlock = 64;

template <class T>
struct Slice {
  const T* values;
  int width, height;
  std::size_t channels;

  std::size_t index(int x, int y) const
  {
    return (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) *
           channels;
  }
};

// What voxels are compared by. One value: its absolute value in a type that holds it.
template <class T>
struct AbsoluteValue {
  using Key =
      std::conditional_t<std::is_floating_point_v<T>, T,
                         std::conditional_t<std::is_unsigned_v<T>, T,
                                            std::conditional_t<sizeof(T) <= 2, std::int32_t, std::int64_t>>>;
  static Key of(const T* v, std::size_t)
  {
    if constexpr (std::is_unsigned_v<T>)
      return *v;
    else
      return std::abs(static_cast<Key>(*v));
  }
};

// More values: the square of their length, exact for values of 8 and 16 bits.
template <class T>
struct SquaredLength {
  using Key = double;
  static Key of(const T* v, std::size_t channels)
  {
    double squares = 0.0;
    for (std::size_t c = 0; c < channels; ++c)
      squares += static_cast<double>(v[c]) * static_cast<double>(v[c]);
    return squares;
  }
};

// The longest voxel so far of each line of a block; a key of 0 means none.
template <class Measure>
struct Longest {
  typename Measure::Key key[kBlock] = {};
  std::size_t index[kBlock] = {};

  template <class T>
  void meet(int i, const Slice<T>& slice, std::size_t voxel)
  {
    const auto k = Measure::of(slice.values + voxel, slice.channels);
    if (!(k > key[i])) return;
    key[i] = k;
    index[i] = voxel;
  }

  template <class T>
  void store(int count, const Slice<T>& slice, T* out) const
  {
    for (int i = 0; i < count; ++i, out += slice.channels)
      if (key[i] > 0)
        std::copy_n(slice.values + index[i], slice.channels, out);
      else
        std::fill_n(out, slice.channels, T{});
  }
};

int nearest(double position) { return mc::truncToIndex(position + 0.5); }

bool isInside(double position, int size)
{
  const double moved = position + 0.5;
  return moved > -1.0 && moved < size;
}

template <class T>
bool hits(const Slice<T>& slice, const SampleLine& line)
{
  return line.steps >= 0 && isInside(line.x, slice.width) && isInside(line.y, slice.height) &&
         isInside(line.x + line.steps * line.stepX, slice.width) &&
         isInside(line.y + line.steps * line.stepY, slice.height);
}

// The pixels of a line along an axis, one after the other; none is stepped over.
struct Pixels {
  int first, last;
};

// True when a line of this position and step meets every pixel between its ends. With a step of 1 that is
// sure for whole positions only.
bool meetsAll(double position, double step)
{
  return std::abs(step) < 0.999 || (std::abs(step) == 1.0 && position == std::trunc(position));
}

bool alongRow(const SampleLine& line) { return line.stepY == 0.0 && meetsAll(line.x, line.stepX); }

bool alongColumn(const SampleLine& line) { return line.stepX == 0.0 && meetsAll(line.y, line.stepY); }

Pixels pixels(double position, double step, int steps)
{
  return {nearest(position), nearest(position + steps * step)};
}

// Calls f for each pixel in the order of the line.
template <class F>
void forPixels(Pixels p, const F& f)
{
  if (p.first <= p.last)
    for (int i = p.first; i <= p.last; ++i) f(i);
  else
    for (int i = p.first; i >= p.last; --i) f(i);
}

// Unsigned grey values: the order does not matter, equal values are the same.
template <class T>
inline constexpr bool isPlainMaximum = std::is_unsigned_v<T>;

template <class T>
void rowMaxima(const Slice<T>& slice, const SampleLine* lines, int count, T* out)
{
  for (int i = 0; i < count; ++i) {
    const Pixels p = pixels(lines[i].x, lines[i].stepX, lines[i].steps);
    const T* const row = slice.values + slice.index(0, nearest(lines[i].y));
    T best = 0;
    for (int x = std::min(p.first, p.last); x <= std::max(p.first, p.last); ++x)
      best = std::max(best, row[x]);
    out[i] = best;
  }
}

template <class T>
void columnMaxima(const Slice<T>& slice, const SampleLine* lines, int count, T* out)
{
  const Pixels p = pixels(lines[0].y, lines[0].stepY, lines[0].steps);
  int x[kBlock];
  bool neighbours = true;
  for (int i = 0; i < count; ++i) {
    x[i] = nearest(lines[i].x);
    neighbours = neighbours && x[i] == x[0] + i;
  }
  std::fill_n(out, count, T{});
  for (int y = std::min(p.first, p.last); y <= std::max(p.first, p.last); ++y) {
    const T* const row = slice.values + slice.index(0, y);
    if (neighbours)
      for (int i = 0; i < count; ++i) out[i] = std::max(out[i], row[x[0] + i]);
    else
      for (int i = 0; i < count; ++i) out[i] = std::max(out[i], row[x[i]]);
  }
}

template <class Measure, class T>
void projectRows(const Slice<T>& slice, const SampleLine* lines, int count, T* out)
{
  Longest<Measure> longest;
  for (int i = 0; i < count; ++i) {
    const int y = nearest(lines[i].y);
    forPixels(pixels(lines[i].x, lines[i].stepX, lines[i].steps),
              [&](int x) { longest.meet(i, slice, slice.index(x, y)); });
  }
  longest.store(count, slice, out);
}

template <class Measure, class T>
void projectColumns(const Slice<T>& slice, const SampleLine* lines, int count, T* out)
{
  Longest<Measure> longest;
  int x[kBlock];
  for (int i = 0; i < count; ++i) x[i] = nearest(lines[i].x);
  forPixels(pixels(lines[0].y, lines[0].stepY, lines[0].steps), [&](int y) {
    for (int i = 0; i < count; ++i) longest.meet(i, slice, slice.index(x[i], y));
  });
  longest.store(count, slice, out);
}

// A block of lines, field by field; those that miss the slice are marked, and stay at its first voxel.
struct LineBlock {
  double x[kBlock], y[kBlock], stepX[kBlock], stepY[kBlock], steps[kBlock];
  bool hit[kBlock];
  int count;
  int longestSteps = 0;
  int shortestSteps = std::numeric_limits<int>::max(); // of those that hit

  template <class T>
  LineBlock(const Slice<T>& slice, const SampleLine* lines, int n) : count(n)
  {
    for (int i = 0; i < n; ++i) {
      hit[i] = hits(slice, lines[i]);
      const SampleLine line = hit[i] ? lines[i] : SampleLine{0, 0, 0, 0, 0};
      x[i] = line.x, y[i] = line.y;
      stepX[i] = line.stepX, stepY[i] = line.stepY;
      steps[i] = line.steps;
      longestSteps = std::max(longestSteps, line.steps);
      if (hit[i]) shortestSteps = std::min(shortestSteps, line.steps);
    }
  }

  // The k-th points; a line that has ended stays at its last point, which changes nothing more. No point
  // needs a check: both ends of its line lie in the slice, and rounding keeps their order.
  void locate(int k, int* pixelX, int* pixelY) const
  {
    double step[kBlock];
    if (k <= shortestSteps)
      std::fill_n(step, count, static_cast<double>(k));
    else
      for (int i = 0; i < count; ++i) step[i] = std::min(static_cast<double>(k), steps[i]);
    for (int i = 0; i < count; ++i) {
      pixelX[i] = mc::truncInRange(x[i] + step[i] * stepX[i] + 0.5);
      pixelY[i] = mc::truncInRange(y[i] + step[i] * stepY[i] + 0.5);
    }
  }
};

template <class Measure, class T>
void projectAnyLines(const Slice<T>& slice, const SampleLine* lines, int count, T* out)
{
  const LineBlock block(slice, lines, count);
  Longest<Measure> longest;
  int x[kBlock], y[kBlock];
  for (int k = 0; k <= block.longestSteps; ++k) {
    block.locate(k, x, y);
    for (int i = 0; i < count; ++i) longest.meet(i, slice, slice.index(x[i], y[i]));
  }
  for (int i = 0; i < count; ++i)
    if (!block.hit[i]) longest.key[i] = 0;
  longest.store(count, slice, out);
}

template <class T>
void anyMaxima(const Slice<T>& slice, const SampleLine* lines, int count, T* out)
{
  const LineBlock block(slice, lines, count);
  // Copies that nothing written to can be part of, so that they stay in registers.
  const T* const values = slice.values;
  const auto width = static_cast<std::size_t>(slice.width);
  T best[kBlock] = {};
  int x[kBlock], y[kBlock];
  for (int k = 0; k <= block.longestSteps; ++k) {
    block.locate(k, x, y);
    for (int i = 0; i < count; ++i)
      best[i] =
          std::max(best[i], values[static_cast<std::size_t>(y[i]) * width + static_cast<std::size_t>(x[i])]);
  }
  for (int i = 0; i < count; ++i) out[i] = block.hit[i] ? best[i] : T{};
}

enum class Direction { Rows, Columns, Any };

// Lines along an axis need no positions. Columns are followed together, so they have to begin and end alike.
template <class T>
Direction directionOf(const Slice<T>& slice, const SampleLine* lines, int count)
{
  const auto all = [&](const auto& is) {
    return std::all_of(lines, lines + count, [&](const SampleLine& l) { return hits(slice, l) && is(l); });
  };
  if (all(alongRow)) return Direction::Rows;
  const SampleLine& first = lines[0];
  const auto together = [&first](const SampleLine& l) {
    return alongColumn(l) && l.y == first.y && l.stepY == first.stepY && l.steps == first.steps;
  };
  return all(together) ? Direction::Columns : Direction::Any;
}

template <class Measure, class T>
void projectBlock(const Slice<T>& slice, const SampleLine* lines, int count, T* out)
{
  const Direction direction = directionOf(slice, lines, count);
  if constexpr (isPlainMaximum<T> && std::is_same_v<Measure, AbsoluteValue<T>>) {
    if (direction == Direction::Rows) return rowMaxima(slice, lines, count, out);
    if (direction == Direction::Columns) return columnMaxima(slice, lines, count, out);
    anyMaxima(slice, lines, count, out);
  } else {
    if (direction == Direction::Rows) return projectRows<Measure>(slice, lines, count, out);
    if (direction == Direction::Columns) return projectColumns<Measure>(slice, lines, count, out);
    projectAnyLines<Measure>(slice, lines, count, out);
  }
}

} // namespace

SampleLine sampleSegment(double x1, double y1, double x2, double y2)
{
  const double dx = x2 - x1;
  const double dy = y2 - y1;
  const int steps = std::max(1, mc::floorToInt(std::sqrt(dx * dx + dy * dy) / 0.9));
  return {x1, y1, dx / steps, dy / steps, steps};
}

template <class T>
void projectLines(const T* slice, int width, int height, int channels, const SampleLine* lines, int count,
                  T* out)
{
  const Slice<T> voxels{slice, width, height, static_cast<std::size_t>(channels)};
  const auto blocks = static_cast<int>((std::int64_t{count} + kBlock - 1) / kBlock);
  const int points = std::min(std::max(width, height), 32768);
  forRows(0, blocks, rowGrain(points * kBlock), [&](int begin, int end) {
    for (int block = begin; block < end; ++block) {
      const int first = block * kBlock;
      const int n = std::min(kBlock, count - first);
      T* const to = out + static_cast<std::size_t>(first) * voxels.channels;
      if (channels == 1)
        projectBlock<AbsoluteValue<T>>(voxels, lines + first, n, to);
      else
        projectBlock<SquaredLength<T>>(voxels, lines + first, n, to);
    }
  });
}

template void projectLines(const std::uint8_t*, int, int, int, const SampleLine*, int, std::uint8_t*);
template void projectLines(const std::int16_t*, int, int, int, const SampleLine*, int, std::int16_t*);
template void projectLines(const std::int32_t*, int, int, int, const SampleLine*, int, std::int32_t*);
template void projectLines(const float*, int, int, int, const SampleLine*, int, float*);
template void projectLines(const double*, int, int, int, const SampleLine*, int, double*);
template void projectLines(const std::uint16_t*, int, int, int, const SampleLine*, int, std::uint16_t*);

} // namespace kernels
