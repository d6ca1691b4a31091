#pragma once

#include <cstddef>
#include <cstdint>

namespace kernels {

/// Maps n values to display grey levels: (v - min) * scale in float, to the nearest by adding 0.5 and
/// truncating, clamped to 0 ... 255; NaN gives 0.
///
/// Defined for std::uint8_t, std::int16_t, std::int32_t, float, double and std::uint16_t. Values become float
/// first, which rounds large 32-bit integers and doubles.
template <class T>
void mapLinear(const T* src, std::size_t n, float min, float scale, std::uint8_t* dst);

/// Maps n pixels of four bytes R, G, B, A to grey levels: 0.3 R + 0.59 G + 0.11 B in double, narrowed to
/// float, then as mapLinear.
void mapColour(const std::uint8_t* rgba, std::size_t n, float min, float scale, std::uint8_t* grey);

/// Sets to 0 every pixel whose bit is clear: bit k of the field (byte k / 8, lowest bit first) belongs to
/// pixel k. grey holds n bytes; rgba holds 4 * n bytes or is null.
void applyMask(const std::uint8_t* bits, std::size_t n, std::uint8_t* grey, std::uint8_t* rgba);

} // namespace kernels
