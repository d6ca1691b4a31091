// Reading rows of the grid out of the images of a pair, and their squared differences, as vector code that is
// compiled for every instruction set and chosen at run time.

#include "PairSide.h"

#include "FixedWalk.h"

#include <algorithm>
#include <cstring>
#include <hwy/cache_control.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "PairSide.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kernels::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Bytes of a row that are compared at a time: few enough for the fastest cache and for sums in 32 bits.
constexpr int kChunk = 4096;
constexpr int kSlack = 64;
constexpr int kCacheLine = 64;

// Lines of the cache that the points of a tile may touch in a row of the grid: about half of the smallest
// fast cache, since the next row touches most of them again.
constexpr std::int64_t kTileLines = 256;

/// Columns of the grid that are gone through together, row by row.
HWY_INLINE int tileWidth(const PairSide& a, const PairSide& b)
{
  const auto linesOf = [](const PairSide& s) { // per 65536 columns
    const std::int64_t along = s.m.m11 < 0 ? -s.m.m11 : s.m.m11, across = s.m.m12 < 0 ? -s.m.m12 : s.m.m12;
    return along * s.pixelBytes / kCacheLine + across;
  };
  const std::int64_t width = kTileLines * 65536 / (linesOf(a) + linesOf(b) + 1);
  return static_cast<int>(std::clamp<std::int64_t>(width, kCacheLine, kChunk / a.pixelBytes));
}

/// Calls f(row, column, n) for pieces of up to `width` points that together are the spans.
template <class F>
HWY_INLINE void forTiles(int width, const RowSpan* spans, int rowBegin, int rowEnd, const F& f)
{
  int longest = 0;
  for (int row = rowBegin; row < rowEnd; ++row) longest = std::max(longest, spans[row - rowBegin].size());
  for (int from = 0; from < longest; from += width)
    for (int row = rowBegin; row < rowEnd; ++row) {
      const int column = spans[row - rowBegin].begin + from;
      const int n = std::min(width, spans[row - rowBegin].end - column);
      if (n > 0) f(row, column, n);
    }
}

/// A place along a row of the grid in an image.
struct Place {
  std::uint32_t x, y;
};

HWY_INLINE Place placeOf(const PairSide& s, std::int64_t row, std::int64_t column)
{
  return {static_cast<std::uint32_t>(s.m.dx + row * s.m.m21 + column * s.m.m11),
          static_cast<std::uint32_t>(s.m.dy + row * s.m.m22 + column * s.m.m12)};
}

HWY_INLINE const std::uint8_t* pixelAt(const PairSide& s, Place p)
{
  return s.pixels + std::int64_t{p.y >> 16} * s.stride + std::int64_t{p.x >> 16} * s.pixelBytes;
}

HWY_INLINE Place moved(const PairSide& s, Place p, int points)
{
  const auto n = static_cast<std::uint32_t>(points);
  return {p.x + n * static_cast<std::uint32_t>(s.m.m11), p.y + n * static_cast<std::uint32_t>(s.m.m12)};
}

// Asks for the bytes at a distance from others, wherever that is. What a turned row reads lies on a slant
// that no processor foresees.
HWY_INLINE void prefetch(const std::uint8_t* bytes, std::int64_t distance)
{
  hwy::Prefetch(reinterpret_cast<const std::uint8_t*>(reinterpret_cast<std::uintptr_t>(bytes) +
                                                      static_cast<std::uintptr_t>(distance)));
}

HWY_NOINLINE void fetchPlain(const PairSide& s, Place p, int n, std::uint8_t* out)
{
  for (int k = 0; k < n; ++k, p = moved(s, p, 1)) {
    if (s.pixelBytes == 1)
      out[k] = *pixelAt(s, p);
    else
      std::memcpy(out + 4 * std::ptrdiff_t{k}, pixelAt(s, p), 4);
  }
}

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

HWY_INLINE void fetch(const PairSide& s, Place p, int n, std::uint8_t* out) { fetchPlain(s, p, n, out); }

