#include "ResampleSpan.h"

#include "StoredValue.h"

#include "mc/McRound.h"

#include <algorithm>
#include <cstring>
#include <type_traits>
#include <utility>

// This file is compiled once for every instruction set; the part that is independent of it only once.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ResampleSpan.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#ifndef ZX_RESAMPLE_SPAN_PLAIN
#define ZX_RESAMPLE_SPAN_PLAIN

namespace kernels {

namespace {

template <class T>
float valueAt(const std::uint8_t* bytes)
{
  T value;
  std::memcpy(&value, bytes, sizeof(T));
  return static_cast<float>(value);
}

void plainCopy(SliceBytes slice, RowPositions row, ColumnRange columns, void* out)
{
  auto* to = static_cast<std::uint8_t*>(out);
  for (int i = columns.begin; i < columns.end; ++i, to += slice.pixelBytes)
    std::memcpy(to, slice.at(mc::truncInRange(row.xAt(i)), mc::truncInRange(row.yAt(i))), slice.pixelBytes);
}

template <class T>
void plainThroughFloat(SliceBytes slice, RowPositions row, ColumnRange columns, void* out)
{
  auto* to = static_cast<T*>(out);
  for (int i = columns.begin; i < columns.end; ++i) {
    const std::uint8_t* p = slice.at(mc::truncInRange(row.xAt(i)), mc::truncInRange(row.yAt(i)));
    for (std::size_t c = 0; c < slice.channels; ++c, p += sizeof(T)) *to++ = storedAs<T>(valueAt<T>(p));
  }
}

template <class T>
void plainLinear(SliceBytes slice, RowPositions row, ColumnRange columns, void* out)
{
  const std::size_t right = slice.pixelBytes;
  const std::size_t below = slice.rowBytes();
  auto* to = static_cast<T*>(out);
  for (int i = columns.begin; i < columns.end; ++i) {
    const double x = row.xAt(i), y = row.yAt(i);
    const int ix = mc::truncInRange(x), iy = mc::truncInRange(y);
    const auto fx = static_cast<float>(x - ix), fy = static_cast<float>(y - iy);
    const std::uint8_t* p = slice.at(ix, iy);
    for (std::size_t c = 0; c < slice.channels; ++c, p += sizeof(T))
      *to++ =
          storedAs<T>((1.0f - fx) * (1.0f - fy) * valueAt<T>(p) + fx * (1.0f - fy) * valueAt<T>(p + right) +
                      (1.0f - fx) * fy * valueAt<T>(p + below) + fx * fy * valueAt<T>(p + below + right));
  }
}

// What a block of columns reads, found from its ends: positions never turn back along a row.
struct Reach {
  int firstRow = 0;
  bool vectorSafe = false; // 32-bit offsets from the first row suffice, and nothing is read behind the slice
};

// bytesFromPixel: from the upper left pixel of a look-up to the end of all that is read for it.
inline Reach reachOf(const SliceBytes& slice, const RowPositions& row, ColumnRange columns,
                     std::size_t bytesFromPixel)
{
  const int x0 = mc::truncInRange(row.xAt(columns.begin)), x1 = mc::truncInRange(row.xAt(columns.end - 1));
  const int y0 = mc::truncInRange(row.yAt(columns.begin)), y1 = mc::truncInRange(row.yAt(columns.end - 1));
  const int top = std::min(y0, y1), bottom = std::max(y0, y1), right = std::max(x0, x1);
  constexpr std::size_t limit = 0x7fffffff;
  const std::size_t end = static_cast<std::size_t>(slice.at(right, bottom) - slice.bytes) + bytesFromPixel;
  const std::size_t start = static_cast<std::size_t>(top) * slice.rowBytes();
  return {top, end <= slice.height * slice.rowBytes() && end - start <= limit};
}

// Calls f(T{}) for the type of an element.
template <class F>
SpanFunction visitElement(Element element, const F& f)
{
  switch (element) {
  case Element::UInt8:
    return f(std::uint8_t{});
  case Element::Int16:
    return f(std::int16_t{});
  case Element::Int32:
    return f(std::int32_t{});
  case Element::Float:
    return f(float{});
  case Element::Double:
    return f(double{});
  case Element::UInt16:
    return f(std::uint16_t{});
  }
  return nullptr;
}

} // namespace

} // namespace kernels

#endif // ZX_RESAMPLE_SPAN_PLAIN

