#pragma once

/// A straight line in the plane through two points, as a function of a parameter: (x1, y1) at 0 and (x2, y2)
/// at 1.
struct McLine {
  double x1 = 0.0, y1 = 0.0, x2 = 0.0, y2 = 0.0;

  /// The part of the whole line, also beyond its two points, inside of the rectangle
  /// [xMin, xMax] x [yMin, yMax], in the direction from the first point to the second. An end on a side of
  /// the rectangle has exactly the coordinate of that side. False when the line misses the rectangle, has no
  /// direction or is not finite.
  ///
  /// It is cut with the rectangle itself first; only when it misses that, with one larger by the tolerance on
  /// every side, so that a line along a side is not lost to rounding. The part may lie outside by the
  /// tolerance then.
  bool intersect(double xMin, double yMin, double xMax, double yMax, double tolerance, McLine& part) const;
  double length() const;
};
