#pragma once

#include <cstdint>

namespace samples {

/// Spreads the bits of a counter over the whole word. Integers only, hence the same on every machine.
constexpr std::uint64_t scramble(std::uint64_t v) noexcept
{
  v += 0x9E3779B97F4A7C15ull;
  v = (v ^ (v >> 30)) * 0xBF58476D1CE4E5B9ull;
  v = (v ^ (v >> 27)) * 0x94D049BB133111EBull;
  return v ^ (v >> 31);
}

/// The key of a site of a three-dimensional lattice: what stands there can be made again from it at any time.
constexpr std::uint64_t siteKey(std::uint64_t key, std::int64_t x, std::int64_t y, std::int64_t z) noexcept
{
  const auto word = [](std::int64_t v) { return static_cast<std::uint64_t>(v); };
  return scramble(key + word(x) * 0xD6E8FEB86659FD93ull + word(y) * 0xA0761D6478BD642Full +
                  word(z) * 0xE7037ED1A0B428DBull);
}

/// The upper 53 bits as a number of [0, 1).
constexpr double toUnit(std::uint64_t v) noexcept { return static_cast<double>(v >> 11) * 0x1p-53; }

/// A sequence of numbers that belongs to one key.
class PhantomRandom {
public:
  explicit PhantomRandom(std::uint64_t key) noexcept : m_state(key) {}

  std::uint64_t bits() noexcept { return scramble(m_state += 0x9E3779B97F4A7C15ull); }
  double unit() noexcept { return toUnit(bits()); }
  double within(double low, double high) noexcept { return low + (high - low) * unit(); }
  bool chance(double probability) noexcept { return unit() < probability; }

private:
  std::uint64_t m_state;
};

} // namespace samples