HWY_INLINE std::uint64_t sumOf(const std::uint8_t* a, const std::uint8_t* b, int n, bool colour)
{
  std::uint32_t sum = 0;
  for (int k = 0; k < n; ++k) {
    const int d = colour && k % 4 == 3 ? 0 : a[k] - b[k];
    sum += static_cast<std::uint32_t>(d * d);
  }
  return sum;
}

/// The running sum of squared differences.
class Sum {
public:
  void add(const std::uint8_t* a, const std::uint8_t* b, int n, bool colour)
  {
    m_sum += sumOf(a, b, n, colour);
  }
  std::uint64_t value() const { return m_sum; }

private:
  std::uint64_t m_sum = 0;
};

#else

// Points from a place on that lie side by side in one row; the steps are those of Path::Runs.
HWY_INLINE int runLength(const PairSide& s, Place p, int n)
{
  const auto x = static_cast<int>(p.x & 0xffff), y = static_cast<int>(p.y & 0xffff);
  const auto lost = static_cast<int>(65536 - s.m.m11), down = static_cast<int>(s.m.m12);
  if (lost > 0) n = std::min(n, x / lost + 1);
  if (down > 0) n = std::min(n, (65535 - y) / down + 1);
  if (down < 0) n = std::min(n, y / -down + 1);
  return n;
}

// Copies at least n bytes, and whole vectors where the image has them.
HWY_INLINE void copyRun(const PairSide& s, const std::uint8_t* from, std::ptrdiff_t n, std::uint8_t* to)
{
  const hn::ScalableTag<std::uint8_t> d;
  if (HWY_UNLIKELY(s.end - from < n + kSlack)) {
    std::memcpy(to, from, static_cast<std::size_t>(n));
    return;
  }
  const auto size = static_cast<std::ptrdiff_t>(hn::Lanes(d));
  for (std::ptrdiff_t k = 0; k < n; k += size) hn::StoreU(hn::LoadU(d, from + k), d, to + k);
}

HWY_INLINE void fetchRuns(const PairSide& s, Place p, int n, std::uint8_t* out)
{
  for (int k = 0; k < n;) {
    const Place first = moved(s, p, k);
    const int run = runLength(s, first, n - k);
    // What is copied too much is written over by the next run.
    copyRun(s, pixelAt(s, first), std::ptrdiff_t{run} * s.pixelBytes, out + std::ptrdiff_t{k} * s.pixelBytes);
    k += run;
  }
}

// The lowest column and row that a block of points touches; all of them lie in the image.
struct Corner {
  std::uint32_t x, y; // 16.16
  std::uint32_t column() const { return x >> 16; }
  std::uint32_t row() const { return y >> 16; }
};

HWY_INLINE Corner cornerOf(const PairSide& s, Place p)
{
  const Place last = moved(s, p, kPairBlock - 1);
  return {s.m.m11 < 0 ? last.x : p.x, s.m.m12 < 0 ? last.y : p.y};
}

// Bytes from a block of points to those that are not in the cache yet: a few rows of the grid further on, the
// more the more rows a block skips for the next one to ask for.
HWY_INLINE std::int64_t distanceAhead(const PairSide& s)
{
  const std::int64_t rows = 4 + s.blockRows;
  return ((rows * s.m.m22) >> 16) * s.stride + ((rows * s.m.m21) >> 16);
}

/// Looks up blocks of points that lie within 16 columns of at most `Rows` rows each: 16 bytes of every row,
/// and from each the points that lie in it. Takes as many blocks at a time as fit into a vector.
template <int Rows, int Blocks>
class TurnedBlocks {
public:
  HWY_INLINE TurnedBlocks(const PairSide& s, Place first)
    : m_pixels(s.pixels), m_end(s.end), m_ahead(distanceAhead(s)), m_stride(s.stride), m_height(s.height),
      m_stepX(static_cast<std::uint32_t>(s.m.m11)), m_stepY(static_cast<std::uint32_t>(s.m.m12)),
      m_first(cornerOf(s, first)), m_even(s.even), m_odd(s.odd), m_fractionX(fractions(m_first.x, m_stepX)),
      m_fractionY(fractions(m_first.y, m_stepY))
  {
  }

