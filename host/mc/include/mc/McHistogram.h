#pragma once

#include "mc/McDArray.h"

#include <cstdint>

/// Counts of values over equally wide bins of a range [lo, hi].
///
/// The bin of v is floor((v - lo) / (hi - lo) * bins), computed in double; values outside the range and NaN
/// are not counted, and v == hi belongs to the last bin.
class McHistogram {
public:
  /// A histogram without a bin when bins <= 0 or hi <= lo.
  McHistogram(double lo, double hi, std::int64_t bins);

  void add(double v) noexcept;
  std::int64_t getNumBins() const noexcept { return static_cast<std::int64_t>(m_counts.size()); }
  std::uint64_t getCount(std::int64_t bin) const noexcept { return m_counts[static_cast<std::size_t>(bin)]; }
  /// Index of the fullest bin; the first of equally full ones; 0 when there is no bin.
  std::int64_t getFullestBin() const noexcept;

private:
  double m_lo;
  double m_width;
  McDArray<std::uint64_t> m_counts;
};
