// The columns of the orthogonal views: which are stale, and how they are computed.
#include "OrthoLines.h"
#include "zx/ZxMessage.h"
#include "zx/ZxWorkArea.h"
#include "zxalign/QxAlignSlices.h"
#include "zxalign/QxOrthoViewManager.h"
#include "zxalign/QxViewAlignSlicesCoronal.h"
#include "zxalign/QxViewAlignSlicesOrthogonalCommonToolBar.h"
#include "zxalign/QxViewAlignSlicesSagittal.h"
#include "zxalign/UpdateOrthogonalViewsThread.h"
#include "zxalign/ZxAlignSlices.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <mutex>

using Range = OrthoColumns::Range;
using State = OrthoColumns::State;

namespace {

constexpr OrthoOrientation kViews[] = {OrthoOrientation::Sagittal, OrthoOrientation::Coronal};
// Work between two looks at what the user does.
constexpr int kPollMilliseconds = 10;

bool isSelected(OrthoOrientation view, OrthoOrientation selection)
{
  return selection == view || selection == OrthoOrientation::Both;
}

/// Holds the module's data mutex while it lives.
class DataLock {
public:
  explicit DataLock(ZxAlignSlices& module) : m_module(module) { m_module.lockDataMutex(); }
  ~DataLock() { m_module.unlockDataMutex(); }
  DataLock(const DataLock&) = delete;
  DataLock& operator=(const DataLock&) = delete;

private:
  ZxAlignSlices& m_module;
};

/// A range after a move, without what leaves 0 ... size - 1.
Range movedRange(Range range, int distance, int size)
{
  if (range.first == -1) return {};
  const std::int64_t first = std::max<std::int64_t>(std::int64_t{range.first} + distance, 0);
  const std::int64_t last = std::min<std::int64_t>(std::int64_t{range.last} + distance, size - 1);
  return first <= last ? Range{static_cast<int>(first), static_cast<int>(last)} : Range{};
}

// What a move of whole pixels rounds away at most. Several moves may add up to more.
constexpr float kLargestError = 0.501f;

bool isOff(float shown, float wanted) { return std::abs(wanted - shown) > kLargestError; }

void clearOutside(McTypedData2D& image, int z, Range valid)
{
  if (valid.first == -1) return image.clearRow(z);
  image.clear(z, 0, valid.first);
  image.clear(z, valid.last + 1, image.width() - 1 - valid.last);
}

} // namespace

/// One column that is being computed: what it is computed from, and the result.
struct QxOrthoViewManager::Job {
  int z = 0;
  OrthoOrientation view = OrthoOrientation::Sagittal;
  std::uint64_t changes = 0;
  SliceXForm transform;
  int cut = 0;
  Range valid; // pixels that stay as they are
  std::vector<unsigned char> pixels;
};

void QxOrthoViewManager::takeTransforms(int from, int to)
{
  const McDArray<SliceInfo>& slices = m_editor->getTransform();
  to = std::min({to, static_cast<int>(slices.size()) - 1, m_columns.slices() - 1});
  for (int z = from; z <= to; ++z) m_columns.transform(z) = slices[static_cast<std::size_t>(z)];
}

void QxOrthoViewManager::mark(int from, int to, OrthoOrientation orientation, State state)
{
  const std::lock_guard lock(m_mutex);
  takeTransforms(from, to);
  for (const OrthoOrientation v : kViews) {
    if (!view(v) || !isSelected(v, orientation)) continue;
    for (int z = from; z <= to; ++z) {
      m_columns.mark(v, z, state);
      if (state == State::ToClear) m_columns.setValid(v, z, {});
    }
  }
}

void QxOrthoViewManager::updateSlices(int from, int to, OrthoOrientation orientation)
{
  mark(from, to, orientation, State::ToCompute);
  updateLinesIfAutomatic();
}

void QxOrthoViewManager::clearSlices(int from, int to, OrthoOrientation orientation)
{
  mark(from, to, orientation, State::ToClear);
  updateLinesIfAutomatic();
}

void QxOrthoViewManager::blankColumn(OrthoOrientation orientation, int z)
{
  view(orientation)->clearLine(z);
  m_columns.setValid(orientation, z, {});
  ++m_columns.column(orientation, z).changes;
  m_outdated[static_cast<int>(orientation)] = true;
}

