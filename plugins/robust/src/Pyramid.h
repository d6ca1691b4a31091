#pragma once

#include "Field.h"
#include "RigidMotion.h"
#include "SliceImage.h"

#include <vector>

namespace robust {

/// A slice at one resolution, made ready to be compared.
struct Level {
  int width = 0;
  int height = 0;
  Point centre;             ///< where the slice's centre lies, in pixels of the level; may lie between pixels
  double pixel = 1.0;       ///< size of a pixel in pixels of the slice
  std::vector<Field> plain; ///< one a channel: grey values, 1 the standard deviation of the slice
  std::vector<Field>
      flat;       ///< one a channel: brightness and contrast made equal everywhere; empty on fine levels
  Field valid;    ///< 1 where all that a sample is made of is known, else 0
  Field relevant; ///< 1 near the section, 0 far out in plain background
};

/// A slice at all resolutions, the finest first, each half as large as the one before.
///
/// The finest is the slice itself, or that of at most kFinestSide where it is larger: what a pyramid takes,
/// some 20 bytes a pixel of that, is bounded, and a tenth of a pixel of the slice is well above what is lost.
class Pyramid {
public:
  /// Longest side in pixels of the finest level.
  static constexpr int kFinestSide = 2048;
  /// Longest side in pixels up to which a level is the coarsest.
  static constexpr int kCoarsestSide = 96;
  /// Longest side of the levels that have flat values.
  static constexpr int kFlatSide = 400;

  explicit Pyramid(const SliceImage& slice);

  int width() const noexcept { return m_width; }
  int height() const noexcept { return m_height; }
  const std::vector<Level>& levels() const noexcept { return m_levels; }
  /// Whether there is anything to compare: a slice that is constant or too small has nothing.
  bool isEmpty() const noexcept { return m_levels.empty(); }

private:
  int m_width;
  int m_height;
  std::vector<Level> m_levels;
};

} // namespace robust
