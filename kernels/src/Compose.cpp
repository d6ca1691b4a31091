#include "kernels/Compose.h"

#include "kernels/Parallel.h"

#include "FixedWalk.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace kernels {

namespace {

// The picture is made in tiles, so that a steeply turned slice, whose pixels lie a row apart from each other,
// comes from few lines of the cache at a time.
constexpr int kTileColumns = 256;
constexpr int kTileRows = 16;

using Pixel = std::uint32_t;

// One slice along one row of the picture: the columns where it is present, and the walk as from column 0.
struct SliceRow {
  int begin = 0, end = 0;
  Walk walk{};
};

struct PairRow {
  SliceRow first, second;
  std::int64_t y; // of the contents
};

// Whether start + column * m + row * m' stays within 64 bits everywhere on the picture.
bool isWithinLimits(const Affine16& m, std::int64_t extent)
{
  const std::int64_t limit = (std::int64_t{1} << 61) / std::max<std::int64_t>(1, extent);
  return std::max({std::abs(m.m11), std::abs(m.m12), std::abs(m.m21), std::abs(m.m22)}) <= limit;
}

SliceRow sliceRow(const Composition& c, const ComposeSlice& slice, int row, int outWidth)
{
  const Affine16& m = slice.inverse;
  const std::int64_t x0 = c.left, y0 = std::int64_t{c.top} + row;
  if (!slice.pixels || std::max(c.width, c.height) > kMaxSide ||
      !isWithinLimits(m, std::max(x0 + outWidth, y0 + 1)))
    return {};
  const std::int64_t x = m.dx + x0 * m.m11 + y0 * m.m21;
  const std::int64_t y = m.dy + x0 * m.m12 + y0 * m.m22;
  Span present = inside(x, m.m11, std::int64_t{c.width} << 16, {0, outWidth});
  present = inside(y, m.m12, std::int64_t{c.height} << 16, present);
  if (present.begin >= present.end) return {};
  return {static_cast<int>(present.begin),
          static_cast<int>(present.end),
          {slice.pixels, static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y),
           static_cast<std::uint32_t>(m.m11), static_cast<std::uint32_t>(m.m12),
           static_cast<std::uint32_t>(c.width)}};
}

template <int Channels>
Pixel pixelFrom(const std::uint8_t* p)
{
  if constexpr (Channels == 1) return Pixel{p[0]} * 0x010101u;
  // Written so that it becomes one load, a swap of bytes and a shift.
  return (Pixel{p[0]} << 24 | Pixel{p[1]} << 16 | Pixel{p[2]} << 8 | Pixel{p[3]}) >> 8;
}

// The pixels of the n columns from `column` on, in all of which the slice is present.
template <int Channels>
void lookUp(const SliceRow& slice, int column, int n, Pixel* out)
{
  Walk w = slice.walk;
  w.x += static_cast<std::uint32_t>(column) * w.stepX;
  w.y += static_cast<std::uint32_t>(column) * w.stepY;
  if (isUnturned(w)) {
    const std::uint8_t* const p = w.pixels + std::size_t{pixelAt(w, w.x, w.y)} * Channels;
    for (int k = 0; k < n; ++k) out[k] = pixelFrom<Channels>(p + std::size_t(k) * Channels);
    return;
  }
  std::uint32_t index[kTileColumns];
  nextPixels(w, n, index);
  for (int k = 0; k < n; ++k) out[k] = pixelFrom<Channels>(w.pixels + std::size_t{index[k]} * Channels);
}

// The part of columns [begin, end) where a slice is present.
struct Columns {
  int begin, end;
};
Columns presentIn(const SliceRow& slice, Columns c)
{
  const int begin = std::clamp(slice.begin, c.begin, c.end);
  return {begin, std::clamp(slice.end, begin, c.end)};
}

// The slice over the columns, 0 where it is absent; returns where it is present.
template <int Channels>
Columns show(const SliceRow& slice, Columns c, Pixel* out)
{
  const Columns present = presentIn(slice, c);
  std::fill(out, out + (present.begin - c.begin), 0);
  if (present.begin < present.end)
    lookUp<Channels>(slice, present.begin, present.end - present.begin, out + (present.begin - c.begin));
  std::fill(out + (present.end - c.begin), out + (c.end - c.begin), 0);
  return present;
}

