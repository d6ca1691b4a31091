#pragma once

#include "zxalign/ZxAlignControl.h"

#include <span>
#include <string>
#include <vector>

namespace cli {

/// How far an alignment is from the true one.
///
/// For neighbours k - 1 and k the map from slice k into slice k - 1 is taken from both alignments, found and
/// true, and applied to the centres of the four corner pixels of slice k; the distance of the pair is the
/// mean distance of the four. A motion of the stack as a whole makes no difference.
///
/// The accumulated distance of a slice is the same, taken between it and the reference slice of the run: what
/// the errors of the pairs in between add up to.
struct TruthDistance {
  std::vector<double> pairs; ///< pixels; element i belongs to the slices i and i + 1
  double median = 0.0;       ///< of the pairs; 0 without a pair
  double mean = 0.0;
  double max = 0.0;
  std::vector<double> accumulated; ///< pixels, one a slice; 0 for the reference
  double accumulatedMean = 0.0;    ///< of all slices but the reference
  double accumulatedMax = 0.0;
  std::vector<int> far; ///< lower slices of the pairs that are more than 1 pixel off
};

/// Compares two alignments of the same slices, width x height pixels each, aligned to a reference slice.
/// Slices that only one of the two has are left out.
TruthDistance compareWithTruth(std::span<const ZxAlignTransform> found,
                               std::span<const ZxAlignTransform> truth, int width, int height,
                               int reference = 0);

/// "Distance from the truth: median 0.12 px, mean 0.15 px, largest 1.30 px, pairs above 1 px: 1 (7 - 8)",
/// and on a second line "Accumulated over the stack: mean 0.40 px, largest 1.10 px".
std::string describe(const TruthDistance& distance);

} // namespace cli
