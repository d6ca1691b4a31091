#pragma once

#include <mutex>

/// A mutual exclusion; not recursive.
class ZxMutex {
public:
  void lock() { m_mutex.lock(); }
  void unlock() { m_mutex.unlock(); }

private:
  std::mutex m_mutex;
};
