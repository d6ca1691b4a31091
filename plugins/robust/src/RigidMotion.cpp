#include "RigidMotion.h"

#include "mc/McMath.h"

#include <cmath>
#include <initializer_list>

namespace robust {

Point RigidMotion::map(Point v) const
{
  double sine = 0.0, cosine = 1.0;
  mc::sinCosDegrees(degrees, sine, cosine);
  const double x = mirrored ? -v.x : v.x;
  return {x * cosine + v.y * sine + shift.x, -x * sine + v.y * cosine + shift.y};
}

Point RigidMotion::mapInverse(Point u) const
{
  double sine = 0.0, cosine = 1.0;
  mc::sinCosDegrees(degrees, sine, cosine);
  const Point w{u.x - shift.x, u.y - shift.y};
  const double x = w.x * cosine - w.y * sine;
  return {mirrored ? -x : x, w.x * sine + w.y * cosine};
}

RigidMotion RigidMotion::after(const RigidMotion& first) const
{
  // A mirror turns the sense of what comes before it.
  const double turned = mirrored ? degrees - first.degrees : degrees + first.degrees;
  return {withinCircle(turned), map(first.shift), mirrored != first.mirrored};
}

RigidMotion RigidMotion::inverse() const
{
  RigidMotion back{withinCircle(mirrored ? degrees : -degrees), {}, mirrored};
  back.shift = mapInverse({0.0, 0.0});
  return back;
}

double withinCircle(double degrees) { return degrees - 360.0 * std::ceil((degrees - 180.0) / 360.0); }

double cornerDistance(const RigidMotion& a, const RigidMotion& b, int width, int height)
{
  const double right = width - 1 - width / 2, bottom = height - 1 - height / 2;
  const double left = -(width / 2), top = -(height / 2);
  double sum = 0.0;
  for (const Point corner :
       {Point{left, top}, Point{right, top}, Point{left, bottom}, Point{right, bottom}}) {
    const Point p = a.map(corner), q = b.map(corner);
    sum += std::hypot(p.x - q.x, p.y - q.y);
  }
  return sum / 4.0;
}

} // namespace robust
