#include "kernels/GreyMapping.h"

#include "mc/McRound.h"

#include <cstring>

namespace kernels {

namespace {

std::uint8_t greyOf(float v, float min, float scale) { return mc::truncToByte((v - min) * scale + 0.5f); }

} // namespace

template <class T>
void mapLinear(const T* src, std::size_t n, float min, float scale, std::uint8_t* dst)
{
  for (std::size_t i = 0; i < n; ++i) dst[i] = greyOf(static_cast<float>(src[i]), min, scale);
}

template void mapLinear(const std::uint8_t*, std::size_t, float, float, std::uint8_t*);
template void mapLinear(const std::int16_t*, std::size_t, float, float, std::uint8_t*);
template void mapLinear(const std::int32_t*, std::size_t, float, float, std::uint8_t*);
template void mapLinear(const float*, std::size_t, float, float, std::uint8_t*);
template void mapLinear(const double*, std::size_t, float, float, std::uint8_t*);
template void mapLinear(const std::uint16_t*, std::size_t, float, float, std::uint8_t*);

void mapColour(const std::uint8_t* rgba, std::size_t n, float min, float scale, std::uint8_t* grey)
{
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint8_t* const p = rgba + 4 * i;
    grey[i] = greyOf(static_cast<float>(0.3 * p[0] + 0.59 * p[1] + 0.11 * p[2]), min, scale);
  }
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