  /// The points from number k on. False where 16 bytes of a row would not all be there.
  HWY_INLINE bool fetch(std::uint32_t k, std::uint8_t* out) const
  {
    const std::uint8_t* const bytes0 = bytesAt(k);
    const std::uint8_t* const bytes1 = Blocks == 1 ? bytes0 : bytesAt(k + kPairBlock);
    const std::uint8_t* const last = m_end - (Rows - 1) * m_stride - kPairBlock;
    prefetch(bytes0, m_ahead);
    if (HWY_LIKELY(bytes0 <= last && bytes1 <= last)) return store(k, Rows, bytes0, bytes1, out);
    if (Blocks > 1) return false;
    // Near the last row there may be fewer.
    const int rows = std::min(Rows, m_height - static_cast<int>(rowAt(k)));
    return bytes0 <= m_end - (rows - 1) * m_stride - kPairBlock && store(k, rows, bytes0, bytes1, out);
  }

private:
  using D8 = hn::FixedTag<std::uint8_t, kPairBlock * Blocks>;
  using D16 = hn::Repartition<std::int16_t, D8>;
  using Half = hn::FixedTag<std::uint8_t, kPairBlock>;

  HWY_INLINE std::uint32_t rowAt(std::uint32_t k) const { return (m_first.y + k * m_stepY) >> 16; }
  HWY_INLINE const std::uint8_t* bytesAt(std::uint32_t k) const
  {
    return m_pixels + std::int64_t{rowAt(k)} * m_stride + ((m_first.x + k * m_stepX) >> 16);
  }

  // The fractions of the blocks' corners, less 32768.
  static HWY_INLINE hn::Vec<D16> fractions(std::uint32_t first, std::uint32_t step)
  {
    const auto lower = hn::Set(D16(), static_cast<std::int16_t>((first & 0xffff) ^ 0x8000));
    const auto upper =
        hn::Set(D16(), static_cast<std::int16_t>(((first + kPairBlock * step) & 0xffff) ^ 0x8000));
    return Blocks == 1 ? lower : hn::ConcatUpperLower(D16(), upper, lower);
  }

  static HWY_INLINE hn::Vec<D16> placesOf(const PairSide::Steps& steps, hn::Vec<D16> x, hn::Vec<D16> y,
                                          int unit)
  {
    const auto right = hn::IfThenElseZero(hn::Gt(x, hn::Load(D16(), steps.carryX)),
                                          hn::Set(D16(), static_cast<std::int16_t>(unit)));
    const auto down = hn::IfThenElseZero(hn::Gt(y, hn::Load(D16(), steps.carryY)),
                                         hn::Set(D16(), static_cast<std::int16_t>(unit * kPairBlock)));
    return hn::Add(hn::Add(hn::Load(D16(), steps.place), right), down);
  }

  // Column + 16 * row of every point, relative to the corner of its block; one byte a point.
  HWY_INLINE hn::Vec<D8> placesAt(std::uint32_t k) const
  {
    const auto x = hn::Add(m_fractionX, hn::Set(D16(), static_cast<std::int16_t>(k * m_stepX & 0xffff)));
    const auto y = hn::Add(m_fractionY, hn::Set(D16(), static_cast<std::int16_t>(k * m_stepY & 0xffff)));
    return hn::BitCast(D8(), hn::Add(placesOf(m_even, x, y, 1), placesOf(m_odd, x, y, 256)));
  }

  static HWY_INLINE hn::Vec<D8> loadRows(const std::uint8_t* bytes0, const std::uint8_t* bytes1)
  {
    if constexpr (Blocks == 1)
      return hn::LoadU(D8(), bytes0);
    else
      return hn::Combine(D8(), hn::LoadU(Half(), bytes1), hn::LoadU(Half(), bytes0));
  }

