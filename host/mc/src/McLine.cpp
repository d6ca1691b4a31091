#include "mc/McLine.h"

#include <cmath>
#include <limits>

namespace {

/// Where a line enters or leaves: its parameter, and which coordinate of the point is known exactly.
struct End {
  double t;
  double x, y; // NaN where not known
};

constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

double at(double known, double from, double to, double t)
{
  return std::isnan(known) ? from + t * (to - from) : known;
}

double clamped(double v, double min, double max) { return v < min ? min : v > max ? max : v; }

/// Narrows entry and exit to min <= coordinate <= max for one axis. False when nothing is left.
bool narrow(double from, double step, double min, double max, bool alongX, End& entry, End& exit)
{
  if (step == 0.0) return from >= min && from <= max;
  const double near = step > 0.0 ? min : max;
  const double far = step > 0.0 ? max : min;
  const double tNear = (near - from) / step;
  const double tFar = (far - from) / step;
  if (tNear > entry.t) entry = {tNear, alongX ? near : unknown, alongX ? unknown : near};
  if (tFar < exit.t) exit = {tFar, alongX ? far : unknown, alongX ? unknown : far};
  return entry.t <= exit.t;
}

bool clip(const McLine& line, double xMin, double yMin, double xMax, double yMax, McLine& part)
{
  constexpr double infinity = std::numeric_limits<double>::infinity();
  End entry{-infinity, unknown, unknown};
  End exit{infinity, unknown, unknown};
  if (!narrow(line.x1, line.x2 - line.x1, xMin, xMax, true, entry, exit)) return false;
  if (!narrow(line.y1, line.y2 - line.y1, yMin, yMax, false, entry, exit)) return false;
  if (!std::isfinite(entry.t) || !std::isfinite(exit.t)) return false;
  // Rounding may push the coordinate that was not cut out of the rectangle again.
  part.x1 = clamped(at(entry.x, line.x1, line.x2, entry.t), xMin, xMax);
  part.y1 = clamped(at(entry.y, line.y1, line.y2, entry.t), yMin, yMax);
  part.x2 = clamped(at(exit.x, line.x1, line.x2, exit.t), xMin, xMax);
  part.y2 = clamped(at(exit.y, line.y1, line.y2, exit.t), yMin, yMax);
  // Not a number where the line is not finite.
  return std::isfinite(part.x1) && std::isfinite(part.y1) && std::isfinite(part.x2) && std::isfinite(part.y2);
}

} // namespace

bool McLine::intersect(double xMin, double yMin, double xMax, double yMax, double tolerance,
                       McLine& part) const
{
  return clip(*this, xMin, yMin, xMax, yMax, part) ||
         clip(*this, xMin - tolerance, yMin - tolerance, xMax + tolerance, yMax + tolerance, part);
}

double McLine::length() const { return std::sqrt((x2 - x1) * (x2 - x1) + (y2 - y1) * (y2 - y1)); }
