#include "phantom/PhantomBodies.h"

#include "mc/McRound.h"
#include "phantom/PhantomRegion.h"

#include <algorithm>
#include <limits>

namespace samples {

namespace {

constexpr double kNear = 12.0; // bodies farther away than this many pixels do not matter

/// Calls visit(random, middle) for every site of a lattice that lies within reach of the area, where middle
/// is a place next to the site, relative to the slice.
template <class Visit>
void forEachSite(std::uint64_t key, double spacing, double reach, int slice, const Disc& area, Visit visit)
{
  const auto before = [spacing](double v) { return mc::floorToInt64(v / spacing) - 1; };
  const auto after = [spacing](double v) { return mc::floorToInt64(v / spacing) + 1; };
  const double z = slice * kPixelsPerSlice;
  const double sideways = reach + area.radius;
  for (auto layer = before(z - reach); layer <= after(z + reach); ++layer)
    for (auto row = before(area.y - sideways); row <= after(area.y + sideways); ++row)
      for (auto column = before(area.x - sideways); column <= after(area.x + sideways); ++column) {
        PhantomRandom random(siteKey(key, column, row, layer));
        const Place middle{(static_cast<double>(column) + random.unit()) * spacing,
                           (static_cast<double>(row) + random.unit()) * spacing,
                           (static_cast<double>(layer) + random.unit()) * spacing - z};
        const bool near = length({middle.x - area.x, middle.y - area.y, 0}) <= sideways;
        if (near && std::fabs(middle.z) <= reach) visit(random, middle);
      }
}

} // namespace

/// How a tree of pieces grows.
struct PhantomBodies::Growth {
  PhantomBody::Kind kind;
  double spacing; ///< pixels between the roots
  double stride;  ///< length of a piece in pixels
  int strides;    ///< pieces from the root to an end
  double thinnest, thickest;
  double branching; ///< probability of a branch at the end of a piece
};

/// The growing end of a tree.
struct PhantomBodies::Tip {
  Place place, direction;
  double radius;
  int strides; ///< still to go
};

PhantomBodies::PhantomBodies(std::uint64_t key, std::uint64_t regionKey, int slice)
  : m_key(key), m_regionKey(regionKey), m_slice(slice)
{
}

void PhantomBodies::gather(const Disc& area)
{
  m_bodies.clear();
  m_gathered.clear();
  gatherCells(area);
  gatherTrees({PhantomBody::Kind::Fibre, 170, 26, 9, 7, 19, 0.1}, area);
  gatherTrees({PhantomBody::Kind::Vessel, 400, 30, 10, 18, 38, 0.1}, area);
}

void PhantomBodies::gatherCells(const Disc& area)
{
  constexpr double spacing = 112, thickest = 78;
  const auto visit = [&](PhantomRandom& random, const Place& middle) {
    const int slice = m_slice + mc::roundHalfUp(middle.z / kPixelsPerSlice);
    if (!random.chance(PhantomRegion(m_regionKey, slice).crowding(middle.x, middle.y))) return;
    Piece piece{};
    const double grown = random.unit();
    piece.radius = mix(30.0, thickest, grown * grown);
    const double elongation = piece.radius * random.within(0.0, 0.7);
    piece.along = randomHeading(random) * elongation;
    piece.start = middle - piece.along * 0.5;
    piece.body = m_bodies.size();
    if (distance(piece, area.x, area.y) > area.radius + kNear) return;
    PhantomBody body;
    body.tone = random.within(105, 158);
    body.nucleusRadius = piece.radius * random.within(0.5, 0.68);
    body.nucleus = middle + randomDirection(random) * (0.2 * piece.radius);
    m_bodies.push_back(body);
    m_gathered.push_back(piece);
  };
  forEachSite(siteKey(m_key, 0, 0, 0), spacing, 1.4 * thickest + kNear, m_slice, area, visit);
}

void PhantomBodies::gatherTrees(const Growth& growth, const Disc& area)
{
  const double reach = growth.stride * growth.strides + growth.thickest + kNear;
  const auto key = siteKey(m_key, 1, static_cast<std::int64_t>(growth.kind), 0);
  forEachSite(key, growth.spacing, reach, m_slice, area,
              [&](PhantomRandom& random, const Place& root) { growTree(growth, random, root, area); });
}

void PhantomBodies::growTree(const Growth& growth, PhantomRandom& random, Place root, const Disc& area)
{
  const std::size_t before = m_gathered.size();
  PhantomBody body;
  body.kind = growth.kind;
  body.tone = random.within(150, 188);
  const bool across = random.chance(0.6);
  const double radius = random.within(growth.thinnest, growth.thickest);
  const Place direction = randomDirection(random);
  std::vector<Tip> tips{{root, direction, radius, growth.strides},
                        {root, direction * -1.0, radius, growth.strides}};
  while (!tips.empty()) {
    Tip tip = tips.back();
    tips.pop_back();
    while (tip.strides > 0) {
      const Tip from = tip;
      step(growth, random, across, tip);
      const Piece piece{from.place, tip.place - from.place, from.radius, tip.radius - from.radius,
                        m_bodies.size()};
      if (distance(piece, area.x, area.y) <= area.radius + kNear) m_gathered.push_back(piece);
      if (tip.strides > 1 && random.chance(growth.branching))
        tips.push_back({tip.place, randomDirection(random), 0.75 * tip.radius, tip.strides});
    }
  }
  if (m_gathered.size() > before) m_bodies.push_back(body);
}

void PhantomBodies::step(const Growth& growth, PhantomRandom& random, bool across, Tip& tip)
{
  Place d = tip.direction + randomDirection(random) * 0.3;
  const double sideways = length({d.x, d.y, 0});
  if (across) {
    // Little sideways drift from slice to slice.
    const double most = 0.18 * std::fmax(std::fabs(d.z), 0.3);
    const double z = d.z < 0 ? -std::fmax(-d.z, 0.3) : std::fmax(d.z, 0.3);
    const double keep = std::fmin(1.0, most / std::fmax(sideways, 1e-3));
    d = {d.x * keep, d.y * keep, z};
  } else {
    d.z = std::fmin(0.15, std::fmax(-0.15, d.z / std::fmax(sideways, 1e-3))) * sideways;
  }
  tip.direction = d * (1.0 / std::fmax(length(d), 1e-3));
  tip.place = tip.place + tip.direction * growth.stride;
  --tip.strides;
  const double radius = tip.radius * random.within(0.85, 1.15);
  tip.radius = std::fmin(growth.thickest, std::fmax(0.6 * growth.thinnest, radius));
  if (tip.strides == 0) tip.radius *= 0.4;
}

double PhantomBodies::distance(const Piece& piece, double x, double y)
{
  const Place to = Place{x, y, 0} - piece.start;
  const double square = dot(piece.along, piece.along);
  const double t = square > 0 ? std::fmin(1.0, std::fmax(0.0, dot(to, piece.along) / square)) : 0.0;
  return length(to - piece.along * t) - piece.radius - piece.radiusChange * t;
}

void PhantomBodies::focus(const Disc& part)
{
  m_focused.clear();
  for (const Piece& piece : m_gathered)
    if (distance(piece, part.x, part.y) <= part.radius + kNear) m_focused.push_back(piece);
}

PhantomBodies::Hit PhantomBodies::find(double x, double y) const
{
  double nearest = kNear, next = kNear;
  std::size_t owner = m_bodies.size();
  for (const Piece& piece : m_focused) {
    const double d = distance(piece, x, y);
    if (piece.body == owner) {
      nearest = std::fmin(nearest, d);
    } else if (d < nearest) {
      next = nearest;
      nearest = d;
      owner = piece.body;
    } else {
      next = std::fmin(next, d);
    }
  }
  if (owner == m_bodies.size()) return {};
  return {&m_bodies[owner], std::fmin(-nearest, 0.5 * (next - nearest))};
}

} // namespace samples
