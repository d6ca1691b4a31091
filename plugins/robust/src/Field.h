#pragma once

#include <cstddef>
#include <vector>

namespace robust {

/// Real values on a grid of width x height, row-major.
struct Field {
  int width = 0;
  int height = 0;
  std::vector<float> values;

  Field() = default;
  Field(int w, int h, float value = 0.0f)
    : width(w), height(h), values(static_cast<std::size_t>(w) * static_cast<std::size_t>(h), value)
  {
  }
  float* row(int y) noexcept
  {
    return values.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
  }
  const float* row(int y) const noexcept
  {
    return values.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
  }
};

/// The field at half the size by the mean of blocks of 2 x 2; an odd last row or column is left out.
Field halved(const Field& field);

/// The mean over a square of 2 radius + 1 pixels, cut off at the border, done twice: a bell of about the
/// standard deviation 0.8 (radius + 0.5).
Field blurred(const Field& field, int radius);

/// The field smoothed by the binomial kernel 1 4 6 4 1: a standard deviation of 1 pixel. The border repeats.
Field smoothed(const Field& field);

/// The field smoothed by 1 2 1, a standard deviation of 0.7 pixels.
Field softened(const Field& field);

} // namespace robust
