#include "EntropyThreshold.h"

#include <gtest/gtest.h>

// Both classes together have the entropy of the whole histogram, whatever divides them: where the sums are
// exact the first grey value is as good as any, and it wins.
TEST(EntropyThreshold, TakesTheFirstOfEqualValues)
{
  std::array<std::uint64_t, 256> histogram{};
  EXPECT_EQ(entropyThreshold(histogram), 0);
  histogram[30] = histogram[90] = histogram[170] = histogram[220] = 25;
  EXPECT_EQ(entropyThreshold(histogram), 0);
}
