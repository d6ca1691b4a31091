#pragma once

#include "Format.h"

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace io {

/// Foresees which slice is asked for next when slices are asked for one after the other, up or down.
class ReadingOrder {
public:
  explicit ReadingOrder(int slices) : m_slices(slices) {}
  /// Takes note of a slice that was not asked for of late. Returns the one to read ahead, or -1: the next one
  /// in the direction from a near one before, or from an end into the volume; nothing after a leap. The
  /// same slice again changes nothing.
  int next(int k) noexcept;

private:
  int m_slices;
  int m_last = -1;
  int m_direction = 0;
};

/// Slices of a volume in files: the ones asked for last and the one that is likely to be asked for next,
/// which a thread of its own reads ahead.
///
/// Holds up to four slices, fewer when they are large. All functions may be called from several threads; the
/// reader is used by one at a time. Destroying the cache waits for the read under way.
class SliceCache {
public:
  explicit SliceCache(std::unique_ptr<VolumeReader> reader);
  SliceCache(const SliceCache&) = delete;
  SliceCache& operator=(const SliceCache&) = delete;
  ~SliceCache();

  const VolumeInfo& info() const noexcept { return m_reader->info(); }
  /// Copies slice k to dst, or reads it straight into it. Throws Error.
  void readSlice(int k, void* dst);
  /// Copies whole rows of slice k to dst. Reads no more than these where the file allows it, else the whole
  /// slice, which is kept. Throws Error.
  void readRows(int k, int y, int rows, void* dst);

private:
  enum class State { Empty, Reading, Ready, Failed };
  struct Slot {
    State state = State::Empty;
    int slice = -1;
    std::unique_ptr<std::byte[]> bytes; ///< those of one slice, once it was used
    int pins = 0;                       ///< threads that copy from it
    std::uint64_t used = 0;             ///< the higher the later
    bool wasAskedFor = false;           ///< not only read ahead
    std::exception_ptr failure;
  };

  /// Copies bytes of a slice that is in a slot, after waiting for one that is being read. False when it is in
  /// none.
  bool copyHeld(int k, std::size_t offset, std::size_t bytes, void* dst);
  /// True when a slice is the next one to be read ahead, which it is then no more.
  bool wasForeseen(int k);
  /// Reads a slice with nothing held locked but the reader.
  void readNow(int k, void* dst);
  bool readRowsNow(int k, int y, int rows, void* dst);
  /// Reads a slice into a slot. Throws Error.
  void hold(int k);
  /// Reads the slice of a slot that was begun, with the lock let go meanwhile.
  void fill(Slot& slot, std::unique_lock<std::mutex>& lock);
  void foresee(int k);
  void readAhead(const std::stop_token& stop);

  // These are called with m_mutex held.
  Slot* find(int k) noexcept;
  /// A slot that may be filled anew, with its memory; null when all are in use.
  Slot* beginSlot(int k);
  void endSlot(Slot& slot, std::exception_ptr failure);
  void request(int k);

  std::unique_ptr<VolumeReader> m_reader;
  std::mutex m_readerMutex; ///< never taken with m_mutex held
  std::mutex m_mutex;       ///< for all that follows
  std::condition_variable_any m_changed;
  std::vector<Slot> m_slots;
  ReadingOrder m_order;
  std::uint64_t m_clock = 0;
  int m_wanted = -1;     ///< slice to be read ahead
  std::jthread m_thread; ///< started when the first slice is to be read ahead
};

} // namespace io