template <int Channels>
void showRedGreen(const PairRow& row, Columns c, Pixel* out)
{
  Pixel first[kTileColumns];
  show<Channels>(row.first, c, first);
  show<Channels>(row.second, c, out);
  for (int k = 0; k < c.end - c.begin; ++k) out[k] = (out[k] & 0xff00ffu) | (first[k] & 0x00ff00u);
}

// The mean of all four bytes at once, cut off to whole numbers.
Pixel meanOf(Pixel a, Pixel b) { return (a & b) + (((a ^ b) & 0xfefefefeu) >> 1); }

template <int Channels, bool Inverted>
void showMean(const PairRow& row, Columns c, Pixel* out)
{
  Pixel first[kTileColumns];
  const Columns a = show<Channels>(row.first, c, first);
  if constexpr (Inverted)
    for (int k = a.begin; k < a.end; ++k) first[k - c.begin] ^= 0xffffffu;
  const Columns b = show<Channels>(row.second, c, out);
  // An absent pixel is 0 here, so that alone the other one comes out unchanged.
  const int begin = std::max(a.begin, b.begin);
  const int end = std::max(begin, std::min(a.end, b.end));
  for (int k = c.begin; k < begin; ++k) out[k - c.begin] |= first[k - c.begin];
  for (int k = begin; k < end; ++k) out[k - c.begin] = meanOf(out[k - c.begin], first[k - c.begin]);
  for (int k = end; k < c.end; ++k) out[k - c.begin] |= first[k - c.begin];
}

template <int Channels>
void showCheckerboard(const Composition& composition, const PairRow& row, Columns c, Pixel* out)
{
  const std::int64_t size = std::max(1, composition.fieldSize);
  for (int begin = c.begin; begin < c.end;) {
    const std::int64_t field = (composition.left + std::int64_t{begin}) / size;
    const std::int64_t next = (field + 1) * size - composition.left;
    const int end = static_cast<int>(std::min<std::int64_t>(c.end, next));
    const bool odd = (field + row.y / size) % 2 != 0;
    show<Channels>(odd ? row.first : row.second, {begin, end}, out + (begin - c.begin));
    begin = end;
  }
}

// Composes the columns c of one row, at most kTileColumns.
template <int Channels>
void composeColumns(const Composition& composition, const PairRow& row, Columns c, Pixel* out)
{
  if (composition.show == ComposeShow::First) {
    show<Channels>(row.first, c, out);
    return;
  }
  if (composition.show == ComposeShow::Second) {
    show<Channels>(row.second, c, out);
    return;
  }
  switch (composition.mode) {
  case ComposeMode::RedGreen:
    return showRedGreen<Channels>(row, c, out);
  case ComposeMode::Checkerboard:
    return showCheckerboard<Channels>(composition, row, c, out);
  case ComposeMode::Average:
    return showMean<Channels, false>(row, c, out);
  case ComposeMode::InvertedOverlay:
    return showMean<Channels, true>(row, c, out);
  }
}

template <int Channels>
void composeRows(const Composition& c, Pixel* picture, int outWidth, std::ptrdiff_t stride, int begin,
                 int end)
{
  std::array<PairRow, kTileRows> rows;
  for (int row = begin; row < end; ++row)
    rows[static_cast<std::size_t>(row - begin)] = {
        sliceRow(c, c.first, row, outWidth), sliceRow(c, c.second, row, outWidth), std::int64_t{c.top} + row};
  for (int column = 0; column < outWidth; column += kTileColumns)
    for (int row = begin; row < end; ++row)
      composeColumns<Channels>(c, rows[static_cast<std::size_t>(row - begin)],
                               {column, std::min(outWidth, column + kTileColumns)},
                               picture + row * stride + column);
}

} // namespace

void composePair(const Composition& composition, std::uint32_t* picture, int outWidth, int outHeight,
                 std::ptrdiff_t stride)
{
  if (outWidth <= 0) return;
  const auto compose = composition.channels == 4 ? composeRows<4> : composeRows<1>;
  forRows(0, outHeight, std::max(kTileRows, rowGrain(outWidth)), [&](int begin, int end) {
    for (int row = begin; row < end; row += kTileRows)
      compose(composition, picture, outWidth, stride, row, std::min(end, row + kTileRows));
  });
}

} // namespace kernels
