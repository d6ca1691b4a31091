#include "MappingSet.h"

#include <algorithm>
#include <utility>

namespace {

bool areEqual(const kernels::Affine16& a, const kernels::Affine16& b)
{
  return a.m11 == b.m11 && a.m12 == b.m12 && a.m21 == b.m21 && a.m22 == b.m22 && a.dx == b.dx && a.dy == b.dy;
}

std::size_t hashOf(const kernels::Affine16& m)
{
  std::uint64_t hash = 0;
  for (const std::int64_t v : {m.m11, m.m12, m.m21, m.m22, m.dx, m.dy}) {
    hash = (hash ^ static_cast<std::uint64_t>(v)) * 0x9e3779b97f4a7c15u;
    hash ^= hash >> 29;
  }
  return hash;
}

} // namespace

void MappingSet::clear()
{
  std::fill(m_slots.begin(), m_slots.end(), Slot{});
  m_used = 0;
}

std::size_t MappingSet::find(const kernels::Affine16& mapping) const
{
  const std::size_t mask = m_slots.size() - 1;
  std::size_t place = hashOf(mapping) & mask;
  while (m_slots[place].used && !areEqual(m_slots[place].mapping, mapping)) place = (place + 1) & mask;
  return place;
}

bool MappingSet::contains(const kernels::Affine16& mapping) const { return m_slots[find(mapping)].used; }

void MappingSet::insert(const kernels::Affine16& mapping)
{
  if (2 * (m_used + 1) > m_slots.size()) grow();
  Slot& slot = m_slots[find(mapping)];
  if (!slot.used) ++m_used;
  slot = {true, mapping};
}

void MappingSet::grow()
{
  const std::vector<Slot> before = std::exchange(m_slots, std::vector<Slot>(2 * m_slots.size()));
  for (const Slot& slot : before)
    if (slot.used) m_slots[find(slot.mapping)] = slot;
}
