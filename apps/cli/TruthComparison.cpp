#include "TruthComparison.h"

#include "SlicePlacement.h"
#include "Text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace cli {
namespace {

std::array<SlicePoint, 4> corners(int width, int height)
{
  const double right = width - 1;
  const double bottom = height - 1;
  return {{{0.0, 0.0}, {right, 0.0}, {0.0, bottom}, {right, bottom}}};
}

double median(std::vector<double> values)
{
  if (values.empty()) return 0.0;
  std::sort(values.begin(), values.end());
  const std::size_t n = values.size();
  return (values[(n - 1) / 2] + values[n / 2]) / 2.0;
}

/// Two alignments of slices of one size.
struct Alignments {
  std::span<const ZxAlignTransform> found, truth;
  int width, height;

  /// Mean distance of the corners of a slice as seen from another one.
  double between(std::size_t slice, std::size_t other) const
  {
    const SlicePlacement foundHere(found[slice], width, height), foundThere(found[other], width, height);
    const SlicePlacement trueHere(truth[slice], width, height), trueThere(truth[other], width, height);
    double sum = 0.0;
    for (const SlicePoint corner : corners(width, height)) {
      const SlicePoint a = foundThere.mapInverse(foundHere.map(corner));
      const SlicePoint b = trueThere.mapInverse(trueHere.map(corner));
      sum += std::hypot(a.x - b.x, a.y - b.y);
    }
    return sum / 4.0;
  }
};

void addAccumulated(TruthDistance& result, const Alignments& alignments, std::size_t slices,
                    std::size_t reference)
{
  double sum = 0.0;
  for (std::size_t k = 0; k < slices; ++k) {
    result.accumulated.push_back(k == reference ? 0.0 : alignments.between(k, reference));
    sum += result.accumulated.back();
  }
  result.accumulatedMean = sum / static_cast<double>(slices - 1);
  result.accumulatedMax = *std::max_element(result.accumulated.begin(), result.accumulated.end());
}

} // namespace

TruthDistance compareWithTruth(std::span<const ZxAlignTransform> found,
                               std::span<const ZxAlignTransform> truth, int width, int height, int reference)
{
  const Alignments alignments{found, truth, width, height};
  TruthDistance result;
  const std::size_t slices = std::min(found.size(), truth.size());
  for (std::size_t k = 1; k < slices; ++k) {
    const double distance = alignments.between(k, k - 1);
    result.pairs.push_back(distance);
    if (!(distance <= 1.0)) result.far.push_back(static_cast<int>(k - 1));
  }
  if (result.pairs.empty()) return result;
  result.median = median(result.pairs);
  result.mean = std::accumulate(result.pairs.begin(), result.pairs.end(), 0.0) /
                static_cast<double>(result.pairs.size());
  result.max = *std::max_element(result.pairs.begin(), result.pairs.end());
  addAccumulated(result, alignments, slices,
                 std::min(static_cast<std::size_t>(std::max(0, reference)), slices - 1));
  return result;
}

std::string describe(const TruthDistance& distance)
{
  std::string text = "Distance from the truth: median " + fixed(distance.median, 2) + " px, mean " +
                     fixed(distance.mean, 2) + " px, largest " + fixed(distance.max, 2) +
                     " px, pairs above 1 px: " + std::to_string(distance.far.size());
  const char* separator = " (";
  for (const int lower : distance.far) {
    text += separator + std::to_string(lower) + " - " + std::to_string(lower + 1);
    separator = ", ";
  }
  if (!distance.far.empty()) text += ")";
  return text + "\nAccumulated over the stack: mean " + fixed(distance.accumulatedMean, 2) + " px, largest " +
         fixed(distance.accumulatedMax, 2) + " px";
}

} // namespace cli
