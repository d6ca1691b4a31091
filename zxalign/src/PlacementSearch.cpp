// Before the toolkit, whose macros its threads do not bear.
#include "kernels/Parallel.h"

#include "PlacementSearch.h"

#include "AlignmentQuality.h"
#include "mc/McRound.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace {

// Points that are compared between two questions for a stop.
constexpr std::uint64_t pointsPerPiece = std::uint64_t{1} << 22;
// Points that make it worth while to wake another thread.
constexpr std::uint64_t pointsPerTask = std::uint64_t{1} << 15;
constexpr std::size_t largestBatch = 1024;
constexpr std::uint32_t firstRank = std::numeric_limits<std::uint32_t>::max();

// Bands with about this many points; at least one.
int bandsOf(std::uint64_t points, const kernels::SampledReference& reference)
{
  const auto perBand =
      static_cast<std::uint64_t>(reference.gridWidth()) * static_cast<std::uint64_t>(reference.bandRows());
  return static_cast<int>(std::max<std::uint64_t>(1, points / std::max<std::uint64_t>(1, perBand)));
}

/// Calls f(k) for k = 0 ... n - 1, by several threads where the points that each is about are worth it.
template <class F>
void forTasks(std::size_t n, std::uint64_t pointsOfEach, const F& f)
{
  const auto some = [&](int begin, int end) {
    for (int k = begin; k < end; ++k) f(static_cast<std::size_t>(k));
  };
  const std::uint64_t perTask = 1 + pointsPerTask / pointsOfEach;
  if (n <= perTask)
    some(0, static_cast<int>(n));
  else
    kernels::forRows(0, static_cast<int>(n), static_cast<int>(perTask), some);
}

} // namespace

// Qualities are not negative, so their bits rise with them; equal ones are told apart by the rank, which
// falls with the index.
std::uint64_t PlacementSearch::Best::keyOf(float quality, std::uint32_t rank)
{
  return std::uint64_t{std::bit_cast<std::uint32_t>(std::max(quality, 0.0f))} << 32 | rank;
}

PlacementSearch::Best::Best(float least) : m_key(keyOf(least, firstRank)) {}

bool PlacementSearch::Best::isBeatenBy(float quality, std::size_t index) const
{
  const auto rank = firstRank - 1 - static_cast<std::uint32_t>(index);
  return keyOf(quality, rank) > m_key.load(std::memory_order_relaxed);
}

void PlacementSearch::Best::offer(float quality, std::size_t index)
{
  const std::uint64_t key = keyOf(quality, firstRank - 1 - static_cast<std::uint32_t>(index));
  std::uint64_t before = m_key.load(std::memory_order_relaxed);
  while (key > before && !m_key.compare_exchange_weak(before, key, std::memory_order_relaxed)) {
  }
}

float PlacementSearch::Best::quality() const
{
  return std::bit_cast<float>(static_cast<std::uint32_t>(m_key.load(std::memory_order_relaxed) >> 32));
}

std::optional<PlacementSearch::Found> PlacementSearch::Best::found() const
{
  const auto rank = static_cast<std::uint32_t>(m_key.load());
  if (rank == firstRank) return {};
  return Found{firstRank - 1 - rank, quality()};
}

bool PlacementSearch::reserve(int width, int height, int channels)
{
  m_slots.resize(1);
  return m_reference.reserve(width, height, channels) && m_slots.front().comparison.reserve(height);
}

void PlacementSearch::setPair(const ImagePair& pair, const SliceXForm& reference)
{
  m_pair = pair;
  m_reference.sample({pair.reference, pair.width, pair.height}, inverse16(reference, pair.width, pair.height),
                     pair.width, pair.height, pair.channels);
  m_compared.clear();
  m_slots.resize(1); // The first has room for every image.
}

std::uint64_t PlacementSearch::points() const
{
  return std::max<std::uint64_t>(1, static_cast<std::uint64_t>(m_pair.width) *
                                        static_cast<std::uint64_t>(m_pair.height));
}

