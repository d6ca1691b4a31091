#include "mc/McHistogram.h"

#include "mc/McRound.h"

#include <algorithm>

McHistogram::McHistogram(double lo, double hi, std::int64_t bins)
  : m_lo(lo), m_width(hi - lo), m_counts(hi > lo && bins > 0 ? static_cast<std::size_t>(bins) : 0)
{
}

void McHistogram::add(double v) noexcept
{
  const std::int64_t bins = getNumBins();
  if (bins == 0 || !(v >= m_lo && v <= m_lo + m_width)) return;
  const std::int64_t bin = mc::floorToInt64((v - m_lo) / m_width * static_cast<double>(bins));
  ++m_counts[static_cast<std::size_t>(std::clamp<std::int64_t>(bin, 0, bins - 1))];
}

std::int64_t McHistogram::getFullestBin() const noexcept
{
  return std::max_element(m_counts.begin(), m_counts.end()) - m_counts.begin();
}
