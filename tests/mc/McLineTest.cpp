#include "mc/McLine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

// What is left of the line (x1, y1) - (x2, y2) in [0, 9] x [0, 4].
testing::AssertionResult cutTo(const McLine& line, const McLine& expected)
{
  McLine part;
  if (!line.intersect(0, 0, 9, 4, 0.0001, part)) return testing::AssertionFailure() << "missed";
  if (part.x1 == expected.x1 && part.y1 == expected.y1 && part.x2 == expected.x2 && part.y2 == expected.y2)
    return testing::AssertionSuccess();
  return testing::AssertionFailure() << part.x1 << " " << part.y1 << " - " << part.x2 << " " << part.y2;
}

bool misses(const McLine& line)
{
  McLine part;
  return !line.intersect(0, 0, 9, 4, 0.0001, part);
}

} // namespace

TEST(McLine, IsCutWithARectangleInItsOwnDirectionAndBeyondItsPoints)
{
  EXPECT_TRUE(cutTo({2, 1, 3, 1}, {0, 1, 9, 1}));
  EXPECT_TRUE(cutTo({-20, 1, -21, 1}, {9, 1, 0, 1}));
  EXPECT_TRUE(cutTo({7.5, 30, 7.5, 20}, {7.5, 4, 7.5, 0}));
  EXPECT_TRUE(cutTo({0, -2, 2, 0}, {2, 0, 6, 4}));
  EXPECT_TRUE(cutTo({8, 0, 9, 1}, {8, 0, 9, 1}));
}

// Neighbouring positions must not change an end on a side: 0.1 + 0.2 is not 0.3.
TEST(McLine, EndsExactlyOnTheSidesThatCutIt)
{
  McLine part;
  ASSERT_TRUE((McLine{0.1 + 0.2, 0.1, 1.7, 0.8}.intersect(0, 0, 9, 4, 0.0001, part)));
  EXPECT_EQ(part.y1 == 0.0 || part.x1 == 0.0, true);
  EXPECT_EQ(part.y2 == 4.0 || part.x2 == 9.0, true);
  EXPECT_NEAR(part.length(), std::hypot(part.x2 - part.x1, part.y2 - part.y1), 1e-12);
}

TEST(McLine, TriesTheToleranceOnlyWhenItMissesWithout)
{
  EXPECT_TRUE(cutTo({0, -0.00005, 1, -0.00005}, {-0.0001, -0.00005, 9.0001, -0.00005}));
  EXPECT_TRUE(cutTo({0, 0, 1, 0}, {0, 0, 9, 0}));
  EXPECT_TRUE(misses({0, -0.0002, 1, -0.0002}));
  EXPECT_TRUE(misses({0, 4.0002, 1, 4.0002}));
  EXPECT_TRUE(misses({-3, 0, 0, -3}));
}

TEST(McLine, WithoutDirectionOrNotFiniteItMisses)
{
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(misses({3, 3, 3, 3}));
  EXPECT_TRUE(misses({nan, 1, 2, 3}));
  EXPECT_TRUE(misses({0, 1, 2, nan}));
  EXPECT_TRUE(misses({0, 1, infinity, infinity}));
}
