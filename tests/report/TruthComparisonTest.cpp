#include "TruthComparison.h"

#include "mc/McMath.h"

#include <gtest/gtest.h>

#include <cmath>

using cli::compareWithTruth;

namespace {

constexpr int kWidth = 61, kHeight = 44; // odd and even, unequal: a swapped axis or a wrong centre shows

const std::vector<ZxAlignTransform> kTruth = {{1.5f, -7.25f, 3.0f, false},
                                              {-4.0f, 2.0f, -5.5f, false},
                                              {0.0f, 9.0f, 12.0f, true},
                                              {6.0f, 1.0f, 0.5f, true}};

/// A transform followed by a motion of the whole stack about the centre of the slices.
ZxAlignTransform moved(const ZxAlignTransform& t, const ZxAlignTransform& motion)
{
  double s = 0, c = 1;
  mc::sinCosDegrees(motion.angleDegrees, s, c);
  return {static_cast<float>(t.tx * c + t.ty * s + motion.tx),
          static_cast<float>(-t.tx * s + t.ty * c + motion.ty), t.angleDegrees + motion.angleDegrees, t.flip};
}

} // namespace

TEST(TruthComparison, MotionOfTheWholeStackMakesNoDifference)
{
  std::vector<ZxAlignTransform> found;
  for (const auto& t : kTruth) found.push_back(moved(t, {30.0f, -11.0f, 40.0f, false}));
  const cli::TruthDistance distance = compareWithTruth(found, kTruth, kWidth, kHeight);
  ASSERT_EQ(distance.pairs.size(), 3u);
  EXPECT_LT(distance.max, 1e-4);
  EXPECT_TRUE(distance.far.empty());
}

TEST(TruthComparison, DisplacedSliceCountsInBothOfItsPairs)
{
  std::vector<ZxAlignTransform> found = kTruth;
  found[1].tx += 3.0f;
  found[1].ty -= 4.0f;
  const cli::TruthDistance distance = compareWithTruth(found, kTruth, kWidth, kHeight, 2);
  ASSERT_EQ(distance.pairs.size(), 3u);
  EXPECT_NEAR(distance.pairs[0], 5.0, 1e-5);
  EXPECT_NEAR(distance.pairs[1], 5.0, 1e-5);
  EXPECT_NEAR(distance.pairs[2], 0.0, 1e-5);
  EXPECT_NEAR(distance.median, 5.0, 1e-5);
  EXPECT_NEAR(distance.mean, 10.0 / 3.0, 1e-5);
  EXPECT_EQ(distance.far, (std::vector<int>{0, 1}));
  EXPECT_EQ(cli::describe(distance),
            "Distance from the truth: median 5.00 px, mean 3.33 px, largest 5.00 px, "
            "pairs above 1 px: 2 (0 - 1, 1 - 2)\n"
            "Accumulated over the stack: mean 1.67 px, largest 5.00 px");
  EXPECT_NEAR(distance.accumulated[0], 0.0, 1e-5);
  EXPECT_NEAR(distance.accumulated[1], 5.0, 1e-5);
}

// Each slice is a pixel off its neighbour: seen from slice 1 the last one is two off.
TEST(TruthComparison, ErrorsOfPairsAddUpAlongTheStack)
{
  std::vector<ZxAlignTransform> found(4);
  for (std::size_t k = 0; k < 4; ++k) found[k].tx = static_cast<float>(k);
  const std::vector<ZxAlignTransform> truth(4);
  const cli::TruthDistance distance = compareWithTruth(found, truth, kWidth, kHeight, 1);
  EXPECT_EQ(distance.accumulated, (std::vector<double>{1.0, 0.0, 1.0, 2.0}));
  EXPECT_NEAR(distance.accumulatedMean, 4.0 / 3.0, 1e-12);
  EXPECT_EQ(distance.accumulatedMax, 2.0);
}

TEST(TruthComparison, TurnedSliceMovesItsCornersAboutTheIntegerCentre)
{
  const std::vector<ZxAlignTransform> truth(2);
  std::vector<ZxAlignTransform> found = truth;
  found[1].angleDegrees = 2.0f;
  double mean = 0.0; // a chord of 2 degrees at each corner's distance from (30, 22)
  for (const double x : {-30.0, 30.0})
    for (const double y : {-22.0, 21.0}) mean += 2.0 * std::sin(mc::kPi / 180.0) * std::hypot(x, y) / 4.0;
  EXPECT_NEAR(compareWithTruth(found, truth, kWidth, kHeight).mean, mean, 1e-6);
  found[1] = {0.0f, 0.0f, 0.0f, true}; // mirrored about x = 30: 0 and 60 change places
  EXPECT_NEAR(compareWithTruth(found, truth, kWidth, kHeight).mean, 60.0, 1e-6);
  EXPECT_TRUE(compareWithTruth(found, std::span(truth).first(1), kWidth, kHeight).pairs.empty());
}