// Where memory does not suffice for more, placements are compared one by one.
void PlacementSearch::makeSlots(std::size_t wanted)
{
  wanted = std::min(wanted, std::clamp<std::size_t>(pointsPerPiece / points(), 1, largestBatch));
  while (m_slots.size() < wanted) {
    m_slots.emplace_back();
    if (m_slots.back().comparison.reserve(m_pair.height)) continue;
    m_slots.pop_back();
    break;
  }
}

float PlacementSearch::qualityOf(std::uint64_t squares, std::uint64_t count) const
{
  return alignmentQuality({squares, count}, m_pair.channels, points());
}

void PlacementSearch::start(Slot& slot, const SliceXForm& editable, Again again) const
{
  slot.mapping = inverse16(editable, m_pair.width, m_pair.height);
  slot.isCompared = again == Again::No && m_compared.contains(slot.mapping);
  if (!slot.isCompared)
    slot.comparison.start(m_reference, {m_pair.editable, m_pair.width, m_pair.height}, slot.mapping);
}

float PlacementSearch::qualityOf(const SliceXForm& editable)
{
  Slot& slot = m_slots.front();
  start(slot, editable, Again::Yes);
  return qualityOf(slot.comparison.add(0, slot.comparison.bands()), slot.comparison.count());
}

std::optional<PlacementSearch::Found> PlacementSearch::findBest(Placements placements, float least,
                                                                const StopQuery& stop)
{
  Best best(least);
  makeSlots(placements.size());
  for (std::size_t begin = 0; begin < placements.size(); begin += m_slots.size()) {
    const std::size_t n = std::min(m_slots.size(), placements.size() - begin);
    if (stop() || !compareBatch(placements.subspan(begin, n), begin, best, stop)) break;
    for (std::size_t k = 0; k < n; ++k) m_compared.insert(m_slots[k].mapping);
  }
  return best.found();
}

// A batch is one piece of work unless it is a single large placement, which is cut into several.
bool PlacementSearch::compareBatch(Placements placements, std::size_t firstIndex, Best& best,
                                   const StopQuery& stop)
{
  const int bandsPerPiece = bandsOf(pointsPerPiece, m_reference);
  for (int band = 0; band < m_reference.bands(); band += bandsPerPiece) {
    if (band > 0 && stop()) return false;
    const int bandEnd = std::min(band + bandsPerPiece, m_reference.bands());
    forTasks(placements.size(), points(), [&](std::size_t k) {
      if (band == 0) start(m_slots[k], placements[k], Again::No);
      if (!m_slots[k].isCompared) compareBands(m_slots[k].comparison, firstIndex + k, band, bandEnd, best);
    });
  }
  return true;
}

void PlacementSearch::compareBands(kernels::SampledComparison& comparison, std::size_t index, int bandBegin,
                                   int bandEnd, Best& best) const
{
  const std::uint64_t count = comparison.count();
  const std::uint64_t limit = limitOf(count, index, best);
  const std::uint64_t squares = comparison.add(bandBegin, bandEnd, limit);
  if (bandEnd == comparison.bands() && squares < limit) best.offer(qualityOf(squares, count), index);
}

// A sum of squares from which on a placement with so many points is not the best. With the squares its
// quality falls or stays, so that one sum that does not suffice rules out all larger ones.
std::uint64_t PlacementSearch::limitOf(std::uint64_t count, std::size_t index, const Best& best) const
{
  const auto suffices = [&](std::uint64_t squares) {
    return best.isBeatenBy(qualityOf(squares, count), index);
  };
  if (!suffices(0)) return 0;
  // The formula of the quality turned round, a little above the exact limit.
  const double lost = 1.0 - best.quality() * (1.0 - 1e-6) / qualityOf(0, count);
  const double values = static_cast<double>(count) * (m_pair.channels == 4 ? 3.0 : 1.0) * 65025.0;
  std::uint64_t limit = 1 + mc::clampToInt<std::uint64_t>(values * lost * lost);
  while (suffices(limit)) limit += limit;
  return limit;
}
