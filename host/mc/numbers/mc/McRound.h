#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

/// The only place where a floating-point number becomes an integer.
///
/// Every rule has a name, so that a reader sees which one a formula uses. All of them but
/// truncInRange() give 0 for NaN and clamp to the range of the result, so no value of a script or a damaged
/// file can cause undefined behaviour.
namespace mc {

/// Clamps a value to the range of Int and converts it; a fraction is cut off.
template <class Int>
constexpr Int clampToInt(double v) noexcept
{
  if (!(v == v)) return 0;
  // The double nearest to the largest 64-bit value lies above it, hence >=.
  if (v >= static_cast<double>(std::numeric_limits<Int>::max())) return std::numeric_limits<Int>::max();
  if (v <= static_cast<double>(std::numeric_limits<Int>::min())) return std::numeric_limits<Int>::min();
  return static_cast<Int>(v);
}

/// Towards zero: 1.9 and -1.9 give 1 and -1. The conversion of the language truncates by itself.
inline int truncToInt(double v) noexcept { return clampToInt<int>(v); }
inline std::int64_t truncToInt64(double v) noexcept { return clampToInt<std::int64_t>(v); }

/// Towards zero, clamped to 0 ... 255: the last step to a display value. Written without branches, so that
/// loops over pixels become vector code.
inline std::uint8_t truncToByte(float v) noexcept
{
  const float notNegative = v > 0.0f ? v : 0.0f; // also for NaN
  const float clamped = notNegative < 255.0f ? notNegative : 255.0f;
  return static_cast<std::uint8_t>(static_cast<int>(clamped));
}

/// Towards zero, clamped to 0 ... 2^31 - 1: an index along one axis. Written without branches, too.
inline int truncToIndex(double v) noexcept
{
  const double notNegative = v > 0.0 ? v : 0.0; // also for NaN
  return static_cast<int>(notNegative < 2147483647.0 ? notNegative : 2147483647.0);
}

/// Towards zero, for a value that is known to fit into an int: nothing is clamped.
inline int truncInRange(double v) noexcept { return static_cast<int>(v); }

/// Downwards: -0.1 gives -1.
inline int floorToInt(double v) noexcept { return clampToInt<int>(std::floor(v)); }
inline std::int64_t floorToInt64(double v) noexcept { return clampToInt<std::int64_t>(std::floor(v)); }

/// To the nearest, halves upwards: 2.5 gives 3, -2.5 gives -2.
///
/// A negative v is moved above zero by k = trunc(v - 1) first and truncated there.
inline double roundHalfUpReal(double v) noexcept
{
  if (v >= 0.0 || std::isinf(v)) return std::trunc(v + 0.5);
  const double k = std::trunc(v - 1.0);
  return k + std::trunc(v - k + 0.5);
}
inline int roundHalfUp(double v) noexcept { return clampToInt<int>(roundHalfUpReal(v)); }

/// Adds one half and truncates towards zero: the rule of a display value, wrong for negative numbers on
/// purpose (-0.7 gives 0).
inline int addHalfAndTrunc(double v) noexcept { return clampToInt<int>(std::trunc(v + 0.5)); }

/// To the nearest, ties to even, clamped to the range of Int: the rule of every stored voxel.
template <class Int>
inline Int roundHalfEven(double v) noexcept
{
  if constexpr (sizeof(Int) > 4 || std::is_same_v<Int, std::uint32_t>) {
    return clampToInt<Int>(std::nearbyint(v));
  } else {
    // At 1.5 * 2^52 neighbouring doubles are 1 apart, so the sum is rounded as wanted, without a call.
    constexpr double ones = 6755399441055744.0;
    constexpr double low = std::numeric_limits<Int>::min();
    constexpr double high = std::numeric_limits<Int>::max();
    const double notAbove = v < high ? v : high;
    const double clamped = notAbove > low ? notAbove : low;
    const double rounded = (v == v ? clamped : 0.0) + ones - ones;
    return static_cast<Int>(static_cast<std::int32_t>(rounded));
  }
}

/// 16.16 fixed point in 64 bits, halves upwards.
///
/// Clamped to +-2^45 so that a start plus 65,535 steps in each of two directions stays within 64 bits.
inline std::int64_t toFixed16(double v) noexcept
{
  constexpr double limit = 35184372088832.0; // 2^45
  const double r = roundHalfUpReal(v * 65536.0);
  if (r >= limit) return static_cast<std::int64_t>(limit);
  if (r <= -limit) return -static_cast<std::int64_t>(limit);
  return clampToInt<std::int64_t>(r);
}

} // namespace mc
