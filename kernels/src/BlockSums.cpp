#include "BlockSums.h"

#include <algorithm>

// This file is compiled once for every instruction set; the part that is independent of it only once.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "BlockSums.cpp"
#include <hwy/cache_control.h>
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#ifndef ZX_BLOCK_SUMS_PLAIN
#define ZX_BLOCK_SUMS_PLAIN

namespace kernels {

namespace {

// Sums the columns of all blocks from value `begin` on.
void plainColumns(const BlockRow& row, std::size_t begin, std::uint16_t* sums)
{
  for (std::size_t i = begin; i < row.values() * row.factor; ++i) {
    unsigned sum = 0;
    for (std::size_t y = 0; y < row.factor; ++y) sum += row.source[y * row.stride + i];
    sums[i] = static_cast<std::uint16_t>(sum);
  }
}

// Sums every two neighbouring columns of an even factor, for one channel, from pair `begin` on.
void plainPairs(const BlockRow& row, std::size_t begin, std::uint16_t* sums)
{
  for (std::size_t i = begin; i < row.count * row.factor / 2; ++i) {
    const std::uint8_t* p = row.source + 2 * i;
    unsigned sum = 0;
    for (std::size_t y = 0; y < row.factor; ++y, p += row.stride) sum += unsigned{p[0]} + p[1];
    sums[i] = static_cast<std::uint16_t>(sum);
  }
}

// Means from the sums of the columns, for any factor.
//
// Division by the area is multiplication with 2^42 / area, rounded up: exact, because the sum is below 2^25
// and the area below 2^17.
void plainMeans(const BlockRow& row, const std::uint16_t* sums, std::uint8_t* out)
{
  constexpr int bits = 42;
  const std::uint64_t area = row.factor * row.factor;
  const std::uint64_t reciprocal = ((std::uint64_t{1} << bits) + area - 1) / area;
  for (std::size_t block = 0; block < row.count; ++block, sums += row.factor * row.channels)
    for (std::size_t c = 0; c < row.channels; ++c) {
      std::uint64_t sum = 0;
      for (std::size_t x = 0; x < row.factor; ++x) sum += sums[x * row.channels + c];
      *out++ = static_cast<std::uint8_t>(sum * reciprocal >> bits);
    }
}

// Factors 2, 4, 8, 16: the sum of a block fits 16 bits. 0 for all others.
inline int halvingsOf(std::size_t factor)
{
  for (int k = 1; k <= 4; ++k)
    if (factor == std::size_t{1} << k) return k;
  return 0;
}

} // namespace

} // namespace kernels

#endif // ZX_BLOCK_SUMS_PLAIN