  HWY_INLINE bool store(std::uint32_t k, int rows, const std::uint8_t* bytes0, const std::uint8_t* bytes1,
                        std::uint8_t* out) const
  {
    const auto places = placesAt(k);
    auto pixels = hn::Zero(D8());
    for (int r = 0; r < rows; ++r, bytes0 += m_stride, bytes1 += m_stride) {
      // A point of this row is left with its column. In another row the sum passes 127, which looks up a
      // zero.
      const auto inRow = hn::Xor(places, hn::Set(D8(), static_cast<std::uint8_t>(kPairBlock * r)));
      auto index = hn::SaturatedAdd(inRow, hn::Set(D8(), std::uint8_t{0x70}));
#if !HWY_ARCH_X86
      index = hn::And(index, hn::Set(D8(), std::uint8_t{0x8f})); // x86 does not look at these bits
#endif
      pixels = hn::Or(pixels, hn::TableLookupBytesOr0(loadRows(bytes0, bytes1), index));
    }
    hn::StoreU(pixels, D8(), out);
    return true;
  }

  const std::uint8_t* m_pixels;
  const std::uint8_t* m_end;
  std::int64_t m_ahead;
  std::int64_t m_stride;
  int m_height;
  std::uint32_t m_stepX, m_stepY;
  Corner m_first;
  const PairSide::Steps& m_even;
  const PairSide::Steps& m_odd;
  hn::Vec<D16> m_fractionX, m_fractionY;
};

// Blocks near the lower end of an image.
template <int Rows>
HWY_NOINLINE void fetchLastBlocks(const PairSide& s, Place p, int n, std::uint8_t* out)
{
  for (int k = 0; k < n; k += kPairBlock)
    if (!TurnedBlocks<Rows, 1>(s, moved(s, p, k)).fetch(0, out + k))
      fetchPlain(s, moved(s, p, k), kPairBlock, out + k);
}

/// Goes through n points, at least `size` of them, in steps of that size; the last step reaches back into the
/// one before. Gives the next start after k; n when there is none.
HWY_INLINE int nextStart(int k, int size, int n) { return k + size == n ? n : std::min(k + size, n - size); }

template <int Rows, int Blocks>
HWY_INLINE void fetchTurnedBlocks(const PairSide& s, Place p, int n, std::uint8_t* out)
{
  constexpr int size = Blocks * kPairBlock;
  const TurnedBlocks<Rows, Blocks> blocks(s, p);
  for (int k = 0; k < n; k = nextStart(k, size, n))
    if (HWY_UNLIKELY(!blocks.fetch(static_cast<std::uint32_t>(k), out + k)))
      fetchLastBlocks<Rows>(s, moved(s, p, k), size, out + k);
}

constexpr int kBlocksOfVector = hn::MaxLanes(hn::CappedTag<std::uint8_t, 2 * kPairBlock>()) / kPairBlock;

template <int Rows>
HWY_INLINE void fetchTurned(const PairSide& s, Place p, int n, std::uint8_t* out)
{
  if (n < kBlocksOfVector * kPairBlock)
    fetchTurnedBlocks<Rows, 1>(s, p, n, out);
  else
    fetchTurnedBlocks<Rows, kBlocksOfVector>(s, p, n, out);
}

// Gathers look up one word of 32 bits a point.
constexpr bool kGathers = HWY_TARGET != HWY_SSSE3 && HWY_TARGET != HWY_SSE4;

