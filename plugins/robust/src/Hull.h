#pragma once

#include <vector>

namespace robust {

struct HullPoint {
  double x = 0.0;
  double y = 0.0;
};

/// The convex hull of points, in the order of its circumference, without points on its edges.
std::vector<HullPoint> convexHull(std::vector<HullPoint> points);

/// Area of the pixels within a hull whose corners are pixel centres.
double hullArea(const std::vector<HullPoint>& hull);

/// The corners that are left when none is kept that lies nearer than the tolerance to the edge without it:
/// the least of them first, until all that is left are corners.
std::vector<HullPoint> simplified(std::vector<HullPoint> hull, double tolerance);

} // namespace robust
