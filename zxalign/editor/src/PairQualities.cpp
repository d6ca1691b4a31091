#include "zxalign/PairQualities.h"

#include "zx/ZxMessage.h"
#include "zx/ZxWorkArea.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignSlices.h"

#include <QGuiApplication>

#include <algorithm>
#include <chrono>
#include <cstdlib>

namespace {

constexpr std::chrono::milliseconds watchInterval{200};

} // namespace

PairQualities::PairQualities(ZxAlignSlices& module, QObject* parent) : QObject(parent), m_module(module)
{
  m_pool.setMaxThreadCount(1);
  m_watch.setInterval(watchInterval);
  connect(&m_watch, &QTimer::timeout, this, &PairQualities::look);
}

PairQualities::~PairQualities() { m_pool.waitForDone(); }

void PairQualities::setActive(bool active)
{
  if (active == m_watch.isActive()) return;
  if (!active) return m_watch.stop();
  m_watch.start();
  look();
}

int PairQualities::upToDate() const noexcept
{
  return static_cast<int>(
      std::count_if(m_pairs.begin(), m_pairs.end(), [](const Pair& pair) { return pair.isUpToDate; }));
}

void PairQualities::look()
{
  const int pairs = std::max(m_module.numSlices() - 1, 0);
  const bool isOther = pairs != count() || (pairs > 0 && m_pairs[0].key.data != m_module.getDataLattice());
  if (isOther) {
    m_pairs.assign(static_cast<std::size_t>(pairs), Pair());
    m_worst = m_last = -1;
  }
  for (int i = 0; i < pairs; ++i) {
    Pair& pair = m_pairs[static_cast<std::size_t>(i)];
    const PairQualityJob::Key key = PairQualityJob::keyOf(m_module, i);
    if (pair.key == key) continue;
    pair.key = key;
    pair.isUpToDate = false;
    pair.hasMoved = true;
    m_last = -1; // What was changed is near the present pair.
  }
  if (isOther) Q_EMIT reset();
  lookAtConfidences();
  lookAtCurrent();
  computeNext();
}

bool PairQualities::hasConfidences() const noexcept
{
  return std::any_of(m_pairs.begin(), m_pairs.end(),
                     [](const Pair& pair) { return pair.confidence.has_value(); });
}

void PairQualities::lookAtConfidences()
{
  if (count() == 0) return;
  const PairConfidences all(m_module.sliceData().getParameters(), m_module.sliceData().getDims());
  for (int lower = 0; lower < count(); ++lower) {
    Pair& pair = m_pairs[static_cast<std::size_t>(lower)];
    // A method leaves its outcome with the slice that it matched, the upper or the lower one.
    std::optional<PairConfidence> upwards = all.find(lower + 1), downwards = all.find(lower);
    if (upwards && upwards->reference != lower) upwards.reset();
    if (downwards && downwards->reference != lower + 1) downwards.reset();
    if (!pair.hasMoved && pair.upwards == upwards && pair.downwards == downwards) continue;
    pair.hasMoved = false;
    pair.upwards = std::move(upwards);
    pair.downwards = std::move(downwards);
    if (pair.confidence == standing(pair)) continue;
    pair.confidence = standing(pair);
    Q_EMIT changed(lower);
  }
}

std::optional<PairConfidence> PairQualities::standing(const Pair& pair) const
{
  const ZxDims& dims = m_module.sliceData().getDims();
  if (pair.upwards && pair.upwards->isOf(pair.key.upper, pair.key.lower, dims)) return pair.upwards;
  if (pair.downwards && pair.downwards->isOf(pair.key.lower, pair.key.upper, dims)) return pair.downwards;
  return std::nullopt;
}

void PairQualities::lookAtCurrent()
{
  const int editable = m_module.getEditableSlice();
  const int reference = m_module.getReferenceSlice();
  const int lower = std::min(editable, reference);
  const int current = std::abs(editable - reference) == 1 && lower >= 0 && lower < count() ? lower : -1;
  if (current == m_current) return;
  m_current = current;
  Q_EMIT currentChanged(current);
}

bool PairQualities::mayCompute() const
{
  return !m_isComputing && m_watch.isActive() && !ZxWorkArea::getTheWorkArea()->isBusy() &&
         QGuiApplication::mouseButtons() == Qt::NoButton;
}

int PairQualities::nextOutdated() const
{
  const int begin = m_last >= 0 ? m_last + 1 : std::max(m_current, 0);
  for (int i = 0; i < count(); ++i) {
    const int lower = (begin + i) % count();
    if (!m_pairs[static_cast<std::size_t>(lower)].isUpToDate) return lower;
  }
  return -1;
}

void PairQualities::computeNext()
{
  const int lower = mayCompute() ? nextOutdated() : -1;
  if (lower < 0) return;
  m_isComputing = true;
  m_pool.start([this, job = std::make_shared<PairQualityJob>(m_module, lower)]() mutable {
    const std::optional<float> quality = job->run(m_buffers);
    // The job ends where it was made.
    QMetaObject::invokeMethod(
        this, [this, job = std::move(job), quality] { finish(*job, quality); }, Qt::QueuedConnection);
  });
}

void PairQualities::finish(const PairQualityJob& job, std::optional<float> quality)
{
  m_isComputing = false;
  const int lower = job.lower();
  m_last = lower;
  if (lower < count() && m_pairs[static_cast<std::size_t>(lower)].key.data == job.key().data) {
    Pair& pair = m_pairs[static_cast<std::size_t>(lower)];
    pair.quality = quality;
    pair.isUpToDate = pair.key == job.key();
    if (!quality)
      ZxMessage::getTheMsg()->printf("There is not enough memory for the quality of slices %d and %d.", lower,
                                     lower + 1);
    findWorst();
    Q_EMIT changed(lower);
  }
  computeNext();
}

void PairQualities::findWorst()
{
  int worst = -1;
  for (int i = 0; i < count(); ++i)
    if (quality(i) && (worst < 0 || *quality(i) < *quality(worst))) worst = i;
  if (worst == m_worst) return;
  const int before = std::exchange(m_worst, worst);
  Q_EMIT worstChanged(before, worst);
}
