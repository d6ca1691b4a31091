#pragma once

#include <atomic>
#include <utility>

/// Base of objects that are shared through counted handles (McHandle). Not copyable.
///
/// The counter is atomic; the object itself is not thread-safe by that.
class McHandable {
public:
  McHandable() = default;
  McHandable(const McHandable&) = delete;
  McHandable& operator=(const McHandable&) = delete;
  virtual ~McHandable() = default;

  void ref() const noexcept { m_count.fetch_add(1, std::memory_order_relaxed); }
  /// Gives one reference back; the last one deletes the object, after notifyDelete().
  void unref() const noexcept
  {
    if (m_count.fetch_sub(1, std::memory_order_acq_rel) == 1) {
      const_cast<McHandable*>(this)->notifyDelete();
      delete this;
    }
  }

protected:
  /// Called once, just before the last handle deletes the object.
  virtual void notifyDelete() {}

private:
  mutable std::atomic<int> m_count{0};
};

/// Counted handle to a McHandable; empty when default constructed.
template <class T>
class McHandle {
public:
  McHandle() = default;
  McHandle(T* object) noexcept : m_object(object)
  {
    if (m_object) m_object->ref();
  }
  McHandle(const McHandle& other) noexcept : McHandle(other.m_object) {}
  McHandle(McHandle&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
  template <class U>
  McHandle(const McHandle<U>& other) noexcept : McHandle(other.get())
  {
  }
  ~McHandle()
  {
    if (m_object) m_object->unref();
  }
  McHandle& operator=(McHandle other) noexcept
  {
    std::swap(m_object, other.m_object);
    return *this;
  }

  T* get() const noexcept { return m_object; }
  T* operator->() const noexcept { return m_object; }
  T& operator*() const noexcept { return *m_object; }
  explicit operator bool() const noexcept { return m_object != nullptr; }
  friend bool operator==(const McHandle& a, const McHandle& b) noexcept { return a.m_object == b.m_object; }

private:
  T* m_object = nullptr;
};

/// Creates an object that only handles own.
template <class T, class... Args>
McHandle<T> mcMake(Args&&... args)
{
  return McHandle<T>(new T(std::forward<Args>(args)...));
}