HWY_INLINE bool gatherBlock(const PairSide& s, Place p, std::uint8_t* out)
{
  const hn::CappedTag<std::uint32_t, kPairBlock> d;
  const hn::RebindToSigned<decltype(d)> di;
  const Corner corner = cornerOf(s, p);
  const std::uint8_t* const bytes = s.pixels + std::int64_t{corner.row()} * s.stride;
  const Place last = moved(s, p, kPairBlock - 1);
  // The word of the point that lies furthest on, wherever it stands in its row.
  if (s.pixelBytes == 1 && s.end - s.pixels < std::int64_t{std::max(p.y, last.y) >> 16} * s.stride +
                                                  (std::max(p.x, last.x) >> 16) + 4)
    return false;
  const auto stepX = hn::Set(d, static_cast<std::uint32_t>(s.m.m11));
  const auto stepY = hn::Set(d, static_cast<std::uint32_t>(s.m.m12));
  for (std::uint32_t k = 0; k < kPairBlock; k += static_cast<std::uint32_t>(hn::Lanes(d))) {
    const auto point = hn::Iota(d, k);
    const auto column = hn::ShiftRight<16>(hn::Add(hn::Set(d, p.x), hn::Mul(point, stepX)));
    const auto row = hn::Sub(hn::ShiftRight<16>(hn::Add(hn::Set(d, p.y), hn::Mul(point, stepY))),
                             hn::Set(d, corner.row()));
    const auto width = hn::Set(d, static_cast<std::uint32_t>(s.stride));
    if (s.pixelBytes == 1) {
      const auto offset = hn::BitCast(di, hn::Add(hn::Mul(row, width), column));
      const auto words = hn::GatherOffset(d, reinterpret_cast<const std::uint32_t*>(bytes), offset);
      hn::StoreU(hn::U8FromU32(hn::And(words, hn::Set(d, 255u))), hn::Rebind<std::uint8_t, decltype(d)>(),
                 out + k);
    } else {
      const auto offset = hn::BitCast(di, hn::Add(hn::Mul(row, width), hn::ShiftLeft<2>(column)));
      const auto words = hn::GatherOffset(d, reinterpret_cast<const std::uint32_t*>(bytes), offset);
      hn::StoreU(words, d, reinterpret_cast<std::uint32_t*>(out) + k);
    }
  }
  return true;
}

HWY_INLINE void fetchGathered(const PairSide& s, Place p, int n, std::uint8_t* out)
{
  for (int k = 0; k < n; k = nextStart(k, kPairBlock, n)) {
    std::uint8_t* const to = out + std::ptrdiff_t{k} * s.pixelBytes;
    if (!gatherBlock(s, moved(s, p, k), to)) fetchPlain(s, moved(s, p, k), kPairBlock, to);
  }
}

HWY_INLINE void fetch(const PairSide& s, Place p, int n, std::uint8_t* out)
{
  if (s.path == PairSide::Path::Runs) return fetchRuns(s, p, n, out);
  if (n < kPairBlock || s.path == PairSide::Path::Plain) return fetchPlain(s, p, n, out);
  if (s.path == PairSide::Path::Gathered)
    return kGathers ? fetchGathered(s, p, n, out) : fetchPlain(s, p, n, out);
  if (s.blockRows <= 2) return fetchTurned<2>(s, p, n, out);
  if (s.blockRows <= 3) return fetchTurned<3>(s, p, n, out);
  if (s.blockRows <= 4) return fetchTurned<4>(s, p, n, out);
  if (s.blockRows <= 6) return fetchTurned<6>(s, p, n, out);
  if (s.blockRows <= 8) return fetchTurned<8>(s, p, n, out);
  fetchTurned<12>(s, p, n, out);
}

