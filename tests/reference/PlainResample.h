#pragma once

#include "kernels/Resample.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <type_traits>

/// The plain loop with a test of every pixel that kernels::resampleRows must equal.
namespace reference {

template <class T>
T stored(float v)
{
  if constexpr (std::is_floating_point_v<T>) {
    return static_cast<T>(v);
  } else {
    const double r = std::nearbyint(static_cast<double>(v));
    if (std::isnan(r)) return 0;
    if (r > std::numeric_limits<T>::max()) return std::numeric_limits<T>::max();
    if (r < std::numeric_limits<T>::min()) return std::numeric_limits<T>::min();
    return static_cast<T>(r);
  }
}

template <class T>
float sampled(const kernels::ResampleFrame& f, const T* source, int channels, kernels::Interpolation mode,
              double sx, double sy, int c, float background)
{
  const auto p = [&](double x, double y) {
    const auto index =
        static_cast<std::size_t>(y) * static_cast<std::size_t>(f.width) + static_cast<std::size_t>(x);
    return static_cast<float>(
        source[index * static_cast<std::size_t>(channels) + static_cast<std::size_t>(c)]);
  };
  if (mode == kernels::Interpolation::Nearest) {
    const double ix = std::floor(sx + 0.5), iy = std::floor(sy + 0.5);
    return ix >= 0 && ix < f.width && iy >= 0 && iy < f.height ? p(ix, iy) : background;
  }
  const double ix = std::floor(sx), iy = std::floor(sy);
  if (!(ix >= 0 && ix < f.width - 1 && iy >= 0 && iy < f.height - 1)) return background;
  const float fx = static_cast<float>(sx - ix), fy = static_cast<float>(sy - iy);
  return (1 - fx) * (1 - fy) * p(ix, iy) + fx * (1 - fy) * p(ix + 1, iy) + (1 - fx) * fy * p(ix, iy + 1) +
         fx * fy * p(ix + 1, iy + 1);
}

template <class T>
void plainResample(const kernels::ResampleFrame& f, const T* source, int channels,
                   kernels::Interpolation mode, const float* background, T* output)
{
  const kernels::Affine& m = f.inverse;
  for (int y = -f.top; y < f.outHeight - f.top; ++y)
    for (int x = -f.left; x < f.outWidth - f.left; ++x) {
      const double sx = m.m11 * x + m.m21 * y + m.dx;
      const double sy = m.m12 * x + m.m22 * y + m.dy;
      for (int c = 0; c < channels; ++c)
        *output++ = stored<T>(sampled(f, source, channels, mode, sx, sy, c, background[c]));
    }
}

} // namespace reference
