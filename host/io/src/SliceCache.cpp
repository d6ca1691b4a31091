#include "SliceCache.h"

#include "zx/ZxThreadReports.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <system_error>
#include <utility>

namespace io {
namespace {

/// As many slices as are looked at together, one that was before them and one ahead. Large ones are fewer:
/// the one that was read last and the one ahead.
std::size_t slotsFor(std::size_t sliceBytes)
{
  constexpr std::size_t memory = std::size_t{1} << 28, least = 2, most = 4;
  return std::clamp(memory / std::max<std::size_t>(sliceBytes, 1), least, most);
}

/// Keeps what is read from the program's work area and console: a slice is read to its end, on whatever
/// thread.
class Undisturbed {
public:
  Undisturbed() : m_reports(m_area, [](const std::string&) {}) {}

private:
  ZxWorkArea m_area;
  ZxThreadReports m_reports;
};

} // namespace

int ReadingOrder::next(int k) noexcept
{
  constexpr int near = 2;
  const int step = m_last < 0 ? m_slices : k - m_last;
  m_last = k;
  if (step != 0) {
    const bool up = std::abs(step) <= near ? step > 0 : k == 0;
    const bool down = std::abs(step) <= near ? step < 0 : k == m_slices - 1;
    m_direction = up ? 1 : down ? -1 : 0;
  }
  const int next = k + m_direction;
  return m_direction != 0 && next >= 0 && next < m_slices ? next : -1;
}

SliceCache::SliceCache(std::unique_ptr<VolumeReader> reader)
  : m_reader(std::move(reader)), m_slots(slotsFor(info().shape.sliceBytes())),
    m_order(info().shape.dims.slices)
{
}

SliceCache::~SliceCache() = default;

SliceCache::Slot* SliceCache::find(int k) noexcept
{
  const auto found = std::find_if(m_slots.begin(), m_slots.end(), [k](const Slot& slot) {
    return slot.state != State::Empty && slot.slice == k;
  });
  return found == m_slots.end() ? nullptr : &*found;
}

SliceCache::Slot* SliceCache::beginSlot(int k)
{
  Slot* oldest = nullptr;
  for (Slot& slot : m_slots) {
    if (slot.state == State::Reading || slot.pins > 0) continue;
    if (!oldest || slot.used < oldest->used) oldest = &slot;
  }
  if (!oldest) return nullptr;
  if (!oldest->bytes) oldest->bytes = std::make_unique_for_overwrite<std::byte[]>(info().shape.sliceBytes());
  oldest->state = State::Reading;
  oldest->slice = k;
  oldest->used = ++m_clock;
  oldest->wasAskedFor = false;
  return oldest;
}

void SliceCache::endSlot(Slot& slot, std::exception_ptr failure)
{
  slot.state = failure ? State::Failed : State::Ready;
  slot.failure = std::move(failure);
  m_changed.notify_all();
}

void SliceCache::request(int k)
{
  m_wanted = k >= 0 && !find(k) ? k : -1;
  if (m_wanted < 0) return;
  try {
    if (!m_thread.joinable())
      m_thread = std::jthread([this](const std::stop_token& stop) { readAhead(stop); });
  } catch (const std::system_error&) {
    m_wanted = -1; // Without another thread slices are read when they are asked for.
  }
  m_changed.notify_all();
}

void SliceCache::foresee(int k)
{
  const std::lock_guard lock(m_mutex);
  request(m_order.next(k));
}

void SliceCache::readAhead(const std::stop_token& stop)
{
  std::unique_lock lock(m_mutex);
  while (m_changed.wait(lock, stop, [this] { return m_wanted >= 0; }) && !stop.stop_requested()) {
    const int k = std::exchange(m_wanted, -1);
    Slot* slot = nullptr;
    try {
      slot = beginSlot(k);
    } catch (const std::bad_alloc&) { // Whoever asks for the slice may have memory for it.
    }
    if (slot) fill(*slot, lock);
  }
}

void SliceCache::fill(Slot& slot, std::unique_lock<std::mutex>& lock)
{
  lock.unlock();
  std::exception_ptr failure; // Keeping it takes no memory, of which there may be none left.
  try {
    readNow(slot.slice, slot.bytes.get());
  } catch (...) {
    failure = std::current_exception();
  }
  lock.lock();
  endSlot(slot, std::move(failure));
}

void SliceCache::readNow(int k, void* dst)
{
  const Undisturbed undisturbed;
  const std::lock_guard lock(m_readerMutex);
  m_reader->checkUnchanged(k);
  m_reader->readSlice(k, dst);
}

bool SliceCache::readRowsNow(int k, int y, int rows, void* dst)
{
  const Undisturbed undisturbed;
  const std::lock_guard lock(m_readerMutex);
  m_reader->checkUnchanged(k);
  return m_reader->readRows(k, y, rows, dst);
}

bool SliceCache::copyHeld(int k, std::size_t offset, std::size_t bytes, void* dst)
{
  std::unique_lock lock(m_mutex);
  Slot* slot = find(k);
  while (slot && slot->state == State::Reading) {
    m_changed.wait(lock);
    slot = find(k);
  }
  if (!slot) return false;
  if (slot->state == State::Failed) {
    slot->state = State::Empty; // It is tried again when it is asked for again.
    std::rethrow_exception(std::exchange(slot->failure, nullptr));
  }
  slot->used = ++m_clock;
  if (!std::exchange(slot->wasAskedFor, true)) request(m_order.next(k));
  ++slot->pins;
  lock.unlock();
  std::memcpy(dst, slot->bytes.get() + offset, bytes);
  lock.lock();
  if (--slot->pins == 0) m_changed.notify_all();
  return true;
}

bool SliceCache::wasForeseen(int k)
{
  const std::lock_guard lock(m_mutex);
  if (m_wanted != k) return false;
  m_wanted = -1;
  return true;
}

void SliceCache::readSlice(int k, void* dst)
{
  // Who is faster than the thread that reads ahead does its work, so that the slice is there for a second
  // time.
  try {
    if (wasForeseen(k)) hold(k);
  } catch (const std::bad_alloc&) { // It is read straight into the caller's memory.
  }
  if (copyHeld(k, 0, info().shape.sliceBytes(), dst)) return;
  readNow(k, dst);
  foresee(k);
}

void SliceCache::hold(int k)
{
  std::unique_lock lock(m_mutex);
  if (find(k)) return;
  Slot* slot = beginSlot(k);
  for (; !slot; slot = beginSlot(k)) {
    m_changed.wait(lock); // Others copy from all of them.
    if (find(k)) return;
  }
  fill(*slot, lock);
}

void SliceCache::readRows(int k, int y, int rows, void* dst)
{
  const ZxLatticeShape& shape = info().shape;
  const std::size_t rowBytes = static_cast<std::size_t>(shape.dims.width) * shape.voxelBytes();
  const std::size_t offset = static_cast<std::size_t>(y) * rowBytes;
  const std::size_t bytes = static_cast<std::size_t>(rows) * rowBytes;
  if (copyHeld(k, offset, bytes, dst) || readRowsNow(k, y, rows, dst)) return;
  do hold(k);
  while (!copyHeld(k, offset, bytes, dst));
}

} // namespace io