void QxOrthoViewManager::clearLineImmediate(int from, int to, OrthoOrientation orientation)
{
  {
    const std::lock_guard lock(m_mutex);
    for (const OrthoOrientation v : kViews)
      if (view(v) && isSelected(v, orientation))
        for (int z = from; z <= to; ++z) blankColumn(v, z);
  }
  updateImageData();
}

void QxOrthoViewManager::clearLine(int z)
{
  const std::lock_guard lock(m_mutex);
  for (const OrthoOrientation v : kViews) {
    if (!view(v) || m_columns.column(v, z).state != State::ToClear) continue;
    blankColumn(v, z);
    m_columns.mark(v, z, State::UpToDate);
  }
}

void QxOrthoViewManager::updateView()
{
  updateView(0, m_shape.dims.slices - 1, OrthoOrientation::Both, 0, 0, false, false, false);
}

void QxOrthoViewManager::updateView(int from, int to, OrthoOrientation orientation, int dx, int dy,
                                    bool translated, bool rotated, bool mirrored)
{
  if (!hasView()) return;
  getRangeToUpdate(from, to);
  if (translated && !rotated && !mirrored) return translateSlices(from, to, dx, dy, orientation);
  clearLineImmediate(from, to, orientation);
  if (m_projects) resetUpToDateBoxes(from, to, orientation);
  updateSlices(from, to, orientation);
}

void QxOrthoViewManager::translateSlices(int from, int to, int dx, int dy, OrthoOrientation orientation)
{
  if (dx == 0 && dy == 0 && !areOff(from, to, orientation)) return;
  if (m_projects) {
    // A projection along an axis does not change with a move along it.
    translateProjections(from, to, dy, OrthoOrientation::Sagittal, orientation);
    translateProjections(from, to, dx, OrthoOrientation::Coronal, orientation);
    updateImageData();
  } else {
    // In this order: a column that a running pass computes between the two is computed once more.
    clearLineImmediate(from, to, orientation);
    mark(from, to, orientation, State::ToCompute);
  }
  updateLinesIfAutomatic();
}

bool QxOrthoViewManager::areOff(int from, int to, OrthoOrientation orientation)
{
  const std::lock_guard lock(m_mutex);
  takeTransforms(from, to);
  for (const OrthoOrientation v : kViews)
    for (int z = from; z <= to && view(v) && isSelected(v, orientation); ++z) {
      const OrthoColumns::Column& column = m_columns.column(v, z);
      const SliceXForm& now = m_columns.transform(z);
      const bool x = isOff(column.shownX, now.translationX), y = isOff(column.shownY, now.translationY);
      const bool matters = m_projects ? (v == OrthoOrientation::Sagittal ? y : x) : x || y;
      if (matters && column.state == State::UpToDate) return true;
    }
  return false;
}

void QxOrthoViewManager::translateProjections(int from, int to, int distance, OrthoOrientation moved,
                                              OrthoOrientation selection)
{
  if (!view(moved) || !isSelected(moved, selection)) return;
  const std::lock_guard lock(m_mutex);
  takeTransforms(from, to);
  McTypedData2D& image = view(moved)->image();
  for (int z = from; z <= to; ++z) {
    const Range old = m_columns.valid(moved, z);
    const Range now = movedRange(old, distance, image.width());
    if (now.first != -1) image.movePixels(z, now.first - distance, now.first, now.last - now.first + 1);
    const bool isTrue = countMove(moved, z, distance);
    m_columns.setValid(moved, z, isTrue ? now : Range{});
    m_columns.mark(moved, z, State::ToCompute);
    // What the move has uncovered in the last slice keeps its old pixels until it is recomputed: the slice
    // that is being moved does not flicker.
    if (z < to) clearOutside(image, z, now);
  }
  m_outdated[static_cast<int>(moved)] = true;
}

bool QxOrthoViewManager::countMove(OrthoOrientation moved, int z, int distance)
{
  OrthoColumns::Column& column = m_columns.column(moved, z);
  const SliceXForm& now = m_columns.transform(z);
  const bool vertical = moved == OrthoOrientation::Sagittal;
  float& shown = vertical ? column.shownY : column.shownX;
  shown += static_cast<float>(distance);
  return !isOff(shown, vertical ? now.translationY : now.translationX);
}

void QxOrthoViewManager::updateLinesIfAutomatic()
{
  if (m_toolBar && m_toolBar->getAutoUpdate()) updateLines();
}

