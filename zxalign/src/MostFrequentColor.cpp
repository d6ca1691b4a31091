#include "MostFrequentColor.h"

#include "mc/McHistogram.h"
#include "mc/McRound.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace {

void mostFrequentRgba(const std::uint8_t* data, std::size_t pixels, McDArray<float>& color)
{
  std::unordered_map<std::uint32_t, std::size_t> counts;
  std::uint32_t lastKey = 0;
  // Backgrounds are runs of one colour: most look-ups are the one before.
  std::size_t* last = &counts[lastKey];
  for (std::size_t i = 0; i < pixels; ++i, data += 4) {
    std::uint32_t key = 0;
    for (int c = 0; c < 4; ++c) key = key << 8 | data[c];
    if (key != lastKey) last = &counts[lastKey = key];
    ++*last;
  }
  std::uint32_t best = 0;
  std::size_t bestCount = 0;
  for (const auto& [key, count] : counts)
    if (count > bestCount || (count == bestCount && key < best)) {
      best = key;
      bestCount = count;
    }
  color.resize(4);
  for (int c = 0; c < 4; ++c)
    color[static_cast<std::size_t>(c)] = static_cast<float>(best >> (24 - 8 * c) & 0xffU);
}

// For values of up to 16 bits, which can be counted one by one; the lowest of equals wins, as in a histogram.
template <class T>
float mostFrequentSmallInteger(const T* data, std::size_t pixels)
{
  constexpr std::int64_t lowest = std::numeric_limits<T>::min();
  // Runs of one value would wait for the count before: neighbours have tables of their own.
  constexpr std::size_t values = std::size_t{1} << (8 * sizeof(T)), tables = 4;
  std::vector<std::size_t> counts(values * tables);
  for (std::size_t i = 0; i < pixels; ++i)
    ++counts[i % tables * values + static_cast<std::size_t>(data[i] - lowest)];
  for (std::size_t v = 0; v < values; ++v)
    for (std::size_t t = 1; t < tables; ++t) counts[v] += counts[t * values + v];
  const auto end = counts.begin() + static_cast<std::ptrdiff_t>(values);
  return static_cast<float>(std::max_element(counts.begin(), end) - counts.begin() + lowest);
}

template <class T>
float mostFrequentGrey(const T* data, std::size_t pixels)
{
  if constexpr (std::is_integral_v<T> && sizeof(T) <= 2)
    if (pixels > 0) return mostFrequentSmallInteger(data, pixels);
  // Infinite values, like those that are no number, have no bin.
  constexpr float largest = std::numeric_limits<float>::max();
  float min = 1000000.0f;
  float max = -1000000.0f;
  for (std::size_t i = 0; i < pixels; ++i) {
    const auto v = static_cast<float>(data[i]);
    if (v < min && v >= -largest) min = v;
    if (v > max && v <= largest) max = v;
  }
  // One bin per grey level; values far apart share bins, so that a range of floats cannot ask for all memory.
  constexpr std::int64_t maxBins = 1 << 24;
  const std::int64_t bins = std::min(mc::truncToInt64(static_cast<double>(max) - min + 1.0), maxBins);
  McHistogram histogram(static_cast<double>(min) - 0.5, static_cast<double>(max) + 0.5, bins);
  for (std::size_t i = 0; i < pixels; ++i) histogram.add(static_cast<float>(data[i]));
  const double width = static_cast<double>(max) - min + 1.0;
  const double binWidth = bins == maxBins ? width / static_cast<double>(bins) : 1.0;
  return static_cast<float>(static_cast<double>(histogram.getFullestBin()) * binWidth + min);
}

} // namespace

void mostFrequentColor(const void* data, std::size_t pixels, int channels, McPrimType type,
                       McDArray<float>& color)
{
  if (channels == 4 && type == McPrimType::UInt8) {
    mostFrequentRgba(static_cast<const std::uint8_t*>(data), pixels, color);
  } else if (channels == 1) {
    color.resize(1);
    mcVisit(type, [&](auto zero) {
      color[0] = mostFrequentGrey(static_cast<const decltype(zero)*>(data), pixels);
    });
  }
}
