#pragma once

#include "mc/McRound.h"

#include <type_traits>

namespace kernels {

/// What is stored of a resampled value: integers rounded to the nearest, ties to even, and clamped; floats as
/// they are.
template <class T>
T storedAs(float v)
{
  if constexpr (std::is_floating_point_v<T>)
    return static_cast<T>(v);
  else
    return mc::roundHalfEven<T>(v);
}

} // namespace kernels