void QxOrthoViewManager::updateLines()
{
  if (m_updating) {
    m_updateAgain = true;
    return;
  }
  {
    const std::lock_guard lock(m_mutex);
    takeTransforms(0, m_shape.dims.slices - 1);
  }
  if (!useThread()) return updateLinesHere();
  m_thread->stop();
  m_thread->start();
}

void QxOrthoViewManager::updateLinesHere()
{
  ZxWorkArea* const work = ZxWorkArea::getTheWorkArea();
  const bool partOfOtherWork = work->isWorking();
  const ZxWorkingPhase phase("Updating orthogonal views");
  const std::weak_ptr<bool> alive = m_alive;
  m_updating = true;
  m_updateAgain = false;
  QElapsedTimer sincePoll;
  sincePoll.start();
  int count = 0;
  for (int z = 0; z < m_shape.dims.slices; ++z) {
    const bool poll = sincePoll.elapsed() >= kPollMilliseconds;
    if (poll && !partOfOtherWork)
      work->setProgressFraction(std::max(work->getProgressFraction(), progressAt(z)));
    // What comes in may change everything here, even delete this object.
    const bool interrupted = work->wasInterrupted(poll);
    if (alive.expired()) return;
    if (interrupted) break;
    if (poll) sincePoll.restart();
    if (m_updateAgain) {
      m_updateAgain = false;
      const std::lock_guard lock(m_mutex);
      takeTransforms(0, m_shape.dims.slices - 1);
      z = 0;
    }
    if (updateLine(z)) ++count;
    if (count != 0 && count % m_updateFrequency == 0) updateImageData();
  }
  m_updating = false;
  updateImageData();
}

float QxOrthoViewManager::progressAt(int z) const
{
  return static_cast<float>(z) / static_cast<float>(m_shape.dims.slices);
}

bool QxOrthoViewManager::updateLine(int z)
{
  bool clears = false, computes = false, projects = false;
  {
    const std::lock_guard lock(m_mutex);
    if (z < 0 || z >= m_columns.slices()) return false;
    projects = m_projects;
    for (const OrthoOrientation v : kViews) {
      clears = clears || (view(v) && m_columns.column(v, z).state == State::ToClear);
      computes = computes || (view(v) && m_columns.column(v, z).state == State::ToCompute);
    }
  }
  if (clears) clearLine(z);
  if (computes && projects) updateLineMaximumIntensityProjection(z);
  if (computes && !projects) updateLineCrossSection(z);
  return clears || computes;
}

void QxOrthoViewManager::updateLineCrossSection(int z)
{
  const DataLock lock(m_editor->module());
  if (!isInputPresent()) return;
  for (const OrthoOrientation v : kViews) {
    Job job;
    if (!beginJob(z, v, false, job)) continue;
    computeCut(job);
    commitJob(job);
  }
}

void QxOrthoViewManager::updateLineMaximumIntensityProjection(int z)
{
  const DataLock lock(m_editor->module());
  if (!isInputPresent()) return;
  const void* slice = nullptr;
  for (const OrthoOrientation v : kViews) {
    Job job;
    if (!beginJob(z, v, true, job)) continue;
    if (job.valid != Range{0, widthOf(v) - 1}) {
      if (!slice) slice = readSlice(z);
      if (slice) computeProjection(job, slice);
    }
    commitJob(job);
  }
}

bool QxOrthoViewManager::isInputPresent() const
{
  // Other data may lie where the old ones were.
  return m_lattice && m_editor->module().getDataLattice() == m_lattice && m_lattice->shape() == m_shape;
}

bool QxOrthoViewManager::beginJob(int z, OrthoOrientation orientation, bool projects, Job& job)
{
  const std::lock_guard lock(m_mutex);
  if (!view(orientation) || projects != m_projects) return false;
  OrthoColumns::Column& column = m_columns.column(orientation, z);
  if (column.state != State::ToCompute) return false;
  // Up to date from now on; who changes the slice from here marks it again.
  column.state = State::UpToDate;
  job.z = z;
  job.view = orientation;
  job.changes = column.changes;
  job.transform = m_columns.transform(z);
  job.cut = orientation == OrthoOrientation::Sagittal ? m_cutX : m_cutY;
  job.valid = m_columns.valid(orientation, z);
  job.pixels.assign(view(orientation)->image().rowBytes(), 0);
  return true;
}

