#include "StoredVoxels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace io {

namespace {

/// A floating-point number of 16 bits: sign, 5 bits of exponent, 10 of mantissa.
struct Half {
  std::uint16_t bits = 0;

  explicit operator float() const noexcept
  {
    const int exponent = (bits >> 10) & 31;
    const int mantissa = bits & 1023;
    const float sign = (bits & 0x8000) ? -1.0f : 1.0f;
    if (exponent == 31)
      return mantissa ? std::numeric_limits<float>::quiet_NaN()
                      : sign * std::numeric_limits<float>::infinity();
    if (exponent == 0) return sign * std::ldexp(static_cast<float>(mantissa), -24);
    return sign * std::ldexp(static_cast<float>(mantissa + 1024), exponent - 25);
  }
};

/// Calls f with a value of the C++ type of a stored one.
template <class F>
decltype(auto) visit(StoredType type, F&& f)
{
  switch (type) {
  case StoredType::Int8:
    return f(std::int8_t{});
  case StoredType::UInt8:
    return f(std::uint8_t{});
  case StoredType::Int16:
    return f(std::int16_t{});
  case StoredType::UInt16:
    return f(std::uint16_t{});
  case StoredType::Int32:
    return f(std::int32_t{});
  case StoredType::UInt32:
    return f(std::uint32_t{});
  case StoredType::Int64:
    return f(std::int64_t{});
  case StoredType::UInt64:
    return f(std::uint64_t{});
  case StoredType::Half:
    return f(Half{});
  case StoredType::Float:
    return f(float{});
  default:
    return f(double{});
  }
}

/// A value from bytes that need not be aligned.
template <class T>
T load(const std::byte* at) noexcept
{
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

template <std::size_t bytes>
void swapEach(std::byte* values, std::size_t count) noexcept
{
  for (std::size_t i = 0; i < count; ++i, values += bytes) std::reverse(values, values + bytes);
}

void swapValues(std::byte* values, std::size_t count, std::size_t bytes) noexcept
{
  switch (bytes) {
  case 2:
    return swapEach<2>(values, count);
  case 4:
    return swapEach<4>(values, count);
  case 8:
    return swapEach<8>(values, count);
  default:
    return;
  }
}

template <class S>
S arithmetic(S value) noexcept
{
  return value;
}
float arithmetic(Half value) noexcept { return static_cast<float>(value); }

/// Converts values between types of which the second holds those of the first, or floating-point ones.
template <class S, class T>
void convertValues(const StoredVoxels& stored, const std::byte* src, std::size_t count, T* dst)
{
  constexpr bool possible = !std::is_integral_v<T> || std::is_integral_v<S>;
  const bool scaled = stored.isScaled();
  if constexpr (possible)
    for (std::size_t i = 0; i < count; ++i) {
      const auto value = arithmetic(load<S>(src + i * sizeof(S)));
      if constexpr (std::is_integral_v<T>)
        dst[i] = static_cast<T>(value);
      else if (scaled)
        dst[i] = static_cast<T>(static_cast<double>(value) * stored.slope + stored.intercept);
      else
        dst[i] = static_cast<T>(value);
    }
}

void addAlpha(const std::byte* src, std::size_t count, std::byte* dst) noexcept
{
  for (; count > 0; --count, src += 3, dst += 4) {
    std::memcpy(dst, src, 3);
    dst[3] = std::byte{255};
  }
}

} // namespace

std::size_t sizeOf(StoredType type) noexcept
{
  return visit(type, [](auto zero) { return sizeof zero; });
}

const char* nameOf(StoredType type) noexcept
{
  constexpr const char* names[] = {"int8",  "uint8",  "int16",      "uint16", "int32", "uint32",
                                   "int64", "uint64", "half float", "float",  "double"};
  return names[static_cast<int>(type)];
}

std::optional<McPrimType> smallestTypeFor(const IntegerRange& range) noexcept
{
  constexpr std::int64_t exact = std::int64_t{1} << 53;
  const auto fits = [&](auto zero) {
    using T = decltype(zero);
    return range.min >= std::numeric_limits<T>::min() &&
           range.max <= static_cast<std::uint64_t>(std::numeric_limits<T>::max());
  };
  if (fits(std::uint8_t{})) return McPrimType::UInt8;
  if (fits(std::int16_t{})) return McPrimType::Int16;
  if (fits(std::uint16_t{})) return McPrimType::UInt16;
  if (fits(std::int32_t{})) return McPrimType::Int32;
  if (range.min >= -exact && range.max <= static_cast<std::uint64_t>(exact)) return McPrimType::Double;
  return std::nullopt;
}

std::string StoredVoxels::describe() const
{
  const char* colour = channels == 3 ? "RGB " : channels == 4 ? "RGBA " : "";
  return std::string(colour) + nameOf(type);
}

std::optional<McPrimType> StoredVoxels::typeInMemory() const noexcept
{
  const bool wide = type == StoredType::Int32 || type == StoredType::UInt32 || type == StoredType::Int64 ||
                    type == StoredType::UInt64 || type == StoredType::Double;
  if (isScaled()) return wide ? McPrimType::Double : McPrimType::Float;
  switch (type) {
  case StoredType::UInt8:
    return McPrimType::UInt8;
  case StoredType::Int8:
  case StoredType::Int16:
    return McPrimType::Int16;
  case StoredType::UInt16:
    return McPrimType::UInt16;
  case StoredType::Int32:
    return McPrimType::Int32;
  case StoredType::Half:
  case StoredType::Float:
    return McPrimType::Float;
  case StoredType::Double:
    return McPrimType::Double;
  default:
    return std::nullopt;
  }
}

bool StoredVoxels::isPlain(McPrimType target) const noexcept
{
  return !swapped && !isScaled() && channels != 3 && type != StoredType::Int8 && type != StoredType::Half &&
         typeInMemory() == target;
}

void StoredVoxels::extendRange(void* voxels, std::size_t count, IntegerRange& range) const
{
  auto* bytes = static_cast<std::byte*>(voxels);
  if (swapped) swapValues(bytes, count, sizeOf(type));
  visit(type, [&](auto zero) {
    using S = decltype(zero);
    if constexpr (std::is_integral_v<S>)
      for (std::size_t i = 0; i < count; ++i) {
        const S value = load<S>(bytes + i * sizeof(S));
        if (std::is_signed_v<S> && value < S{})
          range.min = std::min(range.min, static_cast<std::int64_t>(value));
        else
          range.max = std::max(range.max, static_cast<std::uint64_t>(value));
      }
  });
}

void StoredVoxels::convert(void* voxels, std::size_t count, McPrimType target, void* dst) const
{
  auto* bytes = static_cast<std::byte*>(voxels);
  if (channels == 3) return addAlpha(bytes, count, static_cast<std::byte*>(dst));
  count *= static_cast<std::size_t>(channels);
  if (swapped) swapValues(bytes, count, sizeOf(type));
  visit(type, [&](auto stored) {
    mcVisit(target, [&](auto memory) {
      convertValues<decltype(stored)>(*this, bytes, count, static_cast<decltype(memory)*>(dst));
    });
  });
}

} // namespace io