HWY_BEFORE_NAMESPACE();
namespace kernels {
namespace HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

SpanFunction chooseSpan(Element element, SpanRule rule, const SliceBytes&)
{
  return plainSpanFunction(element, rule);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Floats = hn::ScalableTag<float>;
using Ints = hn::RebindToSigned<Floats>;
using Words = hn::RebindToUnsigned<Floats>;
using Doubles = hn::RepartitionToWide<Floats>; // half as many lanes
using Longs = hn::RebindToSigned<Doubles>;
using HalfInts = hn::Rebind<std::int32_t, Doubles>;
using HalfFloats = hn::Rebind<float, Doubles>;
using VFloats = hn::Vec<Floats>;
using VInts = hn::Vec<Ints>;
using VDoubles = hn::Vec<Doubles>;
using VLongs = hn::Vec<Longs>;

HWY_INLINE int lanes() { return static_cast<int>(hn::Lanes(Floats())); }

// --- Positions, in double and in the order of Affine, without fused operations.

struct Columns {
  VDoubles lower, upper; // as in the frame of the slice: column - left
};

HWY_INLINE Columns columnsFrom(const RowPositions& row, int column)
{
  const Doubles d;
  const VDoubles lower = hn::Add(hn::Set(d, static_cast<double>(column) - row.left), hn::Iota(d, 0));
  return {lower, hn::Add(lower, hn::Set(d, static_cast<double>(lanes() / 2)))};
}

HWY_INLINE VDoubles mapped(VDoubles x, double factor, double rowTerm, double offset)
{
  const Doubles d;
  return hn::Add(hn::Add(hn::Mul(hn::Set(d, factor), x), hn::Set(d, rowTerm)), hn::Set(d, offset));
}

HWY_INLINE VInts truncated(VDoubles lower, VDoubles upper)
{
  return hn::Combine(Ints(), hn::DemoteTo(HalfInts(), upper), hn::DemoteTo(HalfInts(), lower));
}

// Truncates the positions and tells how far they lie beyond the pixel.
HWY_INLINE VInts truncatedWithRest(VDoubles lower, VDoubles upper, VFloats& rest)
{
  const auto lowerIndex = hn::DemoteTo(HalfInts(), lower);
  const auto upperIndex = hn::DemoteTo(HalfInts(), upper);
  const Doubles d;
  const auto lowerRest = hn::DemoteTo(HalfFloats(), hn::Sub(lower, hn::PromoteTo(d, lowerIndex)));
  const auto upperRest = hn::DemoteTo(HalfFloats(), hn::Sub(upper, hn::PromoteTo(d, upperIndex)));
  rest = hn::Combine(Floats(), upperRest, lowerRest);
  return hn::Combine(Ints(), upperIndex, lowerIndex);
}

// Where look-ups start, and what turns a pixel into an offset from there.
struct Lookup {
  const std::uint8_t* base;
  int firstRow, rowBytes, pixelBytes;

  HWY_INLINE VInts offsets(VInts x, VInts y) const
  {
    const Ints d;
    const VInts rows = hn::Mul(hn::Sub(y, hn::Set(d, firstRow)), hn::Set(d, rowBytes));
    return hn::Add(rows, hn::Mul(x, hn::Set(d, pixelBytes)));
  }
};

HWY_INLINE VInts nearestOffsets(const Lookup& lookup, const RowPositions& row, int column)
{
  const Affine& m = row.inverse;
  const Columns columns = columnsFrom(row, column);
  const VDoubles half = hn::Set(Doubles(), row.shift);
  const auto x = [&](VDoubles c) { return hn::Add(mapped(c, m.m11, m.m21 * row.y, m.dx), half); };
  const auto y = [&](VDoubles c) { return hn::Add(mapped(c, m.m12, m.m22 * row.y, m.dy), half); };
  return lookup.offsets(truncated(x(columns.lower), x(columns.upper)),
                        truncated(y(columns.lower), y(columns.upper)));
}

HWY_INLINE VInts linearOffsets(const Lookup& lookup, const RowPositions& row, int column, VFloats& fx,
                               VFloats& fy)
{
  const Affine& m = row.inverse;
  const Columns columns = columnsFrom(row, column);
  const auto x = [&](VDoubles c) { return mapped(c, m.m11, m.m21 * row.y, m.dx); };
  const auto y = [&](VDoubles c) { return mapped(c, m.m12, m.m22 * row.y, m.dy); };
  const VInts ix = truncatedWithRest(x(columns.lower), x(columns.upper), fx);
  const VInts iy = truncatedWithRest(y(columns.lower), y(columns.upper), fy);
  return lookup.offsets(ix, iy);
}

// --- Look-ups.

HWY_INLINE VInts gather32(const std::uint8_t* base, VInts offsets)
{
  return hn::GatherOffset(Ints(), reinterpret_cast<const std::int32_t*>(base), offsets);
}

HWY_INLINE VLongs lowerLongs(VInts v) { return hn::PromoteTo(Longs(), hn::LowerHalf(HalfInts(), v)); }
HWY_INLINE VLongs upperLongs(VInts v) { return hn::PromoteTo(Longs(), hn::UpperHalf(HalfInts(), v)); }

HWY_INLINE VLongs gather64(const std::uint8_t* base, VLongs offsets)
{
  return hn::GatherOffset(Longs(), reinterpret_cast<const std::int64_t*>(base), offsets);
}

template <class T>
HWY_INLINE VFloats gatherFloats(const std::uint8_t* base, VInts offsets)
{
  const Floats df;
  if constexpr (std::is_same_v<T, double>) {
    const Doubles d;
    const auto lower = hn::BitCast(d, gather64(base, lowerLongs(offsets)));
    const auto upper = hn::BitCast(d, gather64(base, upperLongs(offsets)));
    return hn::Combine(df, hn::DemoteTo(HalfFloats(), upper), hn::DemoteTo(HalfFloats(), lower));
  } else {
    const VInts word = gather32(base, offsets);
    if constexpr (std::is_same_v<T, float>) return hn::BitCast(df, word);
    if constexpr (std::is_same_v<T, std::int32_t>) return hn::ConvertTo(df, word);
    if constexpr (std::is_same_v<T, std::int16_t>)
      return hn::ConvertTo(df, hn::ShiftRight<16>(hn::ShiftLeft<16>(word)));
    if constexpr (std::is_same_v<T, std::uint16_t>)
      return hn::ConvertTo(df, hn::And(word, hn::Set(Ints(), 0xffff)));
    if constexpr (std::is_same_v<T, std::uint8_t>)
      return hn::ConvertTo(df, hn::And(word, hn::Set(Ints(), 0xff)));
  }
}

HWY_INLINE VInts logicalRight16(VInts word)
{
  return hn::BitCast(Ints(), hn::ShiftRight<16>(hn::BitCast(Words(), word)));
}

struct Neighbours {
  VFloats left, right;
};

// A pixel and the one to its right, of a slice with one channel: one look-up reads both where they fit.
template <class T>
HWY_INLINE Neighbours gatherNeighbours(const std::uint8_t* base, VInts offsets)
{
  const Floats df;
  const Ints di;
  if constexpr (sizeof(T) == 8) {
    return {gatherFloats<T>(base, offsets), gatherFloats<T>(base + sizeof(T), offsets)};
  } else if constexpr (sizeof(T) == 4) {
    const VInts lower = hn::BitCast(di, gather64(base, lowerLongs(offsets)));
    const VInts upper = hn::BitCast(di, gather64(base, upperLongs(offsets)));
    const VInts left = hn::ConcatEven(di, upper, lower);
    const VInts right = hn::ConcatOdd(di, upper, lower);
    if constexpr (std::is_same_v<T, float>)
      return {hn::BitCast(df, left), hn::BitCast(df, right)};
    else
      return {hn::ConvertTo(df, left), hn::ConvertTo(df, right)};
  } else {
    const VInts word = gather32(base, offsets);
    if constexpr (std::is_same_v<T, std::int16_t>)
      return {hn::ConvertTo(df, hn::ShiftRight<16>(hn::ShiftLeft<16>(word))),
              hn::ConvertTo(df, hn::ShiftRight<16>(word))};
    if constexpr (std::is_same_v<T, std::uint16_t>)
      return {hn::ConvertTo(df, hn::And(word, hn::Set(di, 0xffff))), hn::ConvertTo(df, logicalRight16(word))};
    if constexpr (std::is_same_v<T, std::uint8_t>) {
      const VInts byte = hn::Set(di, 0xff);
      return {hn::ConvertTo(df, hn::And(word, byte)),
              hn::ConvertTo(df, hn::And(hn::ShiftRight<8>(word), byte))};
    }
  }
}

// --- Values.

struct Weights {
  VFloats upperLeft, upperRight, lowerLeft, lowerRight;
};

HWY_INLINE Weights weightsOf(VFloats fx, VFloats fy)
{
  const VFloats one = hn::Set(Floats(), 1.0f);
  const VFloats gx = hn::Sub(one, fx), gy = hn::Sub(one, fy);
  return {hn::Mul(gx, gy), hn::Mul(fx, gy), hn::Mul(gx, fy), hn::Mul(fx, fy)};
}

HWY_INLINE VFloats weighted(const Weights& w, const Neighbours& upper, const Neighbours& lower)
{
  const VFloats top = hn::Add(hn::Mul(w.upperLeft, upper.left), hn::Mul(w.upperRight, upper.right));
  return hn::Add(hn::Add(top, hn::Mul(w.lowerLeft, lower.left)), hn::Mul(w.lowerRight, lower.right));
}

// To the nearest, ties to even, clamped.
template <class T>
HWY_INLINE void storeValues(VFloats v, T* out)
{
  if constexpr (std::is_same_v<T, float>) {
    hn::StoreU(v, Floats(), out);
  } else if constexpr (std::is_same_v<T, double>) {
    const Doubles d;
    hn::StoreU(hn::PromoteTo(d, hn::LowerHalf(HalfFloats(), v)), d, out);
    hn::StoreU(hn::PromoteTo(d, hn::UpperHalf(HalfFloats(), v)), d, out + hn::Lanes(d));
  } else if constexpr (std::is_same_v<T, std::int32_t>) {
    hn::StoreU(hn::NearestInt(v), Ints(), out);
  } else {
    const hn::Rebind<T, Floats> d;
    hn::StoreU(hn::DemoteTo(d, hn::NearestInt(v)), d, out);
  }
}

template <class T>
HWY_INLINE void storeStrided(VFloats v, T* out, std::size_t step)
{
  alignas(64) T values[hn::MaxLanes(Floats())];
  storeValues(v, values);
  for (int k = 0; k < lanes(); ++k) out[static_cast<std::size_t>(k) * step] = values[k];
}

// --- Spans.

// Calls vector(lookup, column) for every vector of columns; a last incomplete vector is moved back over its
// neighbour. Columns that vector code cannot do go to plain(columns).
template <class Vector, class Plain>
HWY_INLINE void forVectors(const SliceBytes& slice, const RowPositions& row, ColumnRange columns,
                           std::size_t bytesFromPixel, const Vector& vector, const Plain& plain)
{
  constexpr int block = 256;
  if (columns.end - columns.begin < lanes()) return plain(columns);
  for (int begin = columns.begin; begin < columns.end; begin += block) {
    const int first = std::min(begin, columns.end - lanes());
    const int end = std::min(begin + block, columns.end);
    const Reach reach = reachOf(slice, row, {first, end}, bytesFromPixel);
    if (!reach.vectorSafe) {
      plain(ColumnRange{begin, end});
      continue;
    }
    const Lookup lookup{slice.at(0, reach.firstRow), reach.firstRow, static_cast<int>(slice.rowBytes()),
                        static_cast<int>(slice.pixelBytes)};
    for (int column = first; column < end; column += lanes()) vector(lookup, std::min(column, end - lanes()));
  }
}

template <std::size_t bytes>
HWY_INLINE void copyPixels(const std::uint8_t* base, VInts offsets, std::uint8_t* out)
{
  if constexpr (bytes == 1) {
    const hn::Rebind<std::uint8_t, Floats> d;
    hn::StoreU(hn::DemoteTo(d, hn::And(gather32(base, offsets), hn::Set(Ints(), 0xff))), d, out);
  } else if constexpr (bytes == 2) {
    const hn::Rebind<std::uint16_t, Floats> d;
    hn::StoreU(hn::DemoteTo(d, hn::And(gather32(base, offsets), hn::Set(Ints(), 0xffff))), d,
               reinterpret_cast<std::uint16_t*>(out));
  } else if constexpr (bytes == 4) {
    hn::StoreU(gather32(base, offsets), Ints(), reinterpret_cast<std::int32_t*>(out));
  } else if constexpr (bytes == 8) {
    const Longs d;
    auto* const longs = reinterpret_cast<std::int64_t*>(out);
    hn::StoreU(gather64(base, lowerLongs(offsets)), d, longs);
    hn::StoreU(gather64(base, upperLongs(offsets)), d, longs + hn::Lanes(d));
  } else {
    alignas(64) std::int32_t from[hn::MaxLanes(Ints())];
    hn::Store(offsets, Ints(), from);
    for (int k = 0; k < lanes(); ++k, out += bytes) std::memcpy(out, base + from[k], bytes);
  }
}

template <std::size_t bytes>
void copySpan(SliceBytes slice, RowPositions row, ColumnRange columns, void* out)
{
  auto* const to = static_cast<std::uint8_t*>(out);
  const auto at = [&](int column) { return to + static_cast<std::size_t>(column - columns.begin) * bytes; };
  const auto vector = [&](const Lookup& lookup, int column) HWY_ATTR {
    const VInts offsets = nearestOffsets(lookup, row, column);
    copyPixels<bytes>(lookup.base, offsets, at(column));
  };
  const auto plain = [&](ColumnRange part) { plainCopy(slice, row, part, at(part.begin)); };
  forVectors(slice, row, columns, std::max<std::size_t>(bytes, 4), vector, plain);
}

template <class T>
void throughFloatSpan(SliceBytes slice, RowPositions row, ColumnRange columns, void* out)
{
  const std::size_t n = slice.channels;
  auto* const to = static_cast<T*>(out);
  const auto at = [&](int column) { return to + static_cast<std::size_t>(column - columns.begin) * n; };
  const auto vector = [&](const Lookup& lookup, int column) HWY_ATTR {
    const VInts offsets = nearestOffsets(lookup, row, column);
    if (n == 1) return storeValues(gatherFloats<T>(lookup.base, offsets), at(column));
    for (std::size_t c = 0; c < n; ++c)
      storeStrided(gatherFloats<T>(lookup.base + c * sizeof(T), offsets), at(column) + c, n);
  };
  const auto plain = [&](ColumnRange part) { plainThroughFloat<T>(slice, row, part, at(part.begin)); };
  forVectors(slice, row, columns, std::max<std::size_t>(slice.pixelBytes, 4), vector, plain);
}

// One channel.
template <class T>
void linearSpan(SliceBytes slice, RowPositions row, ColumnRange columns, void* out)
{
  auto* const to = static_cast<T*>(out);
  const auto at = [&](int column) { return to + (column - columns.begin); };
  const std::size_t below = slice.rowBytes();
  const auto vector = [&](const Lookup& lookup, int column) HWY_ATTR {
    VFloats fx, fy;
    const VInts offsets = linearOffsets(lookup, row, column, fx, fy);
    const Neighbours upper = gatherNeighbours<T>(lookup.base, offsets);
    const Neighbours lower = gatherNeighbours<T>(lookup.base + below, offsets);
    storeValues(weighted(weightsOf(fx, fy), upper, lower), at(column));
  };
  const auto plain = [&](ColumnRange part) { plainLinear<T>(slice, row, part, at(part.begin)); };
  forVectors(slice, row, columns, below + std::max<std::size_t>(2 * sizeof(T), 4), vector, plain);
}

// Any number of channels, one after the other.
template <class T>
void linearChannelsSpan(SliceBytes slice, RowPositions row, ColumnRange columns, void* out)
{
  const std::size_t n = slice.channels;
  auto* const to = static_cast<T*>(out);
  const auto at = [&](int column) { return to + static_cast<std::size_t>(column - columns.begin) * n; };
  const std::size_t right = slice.pixelBytes, below = slice.rowBytes();
  const auto vector = [&](const Lookup& lookup, int column) HWY_ATTR {
    VFloats fx, fy;
    const VInts offsets = linearOffsets(lookup, row, column, fx, fy);
    const Weights weights = weightsOf(fx, fy);
    for (std::size_t c = 0; c < n; ++c) {
      const std::uint8_t* const p = lookup.base + c * sizeof(T);
      const Neighbours upper{gatherFloats<T>(p, offsets), gatherFloats<T>(p + right, offsets)};
      const Neighbours lower{gatherFloats<T>(p + below, offsets),
                             gatherFloats<T>(p + below + right, offsets)};
      storeStrided(weighted(weights, upper, lower), at(column) + c, n);
    }
  };
  const auto plain = [&](ColumnRange part) { plainLinear<T>(slice, row, part, at(part.begin)); };
  const std::size_t lastValue = std::max<std::size_t>(sizeof(T), 4) - sizeof(T); // read beyond the pixel
  forVectors(slice, row, columns, below + 2 * right + lastValue, vector, plain);
}

struct WordPair {
  VInts left, right;
};

HWY_INLINE WordPair gatherWordPair(const std::uint8_t* base, VInts offsets)
{
  const Ints di;
  const VInts lower = hn::BitCast(di, gather64(base, lowerLongs(offsets)));
  const VInts upper = hn::BitCast(di, gather64(base, upperLongs(offsets)));
  return {hn::ConcatEven(di, upper, lower), hn::ConcatOdd(di, upper, lower)};
}

// Byte number `channel` of every word.
template <int channel>
HWY_INLINE Neighbours bytesOf(const WordPair& words)
{
  const Floats df;
  const VInts byte = hn::Set(Ints(), 0xff);
  return {hn::ConvertTo(df, hn::And(hn::ShiftRight<8 * channel>(words.left), byte)),
          hn::ConvertTo(df, hn::And(hn::ShiftRight<8 * channel>(words.right), byte))};
}

// Four channels of a byte: a pixel is a word.
void linearColourSpan(SliceBytes slice, RowPositions row, ColumnRange columns, void* out)
{
  auto* const to = static_cast<std::uint8_t*>(out);
  const auto at = [&](int column) { return to + 4 * static_cast<std::size_t>(column - columns.begin); };
  const std::size_t below = slice.rowBytes();
  const auto vector = [&](const Lookup& lookup, int column) HWY_ATTR {
    VFloats fx, fy;
    const VInts offsets = linearOffsets(lookup, row, column, fx, fy);
    const Weights weights = weightsOf(fx, fy);
    const WordPair upper = gatherWordPair(lookup.base, offsets);
    const WordPair lower = gatherWordPair(lookup.base + below, offsets);
    // A weighted mean of bytes rounds to a byte: nothing needs to be clamped.
    const auto channel0 = hn::NearestInt(weighted(weights, bytesOf<0>(upper), bytesOf<0>(lower)));
    const auto channel1 = hn::NearestInt(weighted(weights, bytesOf<1>(upper), bytesOf<1>(lower)));
    const auto channel2 = hn::NearestInt(weighted(weights, bytesOf<2>(upper), bytesOf<2>(lower)));
    const auto channel3 = hn::NearestInt(weighted(weights, bytesOf<3>(upper), bytesOf<3>(lower)));
    const auto pixels = hn::Or(hn::Or(channel0, hn::ShiftLeft<8>(channel1)),
                               hn::Or(hn::ShiftLeft<16>(channel2), hn::ShiftLeft<24>(channel3)));
    hn::StoreU(pixels, Ints(), reinterpret_cast<std::int32_t*>(at(column)));
  };
  const auto plain = [&](ColumnRange part) { plainLinear<std::uint8_t>(slice, row, part, at(part.begin)); };
  forVectors(slice, row, columns, below + 8, vector, plain);
}

SpanFunction chooseCopy(std::size_t pixelBytes)
{
  switch (pixelBytes) {
  case 1:
    return copySpan<1>;
  case 2:
    return copySpan<2>;
  case 4:
    return copySpan<4>;
  case 3:
    return copySpan<3>;
  case 6:
    return copySpan<6>;
  case 8:
    return copySpan<8>;
  case 12:
    return copySpan<12>;
  case 16:
    return copySpan<16>;
  default:
    return plainCopy;
  }
}

SpanFunction chooseSpan(Element element, SpanRule rule, const SliceBytes& slice)
{
  if (rule == SpanRule::Copy) return chooseCopy(slice.pixelBytes);
  if (rule == SpanRule::Linear && element == Element::UInt8 && slice.channels == 4) return linearColourSpan;
  return visitElement(element, [&](auto zero) -> SpanFunction {
    using T = decltype(zero);
    if (rule == SpanRule::ThroughFloat) return throughFloatSpan<T>;
    return slice.channels == 1 ? linearSpan<T> : linearChannelsSpan<T>;
  });
}

#endif

} // namespace
} // namespace HWY_NAMESPACE
} // namespace kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace kernels {

namespace {
HWY_EXPORT(chooseSpan);
}

SpanFunction spanFunction(Element element, SpanRule rule, const SliceBytes& slice)
{
  return HWY_DYNAMIC_DISPATCH(chooseSpan)(element, rule, slice);
}

SpanFunction plainSpanFunction(Element element, SpanRule rule)
{
  if (rule == SpanRule::Copy) return plainCopy;
  return visitElement(element, [&](auto zero) -> SpanFunction {
    using T = decltype(zero);
    return rule == SpanRule::Linear ? plainLinear<T> : plainThroughFloat<T>;
  });
}

} // namespace kernels

#endif
