#include "AlignmentOrder.h"

#include <gtest/gtest.h>

using Pairs = std::vector<ZxAlignPair>;

TEST(AlignmentOrder, GoesUpFromTheReferenceAndThenDown)
{
  EXPECT_EQ(alignmentOrder(2, 5), (Pairs{{3, 2, 1}, {4, 3, 1}, {1, 2, -1}, {0, 1, -1}}));
  EXPECT_EQ(alignmentOrder(0, 3), (Pairs{{1, 0, 1}, {2, 1, 1}}));
  EXPECT_EQ(alignmentOrder(2, 3), (Pairs{{1, 2, -1}, {0, 1, -1}}));
  EXPECT_EQ(alignmentOrder(0, 1), Pairs{});
  for (const int reference : {-1, 3}) EXPECT_EQ(alignmentOrder(reference, 3), Pairs{});
}
