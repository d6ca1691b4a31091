#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

inline std::size_t countOf(int width, int height, int channels = 1)
{
  return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
         static_cast<std::size_t>(channels);
}

/// Numbers that are the same in every run and on every machine (the distributions of the library are not).
class Random {
public:
  explicit Random(std::uint32_t seed) : m_engine(seed) {}

  std::uint32_t next() { return static_cast<std::uint32_t>(m_engine()); }
  int below(int n) { return static_cast<int>(next() % static_cast<std::uint32_t>(n)); }
  double real(double lo, double hi) { return lo + (hi - lo) * (next() / 4294967296.0); }
  std::vector<std::uint8_t> bytes(std::size_t n)
  {
    std::vector<std::uint8_t> values(n);
    for (std::uint8_t& v : values) v = static_cast<std::uint8_t>(next() >> 13);
    return values;
  }

private:
  std::mt19937 m_engine;
};
