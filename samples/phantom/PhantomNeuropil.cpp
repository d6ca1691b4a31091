#include "phantom/PhantomNeuropil.h"

#include "mc/McRound.h"

#include <algorithm>
#include <limits>

namespace samples {

namespace {

constexpr double kSpacing = 30.0;     // pixels between sites
constexpr double kLayer = 11.0;       // slices between sites
constexpr double kLongestHalf = 26.0; // slices from the middle of a process to its end
constexpr double kReach = 90.0;       // no process is wider or drifts farther than this
constexpr double kBuried = 1000.0;    // how far the weight falls below 0 at the ends: neighbours cover it
constexpr double kMembrane = 2.3;     // half width in pixels
constexpr double kMembraneGrey = 55.0;
constexpr double kWallReach = 600.0; // no membrane is near where the powers differ by more than this

double square(double v) { return v * v; }

} // namespace

void PhantomNeuropil::gather(const Disc& area)
{
  m_gathered.clear();
  const double reach = area.radius + kReach;
  const auto first = [](double v, double step) { return mc::floorToInt64(v / step) - 1; };
  const auto last = [](double v, double step) { return mc::floorToInt64(v / step) + 1; };
  const auto lastLayer = last(m_slice + kLongestHalf, kLayer);
  for (auto layer = first(m_slice - kLongestHalf, kLayer); layer <= lastLayer; ++layer)
    for (auto row = first(area.y - reach, kSpacing); row <= last(area.y + reach, kSpacing); ++row)
      for (auto column = first(area.x - reach, kSpacing); column <= last(area.x + reach, kSpacing);
           ++column) {
        PhantomRandom random(siteKey(m_key, column, row, layer));
        const double middle = (static_cast<double>(layer) + random.unit()) * kLayer;
        const double x = (static_cast<double>(column) + random.unit()) * kSpacing;
        const double y = (static_cast<double>(row) + random.unit()) * kSpacing;
        addProcess(random, m_slice - middle, x, y, area);
      }
}

void PhantomNeuropil::addProcess(PhantomRandom& random, double depth, double x, double y, const Disc& area)
{
  const double half = random.within(12.0, kLongestHalf);
  const double along = depth / half;
  if (std::fabs(along) >= 1.0) return;
  const double thickness = square(random.within(0.35, 1.0));
  const double weight = square(38.0 * thickness);
  const double speed = 0.7 * random.unit();
  const double bend = random.within(-0.015, 0.015);
  // One statement per random number: the order of the operands of an operator is up to the compiler.
  const Place curved = randomHeading(random);
  const Place straight = randomHeading(random);
  const Place drift = straight * (speed * depth) + curved * (bend * square(depth));
  Process process{x + drift.x, y + drift.y, weight - (weight + kBuried) * square(along), 0.0, false, {}};
  if (length({process.x - area.x, process.y - area.y, 0}) > area.radius + kReach) return;
  process.tone = random.chance(0.12) ? random.within(100, 122) : random.within(134, 180);
  process.hasVesicles = random.chance(0.3);
  if (random.chance(0.5)) process.organelle = makeOrganelle(random, depth, process.x, process.y);
  m_gathered.push_back(process);
}

PhantomNeuropil::Organelle PhantomNeuropil::makeOrganelle(PhantomRandom& random, double depth, double x,
                                                          double y)
{
  const double half = random.within(2.5, 6.0);
  const double along = (depth - random.within(-6, 6)) / half;
  Organelle organelle;
  const double offCentre = random.within(0, 9);
  const Place offset = randomHeading(random) * offCentre;
  const double size = std::sqrt(std::fmax(0.0, 1.0 - along * along));
  organelle.x = x + offset.x;
  organelle.y = y + offset.y;
  organelle.width = size * random.within(4.5, 9.0);
  organelle.length = organelle.width * random.within(1.0, 2.2);
  organelle.heading = randomHeading(random);
  return organelle;
}

void PhantomNeuropil::focus(const Disc& part)
{
  // No place of the part has a larger power than this: who is above it everywhere owns nothing here.
  double most = std::numeric_limits<double>::max();
  for (const Process& p : m_gathered)
    most = std::fmin(most, square(length({p.x - part.x, p.y - part.y, 0}) + part.radius) - p.weight);
  m_focused.clear();
  for (const Process& p : m_gathered) {
    const double nearest = std::fmax(0.0, length({p.x - part.x, p.y - part.y, 0}) - part.radius);
    if (square(nearest) - p.weight <= most + kWallReach) m_focused.push_back(p);
  }
}

double PhantomNeuropil::grey(double x, double y) const
{
  const Process* owner = nullptr;
  double least = std::numeric_limits<double>::max();
  for (const Process& p : m_focused) {
    const double power = square(x - p.x) + square(y - p.y) - p.weight;
    if (power < least) least = power, owner = &p;
  }
  if (!owner) return kMembraneGrey;
  const double plasm = owner->tone - (owner->hasVesicles ? vesicleShade(x, y) : 0.0);
  const double inside = organelleGrey(owner->organelle, x, y, plasm);
  return mix(inside, kMembraneGrey, ridge(distanceToWall(*owner, least, x, y), kMembrane));
}

double PhantomNeuropil::distanceToWall(const Process& owner, double power, double x, double y) const
{
  double nearest = square(2.0 * kMembrane);
  for (const Process& p : m_focused) {
    const double apart = square(p.x - owner.x) + square(p.y - owner.y);
    const double excess = square(x - p.x) + square(y - p.y) - p.weight - power;
    // The wall is a straight line at (difference of the powers) / (2 * distance of the middles).
    if (&p != &owner && square(excess) < nearest * 4.0 * apart) nearest = square(excess) / (4.0 * apart);
  }
  return std::sqrt(nearest);
}

double PhantomNeuropil::vesicleShade(double x, double y) const
{
  // One vesicle at most per square, well inside it. No vesicle is larger than a slice is thick, so each
  // slice has its own.
  constexpr double side = 10.0;
  const double column = std::floor(x / side), row = std::floor(y / side);
  PhantomRandom random(siteKey(m_key + 1, mc::floorToInt64(column), mc::floorToInt64(row), m_slice));
  if (random.chance(0.35)) return 0.0;
  const double radius = random.within(1.8, 3.0);
  const double centreX = (column + random.within(0.4, 0.6)) * side;
  const double centreY = (row + random.within(0.4, 0.6)) * side;
  return 38.0 * ridge(length({x - centreX, y - centreY, 0}) - radius, 1.4);
}

double PhantomNeuropil::organelleGrey(const Organelle& organelle, double x, double y, double around)
{
  if (organelle.width <= 1.0) return around;
  const Place d{x - organelle.x, y - organelle.y, 0};
  const double along = d.x * organelle.heading.x + d.y * organelle.heading.y;
  const double across = d.y * organelle.heading.x - d.x * organelle.heading.y;
  const double relative = std::sqrt(square(along / organelle.length) + square(across / organelle.width));
  const double outside = (relative - 1.0) * organelle.width;
  if (outside > 3.0) return around;
  // Folds of the inner membrane: stripes across the organelle.
  const double phase = along / 4.5;
  const double fold = std::fabs(phase - std::floor(phase) - 0.5) * 2.0;
  const double inside = mix(mix(78.0, 112.0, fold), 62.0, ridge(outside, 1.8));
  return mix(inside, around, edge(outside, 1.2));
}

} // namespace samples
