#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

/// The primitive types that a voxel value can have.
enum class McPrimType : std::uint8_t { UInt8, Int16, Int32, Float, Double, UInt16 };

/// Bytes of one value.
std::size_t mcSizeOf(McPrimType type) noexcept;

/// Name for messages and tables: "uint8", "int16", "int32", "float", "double", "uint16".
const char* mcNameOf(McPrimType type) noexcept;

/// The primitive type that holds a value of the C++ type T.
template <class T>
inline constexpr McPrimType mcPrimTypeOf = [] {
  if constexpr (std::is_same_v<T, std::uint8_t>)
    return McPrimType::UInt8;
  else if constexpr (std::is_same_v<T, std::int16_t>)
    return McPrimType::Int16;
  else if constexpr (std::is_same_v<T, std::int32_t>)
    return McPrimType::Int32;
  else if constexpr (std::is_same_v<T, float>)
    return McPrimType::Float;
  else if constexpr (std::is_same_v<T, double>)
    return McPrimType::Double;
  else {
    static_assert(std::is_same_v<T, std::uint16_t>, "no primitive type of a voxel");
    return McPrimType::UInt16;
  }
}();

/// Calls f with a value of the C++ type of a primitive type, so that a loop is written once for all types:
/// `mcVisit(type, [&](auto zero) { using T = decltype(zero); ... })`.
template <class F>
decltype(auto) mcVisit(McPrimType type, F&& f)
{
  switch (type) {
  case McPrimType::UInt8:
    return f(std::uint8_t{});
  case McPrimType::Int16:
    return f(std::int16_t{});
  case McPrimType::Int32:
    return f(std::int32_t{});
  case McPrimType::Float:
    return f(float{});
  case McPrimType::Double:
    return f(double{});
  default:
    return f(std::uint16_t{});
  }
}
