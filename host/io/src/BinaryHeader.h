#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

namespace io {

/// Numbers and texts at fixed places of a binary header. Values are in this machine's byte order unless the
/// header is said to be swapped. Places lie inside the header.
class BinaryHeader {
public:
  explicit BinaryHeader(std::size_t size) : m_bytes(size) {}

  std::byte* data() noexcept { return m_bytes.data(); }
  const std::vector<std::byte>& bytes() const noexcept { return m_bytes; }
  void setSwapped(bool swapped) noexcept { m_swapped = swapped; }
  bool isSwapped() const noexcept { return m_swapped; }

  template <class T>
  T get(std::size_t at) const noexcept
  {
    std::array<std::byte, sizeof(T)> raw;
    std::memcpy(raw.data(), m_bytes.data() + at, raw.size());
    if (m_swapped) std::reverse(raw.begin(), raw.end());
    T value;
    std::memcpy(&value, raw.data(), raw.size());
    return value;
  }
  /// The characters of a text field.
  std::string text(std::size_t at, std::size_t length) const
  {
    return {reinterpret_cast<const char*>(m_bytes.data() + at), length};
  }

  /// Puts a value in this machine's byte order.
  template <class T>
  void put(std::size_t at, T value) noexcept
  {
    std::memcpy(m_bytes.data() + at, &value, sizeof value);
  }
  void putText(std::size_t at, const std::string& text) noexcept
  {
    std::memcpy(m_bytes.data() + at, text.data(), text.size());
  }

private:
  std::vector<std::byte> m_bytes;
  bool m_swapped = false;
};

} // namespace io
