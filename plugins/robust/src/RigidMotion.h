#pragma once

namespace robust {

/// A point of a slice, or a displacement, counted from the slice's centre in pixels of the slice.
struct Point {
  double x = 0.0;
  double y = 0.0;
};

/// How one slice lies on another: a point v of the moved slice lies at u = R F v + d of the reference, both
/// counted from the slice centres in pixels, x to the right, y downwards. F negates x where mirrored is set,
/// and R v = (v.x cos a + v.y sin a, -v.x sin a + v.y cos a): the sense of the slice transforms.
struct RigidMotion {
  double degrees = 0.0; ///< a
  Point shift;          ///< d
  bool mirrored = false;

  Point map(Point v) const;
  /// Where a point of the reference lies on the moved slice.
  Point mapInverse(Point u) const;

  /// first, then this one.
  RigidMotion after(const RigidMotion& first) const;
  RigidMotion inverse() const;
};

/// The angle above -180 and up to 180 degrees.
double withinCircle(double degrees);

/// Mean distance in pixels of the places to which two motions put the corners of a slice.
double cornerDistance(const RigidMotion& a, const RigidMotion& b, int width, int height);

} // namespace robust
