#include "EntropyThreshold.h"

#include "mc/McMath.h"

#include <numeric>

int entropyThreshold(const std::array<std::uint64_t, 256>& histogram)
{
  const auto total =
      static_cast<double>(std::accumulate(histogram.begin(), histogram.end(), std::uint64_t{0}));
  std::array<double, 256> terms{}; // p log2 p
  for (std::size_t i = 0; i < terms.size(); ++i) {
    if (histogram[i] == 0) continue;
    const double p = static_cast<double>(histogram[i]) / total;
    terms[i] = p * (mc::log(p) / mc::log(2.0));
  }
  int best = 0;
  double largest = 0.0;
  for (std::size_t t = 0; t < terms.size(); ++t) {
    const auto border = terms.begin() + static_cast<std::ptrdiff_t>(t) + 1;
    const double entropy =
        -std::accumulate(terms.begin(), border, 0.0) - std::accumulate(border, terms.end(), 0.0);
    if (t > 0 && !(entropy > largest)) continue;
    largest = entropy;
    best = static_cast<int>(t);
  }
  return best;
}
