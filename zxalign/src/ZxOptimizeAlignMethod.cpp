#include "ZxOptimizeAlignMethod.h"

#include "kernels/BlockAverage.h"
#include "zx/ZxMessage.h"
#include "zx/ZxWorkArea.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignSlices.h"

#include <algorithm>
#include <cstdlib>

namespace {

// Edge length up to which images are not reduced further.
constexpr int smallestImage = 99;
constexpr float coarseRotationStep = 10.0f; // degrees, of the first level whatever its reduction
constexpr int gridReach = 24;               // first level: shifts from -24 to 22 steps, every second one
constexpr int maxHalvedWidth = 1024;        // wider slices are precise enough without halved steps

} // namespace

void ZxOptimizeAlignMethod::FreeBuffer::operator()(unsigned char* p) const noexcept { std::free(p); }

int ZxOptimizeAlignMethod::doLayout()
{
  readPair();
  chooseReduction();
  if (!allocateScratch()) return 0;
  if (m_factor != 1)
    for (SliceXForm* x : {&m_reference, &m_editable})
      scaleTranslation(*x, 1.0f / static_cast<float>(m_factor));
  if (m_module->alignSettings().maxIterations > 0) {
    startSearch();
    search();
  }
  finish();
  return 1;
}

void ZxOptimizeAlignMethod::readPair()
{
  // The module has mapped both slices when they were chosen; ports may have changed since.
  m_module->mapSlices();
  ZxAlignData& data = m_module->sliceData();
  const bool colour = data.isColorField();
  m_channels = colour ? 4 : 1;
  m_referenceImage = colour ? data.getReferenceColorPtr() : data.getReferenceSlicePtr();
  m_editableImage = colour ? data.getEditableColorPtr() : data.getEditableSlicePtr();
  m_width = data.getDims().width;
  m_height = data.getDims().height;
  m_reference = m_module->getSlice(m_module->getReferenceSlice());
  m_editable = m_module->getSlice(m_module->getEditableSlice());
}

void ZxOptimizeAlignMethod::chooseReduction()
{
  const int levels = m_module->alignSettings().resamplingLevels;
  if (levels <= 0 || m_width <= smallestImage) return;
  int used = 0;
  while (m_height / m_factor > smallestImage) {
    m_factor *= 2;
    ++used;
    if (used >= levels || m_width / m_factor <= smallestImage) break;
  }
}

bool ZxOptimizeAlignMethod::allocateScratch()
{
  const std::size_t bytes = static_cast<std::size_t>(m_width / 2) * static_cast<std::size_t>(m_height / 2) *
                            static_cast<std::size_t>(m_channels);
  for (Buffer* buffer : {&m_referenceScratch, &m_editableScratch}) {
    buffer->reset(static_cast<unsigned char*>(std::malloc(std::max<std::size_t>(bytes, 1))));
    if (*buffer) continue;
    ZxMessage::getTheMsg()->memError(bytes);
    return false;
  }
  return true;
}

void ZxOptimizeAlignMethod::startSearch()
{
  m_translationStep = m_module->alignSettings().translationStep * static_cast<float>(m_factor);
  m_rotationStep = coarseRotationStep;
}

void ZxOptimizeAlignMethod::search()
{
  for (int i = 0; i < m_module->alignSettings().maxIterations; ++i)
    if (stopRequested() || iterate() == Next::Leave || m_stopped) return;
}

ZxOptimizeAlignMethod::Next ZxOptimizeAlignMethod::iterate()
{
  if (m_reduceAgain) {
    reduceImages();
    m_best = qualityOf(m_editable);
    m_reduceAgain = false;
  }
  if (m_momentum && tryMomentum()) return Next::Continue;
  m_candidateQuality = m_best;
  m_hasCandidate = false;
  if (m_halvings < 2) searchTranslations();
  if (m_module->alignSettings().rotationAllowed) searchRotations();
  return decide();
}

void ZxOptimizeAlignMethod::reduceImages()
{
  m_reducedWidth = m_width / m_factor;
  m_reducedHeight = m_height / m_factor;
  m_reducedReference = m_referenceImage;
  m_reducedEditable = m_editableImage;
  if (m_factor < 2) return;
  kernels::blockAverage(m_referenceImage, m_width, m_height, m_channels, m_factor, m_referenceScratch.get());
  kernels::blockAverage(m_editableImage, m_width, m_height, m_channels, m_factor, m_editableScratch.get());
  m_reducedReference = m_referenceScratch.get();
  m_reducedEditable = m_editableScratch.get();
}

