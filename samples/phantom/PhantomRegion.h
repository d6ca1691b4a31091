#pragma once

#include "phantom/PhantomGeometry.h"
#include "phantom/PhantomNoise.h"

namespace samples {

/// The large-scale build of the tissue: a rind where cell bodies crowd, against neuropil with few of them.
class PhantomRegion {
public:
  PhantomRegion(std::uint64_t key, int slice) : m_noise(key, 210.0, 50.0, slice) {}

  /// 0 in the neuropil, 1 in the rind, with a border a few pixels wide.
  double rind(double x, double y) { return edge(m_noise.at(x, y) - kBorder, 0.04); }
  /// Probability that a cell body stands at a site.
  double crowding(double x, double y) { return m_noise.at(x, y) > kBorder ? 0.95 : 0.08; }

private:
  static constexpr double kBorder = 0.08;

  PhantomNoise m_noise;
};

} // namespace samples