void QxOrthoViewManager::commitJob(const Job& job)
{
  const std::lock_guard lock(m_mutex);
  // A change has come meanwhile: the pixels belong to a slice that is no more.
  if (!view(job.view) || m_columns.column(job.view, job.z).changes != job.changes) return;
  McTypedData2D& image = view(job.view)->image();
  const int width = image.width();
  const auto copy = [&](int first, int count) {
    const std::size_t offset = static_cast<std::size_t>(first) * image.pixelBytes();
    std::memcpy(image.row(job.z) + offset, job.pixels.data() + offset,
                static_cast<std::size_t>(count) * image.pixelBytes());
  };
  if (job.valid.first == -1) {
    copy(0, width);
    OrthoColumns::Column& column = m_columns.column(job.view, job.z);
    column.shownX = job.transform.translationX;
    column.shownY = job.transform.translationY;
  } else {
    copy(0, job.valid.first);
    copy(job.valid.last + 1, width - 1 - job.valid.last);
  }
  m_columns.setValid(job.view, job.z, {0, width - 1});
  m_outdated[static_cast<int>(job.view)] = true;
}

const void* QxOrthoViewManager::readSlice(int z)
{
  if (const void* slice = m_lattice->sliceInMemory(z)) return slice;
  m_voxels.resize(m_lattice->shape().sliceBytes());
  if (m_lattice->readSlice(z, m_voxels.data())) return m_voxels.data();
  m_unreadableSlice = z;
  return nullptr;
}

void QxOrthoViewManager::computeCut(Job& job)
{
  const OrthoLines lines(m_shape, job.transform);
  const OrthoCoordinate constant =
      job.view == OrthoOrientation::Sagittal ? OrthoCoordinate::X : OrthoCoordinate::Y;
  McBox2i box;
  if (!lines.boxOf(constant, job.cut, box)) return; // blank
  if (!lines.cut(*m_lattice, job.z, constant, job.cut, box, m_voxels, job.pixels.data()))
    m_unreadableSlice = job.z;
}

void QxOrthoViewManager::computeProjection(Job& job, const void* slice)
{
  const OrthoLines lines(m_shape, job.transform);
  const OrthoCoordinate constant =
      job.view == OrthoOrientation::Sagittal ? OrthoCoordinate::Y : OrthoCoordinate::X;
  const int last = widthOf(job.view) - 1;
  if (job.valid.first == -1) return lines.project(slice, constant, 0, last, job.pixels.data());
  lines.project(slice, constant, 0, job.valid.first - 1, job.pixels.data());
  lines.project(slice, constant, job.valid.last + 1, last, job.pixels.data());
}

void QxOrthoViewManager::updateImageData()
{
  {
    const std::lock_guard lock(m_mutex);
    for (const OrthoOrientation v : kViews)
      if (std::exchange(m_outdated[static_cast<int>(v)], false) && view(v)) view(v)->updateImageData();
  }
  // Said here, on the thread of the console.
  const int unreadable = m_unreadableSlice.exchange(-1);
  if (unreadable != -1)
    ZxMessage::getTheMsg()->printf("Slice %d cannot be read; the orthogonal views show it black.",
                                   unreadable);
}

void QxOrthoViewManager::createUpToDateBoxes()
{
  const std::lock_guard lock(m_mutex);
  m_columns.createBoxes();
}

void QxOrthoViewManager::deleteUpToDateBoxes()
{
  const std::lock_guard lock(m_mutex);
  m_columns.deleteBoxes();
}

void QxOrthoViewManager::resetUpToDateBoxes(int from, int to, OrthoOrientation orientation)
{
  const std::lock_guard lock(m_mutex);
  for (const OrthoOrientation v : kViews)
    if (isSelected(v, orientation))
      for (int z = from; z <= to; ++z) m_columns.setValid(v, z, {});
}

McBox2i QxOrthoViewManager::getUpToDateBox(int z) const
{
  const std::lock_guard lock(m_mutex);
  return m_columns.box(z);
}

bool QxOrthoViewManager::getIntersectionBoxOfLineWithImage(int z, OrthoCoordinate coordinate, int position,
                                                           McBox2i& box) const
{
  return OrthoLines(m_shape, m_editor->getTransform()[static_cast<std::size_t>(z)])
      .boxOf(coordinate, position, box);
}