bool ZxOptimizeAlignMethod::tryMomentum()
{
  const SliceXForm candidate = moved(m_editable, m_lastMove);
  const float quality = qualityOf(candidate);
  m_momentum = quality > m_best;
  if (!m_momentum) return false;
  m_editable = candidate;
  m_best = quality;
  return true;
}

void ZxOptimizeAlignMethod::searchTranslations()
{
  const float s = m_translationStep;
  if (m_lastRotation > 1)
    for (int i = -gridReach; i < gridReach; i += 2)
      for (int j = -gridReach; j < gridReach; j += 2)
        consider({static_cast<float>(i) * s, static_cast<float>(j) * s, 0.0f});
  for (const Move& step : {Move{s, 0, 0}, Move{-s, 0, 0}, Move{0, s, 0}, Move{0, -s, 0}}) consider(step);
}

void ZxOptimizeAlignMethod::searchRotations()
{
  for (int k = m_firstRotation; k <= m_lastRotation; ++k)
    if (k != 0) consider({0.0f, 0.0f, static_cast<float>(k) * m_rotationStep});
}

void ZxOptimizeAlignMethod::consider(const Move& move)
{
  // Candidates on large images take long: a stop must not wait for hundreds of them.
  if (m_stopped || stopRequested()) return;
  const SliceXForm candidate = moved(m_editable, move);
  const float quality = qualityOf(candidate);
  if (!(quality > m_candidateQuality)) return;
  m_candidateQuality = quality;
  m_candidate = candidate;
  m_lastMove = move;
  m_hasCandidate = true;
}

ZxOptimizeAlignMethod::Next ZxOptimizeAlignMethod::decide()
{
  if (m_hasCandidate) {
    m_editable = m_candidate;
    m_best = m_candidateQuality;
    m_momentum = m_factor == 1;
    return Next::Continue;
  }
  if (m_stopped) return Next::Leave;
  if (m_factor > 1) {
    refineLevel();
    return Next::Continue;
  }
  ++m_halvings;
  if (m_halvings > 2 || m_width > maxHalvedWidth) return Next::Leave;
  m_translationStep /= 2.0f;
  m_rotationStep /= 2.0f;
  return Next::Continue;
}

void ZxOptimizeAlignMethod::refineLevel()
{
  m_factor /= 2;
  scaleTranslation(m_reference, 2.0f);
  scaleTranslation(m_editable, 2.0f);
  m_rotationStep = static_cast<float>(m_factor) * m_module->alignSettings().rotationStep;
  m_translationStep = static_cast<float>(m_factor) * m_module->alignSettings().translationStep;
  m_reduceAgain = true;
  m_firstRotation = -1;
  m_lastRotation = 1;
  m_best = 0.0f;
}

void ZxOptimizeAlignMethod::finish()
{
  m_referenceScratch.reset();
  m_editableScratch.reset();
  // A search that ends on a coarse level is still in that level's pixels.
  scaleTranslation(m_editable, static_cast<float>(m_factor));
  const SliceInfo& present = m_module->getSlice(m_module->getEditableSlice());
  m_module->rotateAll(m_editable.rotation - present.rotation);
  // Read again: turning may have moved it by a rounding.
  m_module->translateAll(m_editable.translationX - present.translationX,
                         m_editable.translationY - present.translationY);
  m_module->setModified(true);
  m_module->updateViews();
  m_module->updateQuality();
}

float ZxOptimizeAlignMethod::qualityOf(const SliceXForm& editable) const
{
  return m_module->computeQuality(m_reducedReference, m_reducedEditable, m_reducedWidth, m_reducedHeight,
                                  m_channels, m_reference, editable);
}

bool ZxOptimizeAlignMethod::stopRequested()
{
  m_stopped = m_stopped || ZxWorkArea::getTheWorkArea()->wasInterrupted(1);
  return m_stopped;
}

SliceXForm ZxOptimizeAlignMethod::moved(SliceXForm xform, const Move& move)
{
  xform.translationX += move.dx;
  xform.translationY += move.dy;
  if (move.angle != 0.0f) xform.rotate(move.angle, xform.translationX, xform.translationY);
  return xform;
}

void ZxOptimizeAlignMethod::scaleTranslation(SliceXForm& xform, float factor)
{
  xform.translationX *= factor;
  xform.translationY *= factor;
}
