#include "mc/McHistogram.h"

#include <gtest/gtest.h>

#include <limits>

TEST(McHistogram, PutsValuesIntoEquallyWideBins)
{
  McHistogram h(-0.5, 3.5, 4);
  for (const double v : {0.0, 0.49, 0.5, 2.0, 2.9, 3.5, -0.5}) h.add(v);
  EXPECT_EQ(h.getCount(0), 3u); // -0.5, 0, 0.49
  EXPECT_EQ(h.getCount(1), 1u); // 0.5
  EXPECT_EQ(h.getCount(2), 1u); // 2
  EXPECT_EQ(h.getCount(3), 2u); // 2.9, and the upper end belongs to the last bin
  EXPECT_EQ(h.getFullestBin(), 0);
}

TEST(McHistogram, LeavesOutValuesBeyondItsRange)
{
  McHistogram h(1.0, 2.0, 2);
  const double inf = std::numeric_limits<double>::infinity();
  for (const double v : {0.999, 2.001, inf, -inf, std::numeric_limits<double>::quiet_NaN()}) h.add(v);
  EXPECT_EQ(h.getCount(0) + h.getCount(1), 0u);
}

TEST(McHistogram, TakesTheFirstOfEquallyFullBins)
{
  McHistogram h(0.0, 10.0, 10);
  for (const double v : {8.5, 3.5, 3.6, 8.6, 1.5}) h.add(v);
  EXPECT_EQ(h.getFullestBin(), 3);
}

// The range of an empty slice runs downwards and has a negative number of bins.
TEST(McHistogram, HasNoBinForAnImpossibleRange)
{
  for (McHistogram h :
       {McHistogram(999999.5, -999999.5, -1999999), McHistogram(0, 1, 0), McHistogram(1, 1, 5)}) {
    h.add(1.0);
    EXPECT_EQ(h.getNumBins(), 0);
    EXPECT_EQ(h.getFullestBin(), 0);
  }
}
