#include "phantom/PhantomSection.h"

#include "phantom/PhantomRandom.h"

namespace samples {

namespace {

// Pixels that a place is displaced by at most in x and in y, on the larger and on the smaller scale.
constexpr double kBend = 8.0;
constexpr double kWave = 2.5;
constexpr double kMembrane = 2.6; // half width in pixels
constexpr double kMembraneGrey = 55.0;
constexpr double kVesselWall = 7.0; // pixels

/// Every part of the tissue has a key of its own.
enum Part : std::int64_t { Region, Neuropil, Bodies, BendX, BendY, WaveX, WaveY, Tint, Blotch, Grain };

std::uint64_t partKey(std::uint64_t seed, Part part) { return siteKey(scramble(seed), part, 0, 0); }

} // namespace

PhantomSection::PhantomSection(std::uint64_t seed, int slice)
  : m_region(partKey(seed, Region), slice), m_neuropil(partKey(seed, Neuropil), slice),
    m_bodies(partKey(seed, Bodies), partKey(seed, Region), slice),
    m_bendX(partKey(seed, BendX), 42, 18, slice), m_bendY(partKey(seed, BendY), 42, 18, slice),
    m_waveX(partKey(seed, WaveX), 15, 8, slice), m_waveY(partKey(seed, WaveY), 15, 8, slice),
    m_tint(partKey(seed, Tint), 130, 30, slice), m_blotch(partKey(seed, Blotch), 8, 4, slice),
    m_grain(partKey(seed, Grain), 3, 2, slice)
{
}

void PhantomSection::gather(const Disc& area)
{
  const Disc wider{area.x, area.y, area.radius + 1.5 * (kBend + kWave)};
  m_neuropil.gather(wider);
  m_bodies.gather(wider);
}

void PhantomSection::focus(const Disc& part)
{
  const Disc wider{part.x, part.y, part.radius + 1.5 * (kBend + kWave)};
  m_neuropil.focus(wider);
  m_bodies.focus(wider);
}

double PhantomSection::grey(double x, double y)
{
  const double bentX = x + kBend * m_bendX.at(x, y) + kWave * m_waveX.at(x, y);
  const double bentY = y + kBend * m_bendY.at(x, y) + kWave * m_waveY.at(x, y);
  const double grain = m_grain.at(x, y), blotch = m_blotch.at(x, y);
  const PhantomBodies::Hit hit = m_bodies.find(bentX, bentY);
  double value = 0.0;
  if (!hit.body || hit.depth < kMembrane)
    value = m_neuropil.grey(bentX, bentY) + 14.0 * blotch - 36.0 * m_region.rind(bentX, bentY);
  if (hit.body)
    value = mix(value, bodyGrey(*hit.body, hit.depth, bentX, bentY, grain, blotch), edge(hit.depth, 0.9));
  if (hit.body) value = mix(value, kMembraneGrey, ridge(hit.depth, kMembrane));
  return value + 16.0 * grain + 24.0 * m_tint.at(x, y);
}

double PhantomSection::bodyGrey(const PhantomBody& body, double depth, double x, double y, double grain,
                                double blotch) const
{
  switch (body.kind) {
  case PhantomBody::Kind::Cell:
    return cellGrey(body, depth, x, y, grain, blotch);
  case PhantomBody::Kind::Vessel:
    return mix(92.0 + 10.0 * blotch, 200.0 - 12.0 * grain, edge(depth - kVesselWall, 1.5));
  case PhantomBody::Kind::Fibre:
    break;
  }
  return body.tone + 8.0 * blotch;
}

double PhantomSection::cellGrey(const PhantomBody& cell, double cellDepth, double x, double y, double grain,
                                double blotch)
{
  const double cytoplasm = cell.tone + 16.0 * blotch + 8.0 * grain;
  // The nucleus keeps off the membrane, also where a neighbour presses on the cell.
  const double depth = std::fmin(cell.nucleusRadius - length(Place{x, y, 0} - cell.nucleus), cellDepth - 7.0);
  if (depth < -kMembrane) return cytoplasm;
  // Chromatin: dark clumps, thickest along the envelope; the nucleolus sits in the middle.
  const double clumps = edge(blotch + 0.5 * ridge(depth, 9.0) - 0.35, 0.2);
  const double nucleolus = edge(depth - 0.72 * cell.nucleusRadius, 1.5);
  const double inside = mix(mix(172.0, 112.0, clumps), 72.0, nucleolus);
  return mix(mix(cytoplasm, inside, edge(depth, 0.9)), 70.0, ridge(depth, kMembrane));
}

} // namespace samples
