#include "Hull.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace robust {
namespace {

double cross(const HullPoint& o, const HullPoint& a, const HullPoint& b)
{
  return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
}

/// How far b lies from the line through its neighbours.
double height(const HullPoint& a, const HullPoint& b, const HullPoint& c)
{
  return std::abs(cross(a, b, c)) / std::max(1e-9, std::hypot(c.x - a.x, c.y - a.y));
}

} // namespace

std::vector<HullPoint> convexHull(std::vector<HullPoint> points)
{
  std::sort(points.begin(), points.end(),
            [](const HullPoint& a, const HullPoint& b) { return a.x < b.x || (a.x == b.x && a.y < b.y); });
  if (points.size() < 3) return points;
  std::vector<HullPoint> hull;
  const auto extend = [&hull](const HullPoint& p, std::size_t least) {
    while (hull.size() >= least && cross(hull[hull.size() - 2], hull.back(), p) <= 0.0) hull.pop_back();
    hull.push_back(p);
  };
  for (const HullPoint& p : points) extend(p, 2);
  const std::size_t upper = hull.size() + 1;
  for (auto p = points.rbegin() + 1; p != points.rend(); ++p) extend(*p, upper);
  hull.pop_back();
  return hull;
}

double hullArea(const std::vector<HullPoint>& hull)
{
  double twice = 0.0, rim = 0.0;
  for (std::size_t i = 0; i < hull.size(); ++i) {
    const HullPoint &a = hull[i], &b = hull[(i + 1) % hull.size()];
    twice += a.x * b.y - b.x * a.y;
    rim += std::max(std::abs(a.x - b.x), std::abs(a.y - b.y));
  }
  // Pixel centres on the rim: half a pixel is outside the polygon.
  return std::abs(twice) / 2.0 + rim / 2.0 + 1.0;
}

std::vector<HullPoint> simplified(std::vector<HullPoint> hull, double tolerance)
{
  while (hull.size() > 3) {
    const std::size_t n = hull.size();
    std::size_t least = 0;
    double lowest = tolerance;
    for (std::size_t i = 0; i < n; ++i) {
      const double h = height(hull[(i + n - 1) % n], hull[i], hull[(i + 1) % n]);
      if (h < lowest) {
        lowest = h;
        least = i + 1;
      }
    }
    if (least == 0) break;
    hull.erase(hull.begin() + static_cast<std::ptrdiff_t>(least - 1));
  }
  return hull;
}

} // namespace robust
