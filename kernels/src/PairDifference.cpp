#include "kernels/PairDifference.h"

#include "kernels/Parallel.h"

#include "FixedWalk.h"

#include "mc/McRound.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace kernels {

namespace {

constexpr int kBlock = 256;

Span insideImage(const PairImage& image, const Affine16& m, std::int64_t row, Span within)
{
  within = inside(m.dx + row * m.m21, m.m11, std::int64_t{image.width} << 16, within);
  return inside(m.dy + row * m.m22, m.m12, std::int64_t{image.height} << 16, within);
}

Walk walkOf(const PairImage& image, const Affine16& m, std::int64_t row, std::int64_t column)
{
  return {image.pixels,
          static_cast<std::uint32_t>(m.dx + row * m.m21 + column * m.m11),
          static_cast<std::uint32_t>(m.dy + row * m.m22 + column * m.m12),
          static_cast<std::uint32_t>(m.m11),
          static_cast<std::uint32_t>(m.m12),
          static_cast<std::uint32_t>(image.width)};
}

template <int Channels>
std::uint32_t squareAt(const std::uint8_t* a, const std::uint8_t* b)
{
  std::uint32_t sum = 0;
  for (int c = 0; c < std::min(Channels, 3); ++c) {
    const int d = a[c] - b[c];
    sum += static_cast<std::uint32_t>(d * d);
  }
  return sum;
}

// Blocks keep the sum of up to 4096 * 3 squares within 32 bits, which makes the inner loop cheap.
template <int Channels>
std::uint64_t unturnedRow(const Walk& wa, const Walk& wb, std::int64_t n)
{
  const std::uint8_t* a = wa.pixels + std::size_t{pixelAt(wa, wa.x, wa.y)} * Channels;
  const std::uint8_t* b = wb.pixels + std::size_t{pixelAt(wb, wb.x, wb.y)} * Channels;
  std::uint64_t sum = 0;
  for (std::int64_t done = 0; done < n; done += 4096) {
    const std::ptrdiff_t end = std::min<std::int64_t>(n, done + 4096);
    std::uint32_t blockSum = 0;
    for (std::ptrdiff_t k = done; k < end; ++k)
      blockSum += squareAt<Channels>(a + k * Channels, b + k * Channels);
    sum += blockSum;
  }
  return sum;
}

template <int Channels>
std::uint64_t turnedRow(Walk wa, Walk wb, std::int64_t n)
{
  std::uint32_t ia[kBlock];
  std::uint32_t ib[kBlock];
  std::uint64_t sum = 0;
  for (std::int64_t done = 0; done < n; done += kBlock) {
    const int count = static_cast<int>(std::min<std::int64_t>(kBlock, n - done));
    nextPixels(wa, count, ia);
    nextPixels(wb, count, ib);
    std::uint32_t blockSum = 0;
    for (int k = 0; k < count; ++k)
      blockSum += squareAt<Channels>(wa.pixels + std::size_t{ia[k]} * Channels,
                                     wb.pixels + std::size_t{ib[k]} * Channels);
    sum += blockSum;
  }
  return sum;
}

template <int Channels>
PairDifference plainRow(const Walk& wa, const Walk& wb, std::int64_t n)
{
  const bool unturned = isUnturned(wa) && isUnturned(wb);
  return {unturned ? unturnedRow<Channels>(wa, wb, n) : turnedRow<Channels>(wa, wb, n),
          static_cast<std::uint64_t>(n)};
}

// The two terms of a mask index, for every row and every column of the compared image.
class MaskIndex {
public:
  MaskIndex(const PairImage& image, const PairMask& mask)
    : m_bytes(mask.bytes), m_size(std::min(std::int64_t{image.width} * image.height,
                                           std::int64_t{mask.fullWidth} * mask.fullHeight)),
      m_row(static_cast<std::size_t>(std::max(0, image.height))),
      m_column(static_cast<std::size_t>(std::max(0, image.width)))
  {
    const double rowScale = static_cast<double>(mask.fullHeight) / image.height;
    const double columnScale = static_cast<double>(mask.fullWidth) / image.width;
    for (std::size_t y = 0; y < m_row.size(); ++y)
      m_row[y] = mc::truncToInt64(static_cast<double>(y) * rowScale * image.width);
    for (std::size_t x = 0; x < m_column.size(); ++x)
      m_column[x] = mc::truncToInt64(static_cast<double>(x) * columnScale);
  }

