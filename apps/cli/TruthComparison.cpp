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

} // namespace

TruthDistance compareWithTruth(std::span<const ZxAlignTransform> found,
                               std::span<const ZxAlignTransform> truth, int width, int height)
{
  TruthDistance result;
  const std::size_t slices = std::min(found.size(), truth.size());
  for (std::size_t k = 1; k < slices; ++k) {
    const SlicePlacement foundHere(found[k], width, height), foundBelow(found[k - 1], width, height);
    const SlicePlacement trueHere(truth[k], width, height), trueBelow(truth[k - 1], width, height);
    double sum = 0.0;
    for (const SlicePoint corner : corners(width, height)) {
      const SlicePoint a = foundBelow.mapInverse(foundHere.map(corner));
      const SlicePoint b = trueBelow.mapInverse(trueHere.map(corner));
      sum += std::hypot(a.x - b.x, a.y - b.y);
    }
    result.pairs.push_back(sum / 4.0);
    if (!(sum / 4.0 <= 1.0)) result.far.push_back(static_cast<int>(k - 1));
  }
  if (result.pairs.empty()) return result;
  result.median = median(result.pairs);
  result.mean = std::accumulate(result.pairs.begin(), result.pairs.end(), 0.0) /
                static_cast<double>(result.pairs.size());
  result.max = *std::max_element(result.pairs.begin(), result.pairs.end());
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
  return distance.far.empty() ? text : text + ")";
}

} // namespace cli
