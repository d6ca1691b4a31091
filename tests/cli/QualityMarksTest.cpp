#include "QualityCommand.h"

#include <gtest/gtest.h>

namespace {

std::vector<int> marked(const std::vector<double>& qualities)
{
  std::vector<cli::PairQuality> pairs;
  for (const double quality : qualities) pairs.push_back({static_cast<int>(pairs.size()), quality, false});
  cli::markWorstTenth(pairs);
  std::vector<int> lower;
  for (const cli::PairQuality& pair : pairs)
    if (pair.worst) lower.push_back(pair.lower);
  return lower;
}

TEST(QualityMarks, MarkTheWorstTenthAndAtLeastOne)
{
  EXPECT_EQ(marked({0.7}), std::vector<int>({0}));
  EXPECT_EQ(marked({0.9, 0.5, 0.5}), std::vector<int>({1}));
  EXPECT_EQ(marked({0.9, 0.4, 0.9, 0.9, 0.9, 0.9, 0.9, 0.9, 0.9, 0.8, 0.3}), std::vector<int>({1, 10}));
}

} // namespace