/// The running sum of squared differences.
class Sum {
public:
  HWY_INLINE Sum() : m_sum(hn::Zero(D64())) {}
  /// Adds those of n bytes, at most kChunk; a vector may be read behind the last of them.
  HWY_INLINE void add(const std::uint8_t* a, const std::uint8_t* b, int n, bool colour)
  {
    const hn::RebindToSigned<hn::Repartition<std::int32_t, D8>> d32;
    const auto counted =
        hn::BitCast(D8(), hn::Set(hn::RebindToUnsigned<decltype(d32)>(), colour ? 0x00ffffffu : 0xffffffffu));
    auto even = hn::Zero(d32), odd = hn::Zero(d32);
    const auto size = static_cast<int>(hn::Lanes(D8()));
    int k = 0;
    for (; k + size <= n; k += size) addVector(hn::And(difference(a + k, b + k), counted), even, odd);
    if (k < n) {
      const auto wanted = hn::FirstN(D8(), static_cast<std::size_t>(n - k));
      addVector(hn::And(hn::IfThenElseZero(wanted, difference(a + k, b + k)), counted), even, odd);
    }
    const auto both = hn::BitCast(D64(), hn::Add(even, odd));
    m_sum = hn::Add(m_sum, hn::Add(hn::And(both, hn::Set(D64(), 0xffffffffull)), hn::ShiftRight<32>(both)));
  }
  HWY_INLINE std::uint64_t value() const { return hn::GetLane(hn::SumOfLanes(D64(), m_sum)); }

private:
  using D8 = hn::ScalableTag<std::uint8_t>;
  using D64 = hn::ScalableTag<std::uint64_t>;

  static HWY_INLINE hn::Vec<D8> difference(const std::uint8_t* a, const std::uint8_t* b)
  {
    const auto va = hn::LoadU(D8(), a);
    const auto vb = hn::LoadU(D8(), b);
    return hn::Or(hn::SaturatedSub(va, vb), hn::SaturatedSub(vb, va));
  }
  template <class V>
  static HWY_INLINE void addVector(hn::Vec<D8> bytes, V& even, V& odd)
  {
    const hn::Repartition<std::int16_t, D8> d16;
    const hn::RebindToUnsigned<decltype(d16)> du16;
    const hn::Repartition<std::int32_t, D8> d32;
    const auto words = hn::BitCast(du16, bytes);
    const auto low = hn::BitCast(d16, hn::And(words, hn::Set(du16, std::uint16_t{255})));
    const auto high = hn::BitCast(d16, hn::ShiftRight<8>(words));
    // What does not fit into the first sum goes to the second; both are added up in the end.
    even = hn::ReorderWidenMulAccumulate(d32, low, low, even, odd);
    odd = hn::ReorderWidenMulAccumulate(d32, high, high, odd, even);
  }

  hn::Vec<D64> m_sum;
};

#endif

/// n pixels of a row of the grid, side by side and with room behind them; from the image itself where they
/// lie so already.
HWY_INLINE const std::uint8_t* pixelsOf(const PairSide& s, Place p, int n, std::uint8_t* buffer)
{
  const std::ptrdiff_t bytes = std::ptrdiff_t{n} * s.pixelBytes;
  if (s.path != PairSide::Path::Row) {
    fetch(s, p, n, buffer);
    return buffer;
  }
  const std::uint8_t* const pixels = pixelAt(s, p);
  if (s.end - pixels >= bytes + kSlack) return pixels;
  std::memcpy(buffer, pixels, static_cast<std::size_t>(bytes));
  return buffer;
}

// Asks for the bytes of the next row of the grid when they lie side by side: between two rows other bytes are
// read for so long that the processor has forgotten where it was.
HWY_INLINE void prefetchNextRow(const PairSide& s, Place p, int n)
{
  if (s.path != PairSide::Path::Row) return;
  const std::int64_t bytes = std::int64_t{n} * s.pixelBytes;
  for (std::int64_t k = 0; k < bytes; k += kCacheLine) prefetch(pixelAt(s, p), s.stride + k);
}

std::uint64_t sumRows(const PairSide& a, const PairSide& b, const RowSpan* spans, int rowBegin, int rowEnd)
{
  alignas(64) std::uint8_t bufferA[kChunk + kSlack];
  alignas(64) std::uint8_t bufferB[kChunk + kSlack];
  Sum sum;
  forTiles(tileWidth(a, b), spans, rowBegin, rowEnd, [&](int row, int column, int n) {
    const Place placeA = placeOf(a, row, column);
    prefetchNextRow(a, placeA, n);
    const std::uint8_t* const pa = pixelsOf(a, placeA, n, bufferA);
    const std::uint8_t* const pb = pixelsOf(b, placeOf(b, row, column), n, bufferB);
    sum.add(pa, pb, n * a.pixelBytes, a.pixelBytes == 4);
  });
  return sum.value();
}

