#pragma once

/// A point or vector of the plane in single precision; x to the right, y downwards.
struct McVec2f {
  float x = 0.0f;
  float y = 0.0f;

  friend constexpr McVec2f operator+(McVec2f a, McVec2f b) noexcept { return {a.x + b.x, a.y + b.y}; }
  friend constexpr McVec2f operator-(McVec2f a, McVec2f b) noexcept { return {a.x - b.x, a.y - b.y}; }
  friend constexpr bool operator==(McVec2f a, McVec2f b) noexcept { return a.x == b.x && a.y == b.y; }
};
