#include "Adler32.h"

#include <algorithm>
#include <array>

namespace io {
namespace {

constexpr std::size_t blockBytes = 32;

/// What a byte of a block counts in the weighted sum at the end of that block; 16 bits for the vector unit.
constexpr auto weights = [] {
  std::array<std::int16_t, blockBytes> all{};
  for (std::size_t i = 0; i < blockBytes; ++i) all[i] = static_cast<std::int16_t>(blockBytes - i);
  return all;
}();

} // namespace

void Adler32::add(std::span<const std::byte> bytes) noexcept
{
  constexpr std::size_t most = 4096; // blocks until the sums are reduced
  while (bytes.size() >= blockBytes) {
    const std::size_t blocks = std::min(bytes.size() / blockBytes, most);
    std::uint64_t sum = 0, before = 0, within = 0;
    const std::byte* block = bytes.data();
    for (std::size_t k = 0; k < blocks; ++k, block += blockBytes) {
      std::uint32_t plain = 0;
      std::int32_t weighted = 0;
      for (std::size_t i = 0; i < blockBytes; ++i) {
        const auto value = std::to_integer<std::uint8_t>(block[i]);
        plain += value;
        weighted += static_cast<std::int16_t>(value) * weights[i];
      }
      before += sum;
      sum += plain;
      within += static_cast<std::uint32_t>(weighted);
    }
    m_weighted = (m_weighted + blockBytes * (blocks * m_sum + before) + within) % modulus;
    m_sum = (m_sum + sum) % modulus;
    bytes = bytes.subspan(blocks * blockBytes);
  }
  for (const std::byte value : bytes) {
    m_sum = (m_sum + std::to_integer<std::uint64_t>(value)) % modulus;
    m_weighted = (m_weighted + m_sum) % modulus;
  }
}

} // namespace io