void fetchRows(const PairSide& s, const RowSpan* spans, int rowBegin, int rowEnd, std::uint8_t* out,
               std::int64_t outStride)
{
  alignas(64) std::uint8_t buffer[kChunk + kSlack];
  forTiles(tileWidth(s, s), spans, rowBegin, rowEnd, [&](int row, int column, int n) {
    const std::uint8_t* const pixels = pixelsOf(s, placeOf(s, row, column), n, buffer);
    std::memcpy(out + row * outStride + std::int64_t{column} * s.pixelBytes, pixels,
                static_cast<std::size_t>(n) * static_cast<std::size_t>(s.pixelBytes));
  });
}

} // namespace kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kernels {

namespace {

HWY_EXPORT(sumRows);
HWY_EXPORT(fetchRows);

// Rows that a block of points may touch until looking up every point by itself becomes faster.
constexpr std::int64_t kMostBlockRows = 12;

// The steepest step, in 1/65536, for which runs are copied: 16 pixels, or 64 of one byte.
constexpr std::int64_t kMostRunStep = 4096;

// The last point of a block.
constexpr std::int64_t last = kPairBlock - 1;

} // namespace

PairSide::PairSide(const PairImage& image, const Affine16& mapping, int channels)
  : pixels(image.pixels), stride(std::int64_t{image.width} * (channels == 4 ? 4 : 1)), width(image.width),
    height(image.height), pixelBytes(channels == 4 ? 4 : 1), m(mapping)
{
  end = pixels + stride * height;
  if (m.m11 == 65536 && m.m12 == 0) return;
  path = Path::Plain;
  const std::int64_t stepX = m.m11 < 0 ? -m.m11 : m.m11;
  const std::int64_t stepY = m.m12 < 0 ? -m.m12 : m.m12;
  if (stepX > 65536 || stepY > 65536) return;
  path = Path::Gathered;
  if (m.m11 > 65536 - kMostRunStep && stepY <= kMostRunStep / (pixelBytes == 1 ? 4 : 1)) {
    path = Path::Runs;
    return;
  }
  const std::int64_t rows = 1 + ((last * stepY + 65535) >> 16);
  if (pixelBytes != 1 || rows > kMostBlockRows) return;
  path = Path::Turned;
  blockRows = static_cast<int>(rows);
  makeSteps();
}

void PairSide::makeSteps()
{
  for (int k = 0; k < kPairBlock; ++k) {
    const std::int64_t x = m.m11 < 0 ? (k - last) * m.m11 : k * m.m11;
    const std::int64_t y = m.m12 < 0 ? (k - last) * m.m12 : k * m.m12;
    const std::int64_t whole = (x >> 16) + kPairBlock * (y >> 16);
    Steps& steps = k % 2 ? odd : even;
    for (const int i : {k / 2, k / 2 + kPairBlock / 2}) {
      steps.place[i] = static_cast<std::int16_t>(k % 2 ? 256 * whole : whole);
      steps.carryX[i] = static_cast<std::int16_t>(32767 - (x & 0xffff));
      steps.carryY[i] = static_cast<std::int16_t>(32767 - (y & 0xffff));
    }
  }
}

std::uint64_t sumPairRows(const PairSide& a, const PairSide& b, const RowSpan* spans, int rowBegin,
                          int rowEnd)
{
  return HWY_DYNAMIC_DISPATCH(sumRows)(a, b, spans, rowBegin, rowEnd);
}

void fetchPairRows(const PairSide& side, const RowSpan* spans, int rowBegin, int rowEnd, std::uint8_t* out,
                   std::int64_t outStride)
{
  HWY_DYNAMIC_DISPATCH(fetchRows)(side, spans, rowBegin, rowEnd, out, outStride);
}

} // namespace kernels
#endif
