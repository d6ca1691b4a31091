#include "kernels/GreyMapping.h"

#include "mc/McRound.h"

#include <cstring>
#include <type_traits>

// This file is compiled once for every instruction set; the part that is independent of it only once.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "GreyMapping.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#ifndef ZX_GREY_MAPPING_PLAIN
#define ZX_GREY_MAPPING_PLAIN

namespace kernels {

namespace {

std::uint8_t greyOf(float v, float min, float scale) { return mc::truncToByte((v - min) * scale + 0.5f); }

template <class T>
void plainLinear(const T* src, std::size_t n, float min, float scale, std::uint8_t* dst)
{
  for (std::size_t i = 0; i < n; ++i) dst[i] = greyOf(static_cast<float>(src[i]), min, scale);
}

inline void plainColour(const std::uint8_t* rgba, std::size_t n, float min, float scale, std::uint8_t* grey)
{
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint8_t* const p = rgba + 4 * i;
    grey[i] = greyOf(static_cast<float>(0.3 * p[0] + 0.59 * p[1] + 0.11 * p[2]), min, scale);
  }
}

} // namespace

} // namespace kernels

#endif // ZX_GREY_MAPPING_PLAIN

HWY_BEFORE_NAMESPACE();
namespace kernels {
namespace HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

template <class T>
void linear(const T* src, std::size_t n, float min, float scale, std::uint8_t* dst)
{
  plainLinear(src, n, min, scale, dst);
}

void colour(const std::uint8_t* rgba, std::size_t n, float min, float scale, std::uint8_t* grey)
{
  plainColour(rgba, n, min, scale, grey);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Floats = hn::ScalableTag<float>;
using Ints = hn::RebindToSigned<Floats>;
using Bytes = hn::Rebind<std::uint8_t, Floats>;
using Doubles = hn::RepartitionToWide<Floats>; // half as many lanes
using HalfInts = hn::Rebind<std::int32_t, Doubles>;
using HalfFloats = hn::Rebind<float, Doubles>;
using VFloats = hn::Vec<Floats>;
using VDoubles = hn::Vec<Doubles>;

HWY_INLINE VFloats joined(VDoubles lower, VDoubles upper)
{
  return hn::Combine(Floats(), hn::DemoteTo(HalfFloats(), upper), hn::DemoteTo(HalfFloats(), lower));
}

template <class T>
HWY_INLINE VFloats loadFloats(const T* src)
{
  const Floats d;
  if constexpr (std::is_same_v<T, float>) return hn::LoadU(d, src);
  if constexpr (std::is_same_v<T, std::int32_t>) return hn::ConvertTo(d, hn::LoadU(Ints(), src));
  if constexpr (std::is_same_v<T, double>) {
    const Doubles doubles;
    return joined(hn::LoadU(doubles, src), hn::LoadU(doubles, src + hn::Lanes(doubles)));
  }
  if constexpr (sizeof(T) <= 2)
    return hn::ConvertTo(d, hn::PromoteTo(Ints(), hn::LoadU(hn::Rebind<T, Floats>(), src)));
}

// Multiplied and added in two steps, truncated, clamped; what is no number gives 0.
HWY_INLINE void storeGreys(VFloats v, float min, float scale, std::uint8_t* dst)
{
  const Floats d;
  const VFloats moved = hn::Add(hn::Mul(hn::Sub(v, hn::Set(d, min)), hn::Set(d, scale)), hn::Set(d, 0.5f));
  const VFloats notNegative = hn::IfThenElseZero(hn::Gt(moved, hn::Zero(d)), moved);
  const auto levels = hn::ConvertTo(Ints(), hn::Min(notNegative, hn::Set(d, 255.0f)));
  hn::StoreU(hn::DemoteTo(Bytes(), levels), Bytes(), dst);
}

template <class T>
void linear(const T* src, std::size_t n, float min, float scale, std::uint8_t* dst)
{
  const std::size_t lanes = hn::Lanes(Floats());
  std::size_t i = 0;
  for (; i + lanes <= n; i += lanes) storeGreys(loadFloats(src + i), min, scale, dst + i);
  plainLinear(src + i, n - i, min, scale, dst + i);
}

// One byte of every word, weighted in double, for both halves of the words.
template <int shift>
HWY_INLINE void weigh(hn::Vec<Ints> words, double weight, VDoubles& lower, VDoubles& upper)
{
  const Doubles d;
  const auto bytes = hn::And(hn::ShiftRight<shift>(words), hn::Set(Ints(), 0xff));
  lower = hn::Mul(hn::Set(d, weight), hn::PromoteTo(d, hn::LowerHalf(HalfInts(), bytes)));
  upper = hn::Mul(hn::Set(d, weight), hn::PromoteTo(d, hn::UpperHalf(HalfInts(), bytes)));
}

void colour(const std::uint8_t* rgba, std::size_t n, float min, float scale, std::uint8_t* grey)
{
  const std::size_t lanes = hn::Lanes(Floats());
  const hn::Repartition<std::uint8_t, Floats> bytes;
  std::size_t i = 0;
  for (; i + lanes <= n; i += lanes) {
    const auto words = hn::BitCast(Ints(), hn::LoadU(bytes, rgba + 4 * i));
    VDoubles redLower, redUpper, greenLower, greenUpper, blueLower, blueUpper;
    weigh<0>(words, 0.3, redLower, redUpper);
    weigh<8>(words, 0.59, greenLower, greenUpper);
    weigh<16>(words, 0.11, blueLower, blueUpper);
    const VFloats sums = joined(hn::Add(hn::Add(redLower, greenLower), blueLower),
                                hn::Add(hn::Add(redUpper, greenUpper), blueUpper));
    storeGreys(sums, min, scale, grey + i);
  }
  plainColour(rgba + 4 * i, n - i, min, scale, grey + i);
}

#endif

// One name for every type, as the table of instruction sets needs it.
#define ZX_LINEAR(name, T)                                                                                   \
  void name(const T* src, std::size_t n, float min, float scale, std::uint8_t* dst)                          \
  {                                                                                                          \
    linear(src, n, min, scale, dst);                                                                         \
  }
ZX_LINEAR(linearUInt8, std::uint8_t)
ZX_LINEAR(linearInt16, std::int16_t)
ZX_LINEAR(linearInt32, std::int32_t)
ZX_LINEAR(linearFloat, float)
ZX_LINEAR(linearDouble, double)
ZX_LINEAR(linearUInt16, std::uint16_t)
#undef ZX_LINEAR

} // namespace
} // namespace HWY_NAMESPACE
} // namespace kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace kernels {

