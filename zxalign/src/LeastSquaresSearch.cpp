#include "LeastSquaresSearch.h"

#include "kernels/BlockAverage.h"

#include <algorithm>
#include <cstdlib>

namespace {

// Edge length up to which images are not reduced further.
constexpr int smallestImage = 99;
constexpr float coarseRotationStep = 10.0f; // degrees, of the first level whatever its reduction
constexpr int gridReach = 24;               // first level: shifts from -24 to 22 steps, every second one
constexpr int maxHalvedWidth = 1024;        // wider slices are precise enough without halved steps

void scaleTranslation(SliceXForm& xform, float factor)
{
  xform.translationX *= factor;
  xform.translationY *= factor;
}

} // namespace

void LeastSquaresSearch::FreeBuffer::operator()(unsigned char* p) const noexcept { std::free(p); }

LeastSquaresSearch::LeastSquaresSearch(const ImagePair& pair, const ZxAlignSettings& settings,
                                       const SliceXForm& reference, const SliceXForm& editable)
  : m_pair(pair), m_settings(settings), m_reference(reference), m_editable(editable)
{
  chooseReduction();
}

void LeastSquaresSearch::chooseReduction()
{
  const int levels = m_settings.resamplingLevels;
  if (levels <= 0 || m_pair.width <= smallestImage) return;
  int used = 0;
  while (m_pair.height / m_factor > smallestImage) {
    m_factor *= 2;
    ++used;
    if (used >= levels || m_pair.width / m_factor <= smallestImage) break;
  }
}

std::size_t LeastSquaresSearch::allocate()
{
  const std::size_t bytes = static_cast<std::size_t>(m_pair.width / 2) *
                            static_cast<std::size_t>(m_pair.height / 2) *
                            static_cast<std::size_t>(m_pair.channels);
  for (Buffer* buffer : {&m_referenceScratch, &m_editableScratch}) {
    buffer->reset(static_cast<unsigned char*>(std::malloc(std::max<std::size_t>(bytes, 1))));
    if (!*buffer) return std::max<std::size_t>(bytes, 1);
  }
  const bool sampled = m_placements.reserve(m_pair.width, m_pair.height, m_pair.channels);
  return sampled ? 0 : 4 * std::max<std::size_t>(bytes, 1);
}

void LeastSquaresSearch::run(const PlacementSearch::StopQuery& stop)
{
  m_stop = stop;
  for (SliceXForm* x : {&m_reference, &m_editable}) scaleTranslation(*x, 1.0f / static_cast<float>(m_factor));
  m_translationStep = m_settings.translationStep * static_cast<float>(m_factor);
  m_rotationStep = coarseRotationStep;
  search();
  // A search that ends on a coarse level is still in that level's pixels.
  scaleTranslation(m_editable, static_cast<float>(m_factor));
}

void LeastSquaresSearch::search()
{
  for (int i = 0; i < m_settings.maxIterations; ++i)
    if (stopRequested() || iterate() == Next::Leave || m_stopped) return;
}

LeastSquaresSearch::Next LeastSquaresSearch::iterate()
{
  if (m_reduceAgain) {
    reduceImages();
    m_best = m_placements.qualityOf(m_editable);
    m_reduceAgain = false;
  }
  if (m_momentum && tryMomentum()) return Next::Continue;
  m_moves.clear();
  m_candidates.clear();
  if (m_halvings < 2) addTranslations();
  if (m_settings.rotationAllowed) addRotations();
  return tryCandidates();
}

void LeastSquaresSearch::reduceImages()
{
  ImagePair reduced{m_pair.reference, m_pair.editable, m_pair.width / m_factor, m_pair.height / m_factor,
                    m_pair.channels};
  if (m_factor >= 2) {
    kernels::blockAverage(m_pair.reference, m_pair.width, m_pair.height, m_pair.channels, m_factor,
                          m_referenceScratch.get());
    kernels::blockAverage(m_pair.editable, m_pair.width, m_pair.height, m_pair.channels, m_factor,
                          m_editableScratch.get());
    reduced.reference = m_referenceScratch.get();
    reduced.editable = m_editableScratch.get();
  }
  m_placements.setPair(reduced, m_reference);
}

bool LeastSquaresSearch::tryMomentum()
{
  m_moves.clear();
  m_candidates.clear();
  addCandidate(m_lastMove);
  const auto found = m_placements.findBest(m_candidates, m_best, [this] { return stopRequested(); });
  m_momentum = found.has_value();
  if (found) accept(m_candidates.front(), found->quality);
  return m_momentum;
}

void LeastSquaresSearch::addTranslations()
{
  const float s = m_translationStep;
  if (m_lastRotation > 1)
    for (int i = -gridReach; i < gridReach; i += 2)
      for (int j = -gridReach; j < gridReach; j += 2)
        addCandidate({static_cast<float>(i) * s, static_cast<float>(j) * s, 0.0f});
  for (const Move& step : {Move{s, 0, 0}, Move{-s, 0, 0}, Move{0, s, 0}, Move{0, -s, 0}}) addCandidate(step);
}

void LeastSquaresSearch::addRotations()
{
  for (int k = m_firstRotation; k <= m_lastRotation; ++k)
    if (k != 0) addCandidate({0.0f, 0.0f, static_cast<float>(k) * m_rotationStep});
}

void LeastSquaresSearch::addCandidate(const Move& move)
{
  SliceXForm x = m_editable;
  x.translationX += move.dx;
  x.translationY += move.dy;
  if (move.angle != 0.0f) x.rotate(move.angle, x.translationX, x.translationY);
  m_moves.push_back(move);
  m_candidates.push_back(x);
}

LeastSquaresSearch::Next LeastSquaresSearch::tryCandidates()
{
  const auto found = m_placements.findBest(m_candidates, m_best, [this] { return stopRequested(); });
  if (found) {
    m_lastMove = m_moves[found->index];
    m_momentum = m_factor == 1;
    accept(m_candidates[found->index], found->quality);
    return Next::Continue;
  }
  return m_stopped ? Next::Leave : nextLevel();
}

void LeastSquaresSearch::accept(const SliceXForm& editable, float quality)
{
  m_editable = editable;
  m_best = quality;
  ++m_acceptedMoves;
}

LeastSquaresSearch::Next LeastSquaresSearch::nextLevel()
{
  if (m_factor == 1) {
    ++m_halvings;
    if (m_halvings > 2 || m_pair.width > maxHalvedWidth) return Next::Leave;
    m_translationStep /= 2.0f;
    m_rotationStep /= 2.0f;
    return Next::Continue;
  }
  m_factor /= 2;
  scaleTranslation(m_reference, 2.0f);
  scaleTranslation(m_editable, 2.0f);
  m_rotationStep = static_cast<float>(m_factor) * m_settings.rotationStep;
  m_translationStep = static_cast<float>(m_factor) * m_settings.translationStep;
  m_reduceAgain = true;
  m_firstRotation = -1;
  m_lastRotation = 1;
  m_best = 0.0f;
  return Next::Continue;
}

bool LeastSquaresSearch::stopRequested()
{
  m_stopped = m_stopped || m_stop();
  return m_stopped;
}
