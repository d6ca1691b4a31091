#pragma once

#include <array>
#include <cstdint>

namespace samples {

/// Smooth random values in [-1, 1) over one slice: values at the sites of a lattice, blended between them.
///
/// The lattice is turned by an angle of its own, so that it does not show. Remembers the lattice cell of
/// the last point: walking along a row costs a look-up only now and then.
class PhantomNoise {
public:
  /// @param spacing lattice spacing within the slice in pixels
  /// @param depth lattice spacing across the slices in slices; slices farther apart share nothing
  PhantomNoise(std::uint64_t key, double spacing, double depth, int slice);

  double at(double x, double y);

private:
  void enter(std::int64_t column, std::int64_t row);
  double site(std::int64_t column, std::int64_t row) const;

  std::uint64_t m_key;
  double m_stepX, m_stepY; ///< from a pixel to lattice coordinates: a turn and a scale
  std::int64_t m_layer;
  double m_layerShare;
  std::int64_t m_column = 0;
  std::int64_t m_row = 0;
  std::array<double, 4> m_corners{}; ///< upper left, upper right, lower left, lower right
};

} // namespace samples