  bool counts(const Walk& w) const
  {
    const std::int64_t index = m_row[w.y >> 16] + m_column[w.x >> 16];
    return index >= 0 && index < m_size && m_bytes[index] != 0;
  }

private:
  const std::uint8_t* m_bytes;
  std::int64_t m_size;
  std::vector<std::int64_t> m_row;
  std::vector<std::int64_t> m_column;
};

template <int Channels>
PairDifference maskedRow(Walk wa, const MaskIndex& maskA, Walk wb, const MaskIndex& maskB, std::int64_t n)
{
  PairDifference sum;
  for (std::int64_t k = 0; k < n; ++k) {
    if (maskA.counts(wa) && maskB.counts(wb)) {
      sum.squares += squareAt<Channels>(wa.pixels + std::size_t{pixelAt(wa, wa.x, wa.y)} * Channels,
                                        wb.pixels + std::size_t{pixelAt(wb, wb.x, wb.y)} * Channels);
      ++sum.count;
    }
    wa.x += wa.stepX, wa.y += wa.stepY;
    wb.x += wb.stepX, wb.y += wb.stepY;
  }
  return sum;
}

bool isWithinLimits(const PairImage& a, const PairImage& b, int gridWidth, int gridHeight)
{
  return std::max({a.width, a.height, b.width, b.height, gridWidth, gridHeight}) <= kMaxSide;
}

// Sums rowSum(walkA, walkB, n) over the part of every grid row that lies in both images.
template <class RowSum>
PairDifference sumOverGrid(const PairImage& a, const Affine16& ma, const PairImage& b, const Affine16& mb,
                           int gridWidth, int gridHeight, const RowSum& rowSum)
{
  return sumRows<PairDifference>(0, gridHeight, rowGrain(gridWidth), [&](int rowBegin, int rowEnd) {
    PairDifference sum;
    for (int row = rowBegin; row < rowEnd; ++row) {
      const Span span = insideImage(b, mb, row, insideImage(a, ma, row, {0, gridWidth}));
      if (span.begin < span.end)
        sum = sum +
              rowSum(walkOf(a, ma, row, span.begin), walkOf(b, mb, row, span.begin), span.end - span.begin);
    }
    return sum;
  });
}

} // namespace

PairDifference pairDifference(const PairImage& a, const Affine16& ma, const PairImage& b, const Affine16& mb,
                              int gridWidth, int gridHeight, int channels)
{
  if (!isWithinLimits(a, b, gridWidth, gridHeight)) return {};
  return sumOverGrid(a, ma, b, mb, gridWidth, gridHeight, channels == 4 ? plainRow<4> : plainRow<1>);
}

PairDifference pairDifferenceMasked(const PairImage& a, const Affine16& ma, const PairMask& maskA,
                                    const PairImage& b, const Affine16& mb, const PairMask& maskB,
                                    int gridWidth, int gridHeight, int channels)
{
  if (!isWithinLimits(a, b, gridWidth, gridHeight)) return {};
  const MaskIndex indexA(a, maskA);
  const MaskIndex indexB(b, maskB);
  const auto row = channels == 4 ? maskedRow<4> : maskedRow<1>;
  return sumOverGrid(
      a, ma, b, mb, gridWidth, gridHeight,
      [&](const Walk& wa, const Walk& wb, std::int64_t n) { return row(wa, indexA, wb, indexB, n); });
}

} // namespace kernels
