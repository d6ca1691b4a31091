#pragma once

#include "Correlation.h"
#include "Pyramid.h"
#include "RigidMotion.h"

#include <vector>

namespace robust {

/// A place where the phase correlation of two slices is high.
struct ShiftPeak {
  Point shift; ///< pixels of the slice
  double height = 0.0;
};

/// Displacements that are looked for: those within a distance of a middle, in pixels of the slice.
struct ShiftReach {
  Point middle;
  double distance = 0.0;
};

/// Phase correlation of one level of two slices, the moved one turned to any angle.
class TurnedSpectra {
public:
  TurnedSpectra(const Level& reference, const Level& moved);

  int side() const noexcept { return m_side; }
  const spectral::Spectrum& referenceSpectrum() const noexcept { return m_reference; }
  /// The spectrum of the moved slice, mirrored or not, turned.
  spectral::Spectrum movedSpectrum(double degrees, bool mirrored) const;

  /// The highest peaks at an angle and at the one half a turn on, count each.
  struct Peaks {
    std::vector<ShiftPeak> here, opposite;
  };
  Peaks peaksAt(double degrees, bool mirrored, const ShiftReach& reach, int count) const;

private:
  spectral::Spectrum turned(const Level& level, const RigidMotion& motion) const;
  std::vector<ShiftPeak> highest(const spectral::Spectrum& surface, bool imaginary, const ShiftReach& reach,
                                 int count) const;

  const Level& m_movedLevel;
  double m_pixel;
  int m_side;
  std::size_t m_channel;
  std::vector<float> m_transfer;
  spectral::Spectrum m_reference;
};

} // namespace robust
