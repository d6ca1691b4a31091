#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <vector>

/// Values that end where the memory of the process ends: a read of the next byte stops the test, also one by
/// an instruction that no sanitizer looks at.
template <class T>
class GuardedCopy {
public:
  explicit GuardedCopy(const std::vector<T>& values)
  {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t bytes = values.size() * sizeof(T);
    const std::size_t used = (bytes + page - 1) / page * page;
    m_size = used + page;
    m_memory = mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (m_memory == MAP_FAILED) return;
    auto* const guard = static_cast<std::byte*>(m_memory) + used;
    mprotect(guard, page, PROT_NONE);
    m_values = reinterpret_cast<T*>(guard - bytes);
    std::memcpy(m_values, values.data(), bytes);
  }
  ~GuardedCopy()
  {
    if (m_memory != MAP_FAILED) munmap(m_memory, m_size);
  }
  GuardedCopy(const GuardedCopy&) = delete;
  GuardedCopy& operator=(const GuardedCopy&) = delete;

  /// Null where the system gives no memory.
  const T* data() const { return m_values; }

private:
  void* m_memory = MAP_FAILED;
  std::size_t m_size = 0;
  T* m_values = nullptr;
};