HWY_BEFORE_NAMESPACE();
namespace kernels {
namespace HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

void averageRow(const BlockRow& row, std::uint16_t* sums, std::uint8_t* out)
{
  plainColumns(row, 0, sums);
  plainMeans(row, sums, out);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Sums = hn::ScalableTag<std::uint16_t>;
using Bytes = hn::Rebind<std::uint8_t, Sums>;

// Loads of a row of blocks ask for the next one: the processor foresees none of them, as its rows lie on
// pages of their own.
HWY_INLINE void fetchNext(const BlockRow& row, const std::uint8_t* p)
{
  hwy::Prefetch(p + row.factor * row.stride);
}

void sumColumns(BlockRow row, std::uint16_t* sums)
{
  const Sums d;
  const Bytes bytes;
  const std::size_t lanes = hn::Lanes(d);
  std::size_t i = 0;
  for (; i + lanes <= row.values() * row.factor; i += lanes) {
    const std::uint8_t* p = row.source + i;
    auto sum = hn::Zero(d);
    for (std::size_t y = 0; y < row.factor; ++y, p += row.stride) {
      fetchNext(row, p);
      sum = hn::Add(sum, hn::PromoteTo(d, hn::LoadU(bytes, p)));
    }
    hn::StoreU(sum, d, sums + i);
  }
  plainColumns(row, i, sums);
}

// The same for every two neighbouring columns: a lane of 16 bits holds two bytes.
void sumPairs(BlockRow row, std::uint16_t* sums)
{
  const Sums d;
  const hn::Repartition<std::uint8_t, Sums> bytes;
  const std::size_t lanes = hn::Lanes(d);
  const auto low = hn::Set(d, 0xff);
  std::size_t i = 0;
  for (; i + lanes <= row.count * row.factor / 2; i += lanes) {
    const std::uint8_t* p = row.source + 2 * i;
    auto even = hn::Zero(d), odd = hn::Zero(d);
    for (std::size_t y = 0; y < row.factor; ++y, p += row.stride) {
      fetchNext(row, p);
      const auto both = hn::BitCast(d, hn::LoadU(bytes, p));
      even = hn::Add(even, hn::And(both, low));
      odd = hn::Add(odd, hn::ShiftRight<8>(both));
    }
    hn::StoreU(hn::Add(even, odd), d, sums + i);
  }
  plainPairs(row, i, sums);
}

// Adds the right to the left of every two pixels, in place; a pixel is a lane of Pixel. Reads and writes
// whole vectors, behind the last of `count` sums too.
template <class Pixel>
void addNeighbours(std::uint16_t* sums, std::size_t count)
{
  const Sums d;
  const hn::Repartition<Pixel, Sums> pixels;
  const std::size_t lanes = hn::Lanes(d);
  for (std::size_t i = 0; i < count; i += lanes) {
    const auto first = hn::BitCast(pixels, hn::LoadU(d, sums + 2 * i));
    const auto second = hn::BitCast(pixels, hn::LoadU(d, sums + 2 * i + lanes));
    const auto left = hn::BitCast(d, hn::ConcatEven(pixels, second, first));
    const auto right = hn::BitCast(d, hn::ConcatOdd(pixels, second, first));
    hn::StoreU(hn::Add(left, right), d, sums + i);
  }
}

void storeMeans(const std::uint16_t* sums, std::size_t count, int bits, std::uint8_t* out)
{
  const Sums d;
  const hn::RebindToSigned<Sums> narrow;
  const Bytes bytes;
  const std::size_t lanes = hn::Lanes(d);
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) {
    const auto means = hn::ShiftRightSame(hn::LoadU(d, sums + i), bits);
    hn::StoreU(hn::DemoteTo(bytes, hn::BitCast(narrow, means)), bytes, out + i);
  }
  for (; i < count; ++i) out[i] = static_cast<std::uint8_t>(sums[i] >> bits);
}

// Halves the row until a lane of Pixel holds the sum of a block.
template <class Pixel>
void average(const BlockRow& row, int halvings, std::uint16_t* sums, std::uint8_t* out)
{
  constexpr bool grey = sizeof(Pixel) == sizeof(*sums);
  if (grey)
    sumPairs(row, sums);
  else
    sumColumns(row, sums);
  for (int k = halvings - (grey ? 2 : 1); k >= 0; --k) addNeighbours<Pixel>(sums, row.values() << k);
  storeMeans(sums, row.values(), 2 * halvings, out);
}

void averageRow(const BlockRow& row, std::uint16_t* sums, std::uint8_t* out)
{
  const int halvings = halvingsOf(row.factor);
  if (halvings > 0 && row.channels == 1) return average<std::uint16_t>(row, halvings, sums, out);
  if (halvings > 0 && row.channels == 2) return average<std::uint32_t>(row, halvings, sums, out);
  if (halvings > 0 && row.channels == 4) return average<std::uint64_t>(row, halvings, sums, out);
  sumColumns(row, sums);
  plainMeans(row, sums, out);
}

#endif

} // namespace
} // namespace HWY_NAMESPACE
} // namespace kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace kernels {

namespace {
HWY_EXPORT(averageRow);
}

void averageBlocks(const BlockRow& row, std::uint16_t* sums, std::uint8_t* out)
{
  HWY_DYNAMIC_DISPATCH(averageRow)(row, sums, out);
}

} // namespace kernels

#endif
