#include "phantom/PhantomNoise.h"

#include "mc/McRound.h"
#include "phantom/PhantomGeometry.h"
#include "phantom/PhantomRandom.h"

namespace samples {

namespace {

double blend(double t) { return t * t * (3.0 - 2.0 * t); }

} // namespace

PhantomNoise::PhantomNoise(std::uint64_t key, double spacing, double depth, int slice) : m_key(key)
{
  PhantomRandom random(key);
  const Place heading = randomHeading(random) * (1.0 / spacing);
  m_stepX = heading.x;
  m_stepY = heading.y;
  // Each noise has its layers at depths of its own: no slice is a layer of all of them.
  const double level = slice / depth + random.unit();
  m_layer = mc::floorToInt64(level);
  m_layerShare = blend(level - static_cast<double>(m_layer));
  enter(0, 0);
}

double PhantomNoise::at(double x, double y)
{
  const double u = x * m_stepX - y * m_stepY, v = x * m_stepY + y * m_stepX;
  double tu = u - static_cast<double>(m_column), tv = v - static_cast<double>(m_row);
  if (!(tu >= 0.0 && tu < 1.0 && tv >= 0.0 && tv < 1.0)) {
    enter(mc::floorToInt64(u), mc::floorToInt64(v));
    tu = u - static_cast<double>(m_column);
    tv = v - static_cast<double>(m_row);
  }
  const double share = blend(tu);
  return mix(mix(m_corners[0], m_corners[1], share), mix(m_corners[2], m_corners[3], share), blend(tv));
}

void PhantomNoise::enter(std::int64_t column, std::int64_t row)
{
  m_column = column;
  m_row = row;
  m_corners = {site(column, row), site(column + 1, row), site(column, row + 1), site(column + 1, row + 1)};
}

double PhantomNoise::site(std::int64_t column, std::int64_t row) const
{
  const double above = toUnit(siteKey(m_key, column, row, m_layer));
  const double below = toUnit(siteKey(m_key, column, row, m_layer + 1));
  return 2.0 * mix(above, below, m_layerShare) - 1.0;
}

} // namespace samples
