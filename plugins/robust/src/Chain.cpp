#include "Chain.h"

#include "PairMatcher.h"
#include "zxalign/ZxAlignSlices.h"

#include <algorithm>
#include <map>

namespace robust {
namespace {

// Of a slice without links its place relative to its neighbour counts this much.
constexpr double kPresentWeight = 1e-3;

bool sameTransform(const SliceXForm& a, const SliceXForm& b)
{
  return a.translationX == b.translationX && a.translationY == b.translationY && a.rotation == b.rotation &&
         a.flip == b.flip;
}

} // namespace

Chain& Chain::of(ZxAlignSlices& module)
{
  static std::map<const ZxAlignSlices*, Chain> chains;
  // Modules come and go without a word to plug-ins; a handful is remembered.
  constexpr std::size_t mostModules = 4;
  if (chains.size() >= mostModules && !chains.contains(&module)) chains.clear();
  Chain& chain = chains[&module];
  if (!chain.goesOn(module)) chain.begin(module);
  return chain;
}

bool Chain::goesOn(const ZxAlignSlices& module) const
{
  const auto slices = static_cast<int>(module.getSlices().size());
  return m_lattice == module.getDataLattice() && m_placements.contains(module.getReferenceSlice()) &&
         std::all_of(m_placements.begin(), m_placements.end(), [&](const auto& entry) {
           return entry.first < slices &&
                  sameTransform(transformOf(entry.second), module.getSlice(entry.first));
         });
}

void Chain::begin(const ZxAlignSlices& module)
{
  m_lattice = module.getDataLattice();
  m_fixed = module.getReferenceSlice();
  m_links.clear();
  m_placements = {{m_fixed, placementOf(module.getSlice(m_fixed))}};
}

std::vector<int> Chain::predecessors(int slice, int side, int count) const
{
  std::vector<int> found;
  for (int i = 1; i <= count; ++i)
    if (m_placements.contains(slice - side * i)) found.push_back(slice - side * i);
  return found;
}

void Chain::add(int slice, const RigidMotion& start, const std::vector<Link>& links, const Link& present)
{
  std::erase_if(m_links, [slice](const Link& link) { return link.moved == slice; });
  m_placements[slice] = start;
  m_links.insert(m_links.end(), links.begin(), links.end());
  if (!links.empty()) return;
  m_links.push_back(present);
  m_links.back().weight = kPresentWeight;
}

void Chain::keep(const ZxAlignSlices& module)
{
  for (auto& [slice, placement] : m_placements) placement = placementOf(module.getSlice(slice));
}

} // namespace robust