namespace {

#define ZX_MAP_BEST(name, T)                                                                                 \
  HWY_EXPORT(name);                                                                                          \
  void mapBest(const T* src, std::size_t n, float min, float scale, std::uint8_t* dst)                       \
  {                                                                                                          \
    HWY_DYNAMIC_DISPATCH(name)(src, n, min, scale, dst);                                                     \
  }
ZX_MAP_BEST(linearUInt8, std::uint8_t)
ZX_MAP_BEST(linearInt16, std::int16_t)
ZX_MAP_BEST(linearInt32, std::int32_t)
ZX_MAP_BEST(linearFloat, float)
ZX_MAP_BEST(linearDouble, double)
ZX_MAP_BEST(linearUInt16, std::uint16_t)
#undef ZX_MAP_BEST

HWY_EXPORT(colour);

} // namespace

template <class T>
void mapLinear(const T* src, std::size_t n, float min, float scale, std::uint8_t* dst)
{
  mapBest(src, n, min, scale, dst);
}

template void mapLinear(const std::uint8_t*, std::size_t, float, float, std::uint8_t*);
template void mapLinear(const std::int16_t*, std::size_t, float, float, std::uint8_t*);
template void mapLinear(const std::int32_t*, std::size_t, float, float, std::uint8_t*);
template void mapLinear(const float*, std::size_t, float, float, std::uint8_t*);
template void mapLinear(const double*, std::size_t, float, float, std::uint8_t*);
template void mapLinear(const std::uint16_t*, std::size_t, float, float, std::uint8_t*);

void mapColour(const std::uint8_t* rgba, std::size_t n, float min, float scale, std::uint8_t* grey)
{
  HWY_DYNAMIC_DISPATCH(colour)(rgba, n, min, scale, grey);
}

void applyMask(const std::uint8_t* bits, std::size_t n, std::uint8_t* grey, std::uint8_t* rgba)
{
  for (std::size_t k = 0; k < n; ++k) {
    if ((bits[k / 8] >> (k % 8)) & 1) continue;
    grey[k] = 0;
    if (rgba) std::memset(rgba + 4 * k, 0, 4);
  }
}

} // namespace kernels

#endif
