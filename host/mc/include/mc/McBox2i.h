#pragma once

/// A range of integer coordinates in two dimensions, all limits included. All -1 means that there is nothing
/// in it.
struct McBox2i {
  int xMin = -1;
  int yMin = -1;
  int xMax = -1;
  int yMax = -1;

  bool hasX() const noexcept { return xMin != -1; }
  bool hasY() const noexcept { return yMin != -1; }
  friend bool operator==(const McBox2i&, const McBox2i&) = default;
};
