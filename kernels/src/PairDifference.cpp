#include "kernels/PairDifference.h"

#include "kernels/Parallel.h"

#include "FixedWalk.h"
#include "PairSide.h"
#include "RowSpans.h"

#include "mc/McRound.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace kernels {

namespace {

// Rows whose spans are found together.
constexpr int kSpanRows = 64;

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

// Sums rowsSum(spans, rowBegin, rowEnd) over the parts of the rows of the grid that lie in both images.
template <class RowsSum>
PairDifference sumOverGrid(const PairImage& a, const Affine16& ma, const PairImage& b, const Affine16& mb,
                           int gridWidth, int gridHeight, const RowsSum& rowsSum)
{
  return sumRows<PairDifference>(0, gridHeight, rowGrain(gridWidth), [&](int rowBegin, int rowEnd) {
    PairDifference sum;
    RowSpan spans[kSpanRows];
    for (int row = rowBegin; row < rowEnd; row += kSpanRows) {
      const int rows = std::min(kSpanRows, rowEnd - row);
      std::fill_n(spans, rows, RowSpan{0, gridWidth});
      clipToImage(a, ma, row, rows, spans);
      clipToImage(b, mb, row, rows, spans);
      sum = sum + rowsSum(spans, row, row + rows);
    }
    return sum;
  });
}

} // namespace

PairDifference pairDifference(const PairImage& a, const Affine16& ma, const PairImage& b, const Affine16& mb,
                              int gridWidth, int gridHeight, int channels)
{
  if (!isWithinLimits(a, b, gridWidth, gridHeight)) return {};
  const PairSide sideA(a, ma, channels);
  const PairSide sideB(b, mb, channels);
  return sumOverGrid(
      a, ma, b, mb, gridWidth, gridHeight,
      [&](const RowSpan* spans, int rowBegin, int rowEnd) -> PairDifference {
        return {sumPairRows(sideA, sideB, spans, rowBegin, rowEnd), countOf(spans, rowEnd - rowBegin)};
      });
}

PairDifference pairDifferenceMasked(const PairImage& a, const Affine16& ma, const PairMask& maskA,
                                    const PairImage& b, const Affine16& mb, const PairMask& maskB,
                                    int gridWidth, int gridHeight, int channels)
{
  if (!isWithinLimits(a, b, gridWidth, gridHeight)) return {};
  const MaskIndex indexA(a, maskA);
  const MaskIndex indexB(b, maskB);
  const auto maskedPart = channels == 4 ? maskedRow<4> : maskedRow<1>;
  return sumOverGrid(a, ma, b, mb, gridWidth, gridHeight,
                     [&](const RowSpan* spans, int rowBegin, int rowEnd) {
                       PairDifference sum;
                       for (int row = rowBegin; row < rowEnd; ++row) {
                         const RowSpan span = spans[row - rowBegin];
                         if (span.size() == 0) continue;
                         sum = sum + maskedPart(walkOf(a, ma, row, span.begin), indexA,
                                                walkOf(b, mb, row, span.begin), indexB, span.size());
                       }
                       return sum;
                     });
}

} // namespace kernels
