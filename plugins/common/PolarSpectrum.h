#pragma once

#include "Correlation.h"

namespace spectral {

/// Samples of a polar spectrum: half a turn, and on a logarithmic scale the radii between two shares of the
/// highest frequency.
struct PolarGrid {
  int angles = 0;
  int radii = 0;
  double lowest = 0.0;
  double highest = 1.0;
};

/// Magnitudes of the spectrum of a square over angle (columns, half a turn) and radius (rows), as logarithms
/// without the mean of their radius: what is left is how the picture differs between directions.
Field polarSpectrum(const Spectrum& spectrum, int side, const PolarGrid& grid);

/// The highest local maxima of one row of a periodic field, best first, in samples.
std::vector<double> highestOfRow(const float* row, int n, int count);

} // namespace spectral
