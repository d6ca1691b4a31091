#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <utility>
#include <vector>

/// Growable array of values, indexed from 0; sizes are 64 bits wide.
///
/// Growing keeps the elements and takes at least 1.5 times the old capacity, so that appending is cheap.
template <class T>
class McDArray {
public:
  McDArray() = default;
  explicit McDArray(std::size_t n) : m_items(n) {}
  McDArray(std::initializer_list<T> items) : m_items(items) {}

  std::size_t size() const noexcept { return m_items.size(); }
  bool isEmpty() const noexcept { return m_items.empty(); }

  /// New elements are value-initialised; elements beyond n are destroyed.
  void resize(std::size_t n)
  {
    if (n > m_items.capacity()) m_items.reserve(std::max(n, m_items.capacity() + m_items.capacity() / 2));
    m_items.resize(n);
  }
  /// Destroys all elements; the storage stays for reuse.
  void clear() noexcept { m_items.clear(); }
  /// Destroys all elements and releases the storage.
  void release() noexcept { std::vector<T>().swap(m_items); }

  void append(T item) { m_items.push_back(std::move(item)); }
  /// Removes the element at index i; later ones move down by one. i must be below size().
  void remove(std::size_t i) { m_items.erase(m_items.begin() + static_cast<std::ptrdiff_t>(i)); }

  T& operator[](std::size_t i) noexcept { return m_items[i]; }
  const T& operator[](std::size_t i) const noexcept { return m_items[i]; }
  T* data() noexcept { return m_items.data(); }
  const T* data() const noexcept { return m_items.data(); }

  auto begin() noexcept { return m_items.begin(); }
  auto end() noexcept { return m_items.end(); }
  auto begin() const noexcept { return m_items.begin(); }
  auto end() const noexcept { return m_items.end(); }

  friend bool operator==(const McDArray& a, const McDArray& b) { return a.m_items == b.m_items; }

private:
  std::vector<T> m_items;
};
