#include <oneapi/tbb/global_control.h>

#include "RobustSearch.h"

#include "TestSlices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

using namespace robust;

Pyramid pyramid(const TestSlice& slice)
{
  return Pyramid({slice.width, slice.height, 1, slice.pixels.data(), {}});
}

/// The slice turned over in x about its centre.
TestSlice mirrored(const TestSlice& slice)
{
  TestSlice result = slice;
  const int centre = slice.width / 2;
  for (int y = 0; y < slice.height; ++y)
    for (int x = 0; x < slice.width; ++x) {
      const int from = std::clamp(2 * centre - x, 0, slice.width - 1);
      result.pixels[static_cast<std::size_t>(y * slice.width + x)] =
          slice.pixels[static_cast<std::size_t>(y * slice.width + from)];
    }
  return result;
}

double errorOf(const Finding& finding, const RigidMotion& truth, const TestSlice& slice)
{
  if (!finding.found || finding.motion.mirrored != truth.mirrored) return 1e3;
  return cornerDistance(finding.motion, truth, slice.width, slice.height);
}

/// Angles of every quadrant, shifts of unequal length to both sides, mirrored and not.
void expectFound(const TestSlice& slice, double background, double confidence)
{
  const double w = slice.width;
  for (const RigidMotion& truth : {RigidMotion{0, {0.25 * w, -0.2 * w}, false},
                                   {-37.5, {-0.25 * w, 0.1 * w}, true},
                                   {101, {0.05 * w, 0.2 * w}, false},
                                   {180, {-0.11 * w, 0.07 * w}, true},
                                   {-161.25, {0.2 * w, 0.15 * w}, false}}) {
    const TestSlice moved = movedSlice(slice, truth.degrees, truth.shift.x, truth.shift.y, background);
    Limits limits;
    limits.mirrored = true;
    const Finding finding =
        findMotion(pyramid(slice), pyramid(truth.mirrored ? mirrored(moved) : moved), limits);
    EXPECT_LT(errorOf(finding, truth, slice), 0.15) << truth.degrees;
    EXPECT_GT(finding.confidence, confidence) << truth.degrees;
  }
}

TEST(RobustSearch, FindsMadeSlicesOfRaggedSizesOnPadding)
{
  expectFound(madeSlice(203, 181, 3), 0, 0.9);
  expectFound(madeSlice(170, 229, 4), 255, 0.9);
}

TEST(RobustSearch, FindsRealSlicesAgainstThemselvesMoved)
{
  const TestSlice em = readSlice("em/isbi2012_sstem_train/7.png");
  const TestSlice ct = readSlice("medical/ct_head_png_series/texture-90.png");
  if (em.pixels.empty() || ct.pixels.empty()) GTEST_SKIP() << "the test data are not there";
  expectFound(em, 0, 0.9);
  expectFound(ct, 0, 0.6); // a head is nearly symmetric
}

// Beyond the working size slices are reduced; ragged sizes show whether their centres stay where they are.
TEST(RobustSearch, FindsSlicesLargerThanItsWorkingSize)
{
  const TestSlice slice = madeSlice(2307, 1801, 17), moved = movedSlice(slice, -63.5, 211.3, -90.8, 90);
  const Pyramid large = pyramid(slice);
  EXPECT_EQ(large.levels().front().width, 2307 / 2);
  EXPECT_LT(errorOf(findMotion(large, pyramid(moved), {}), {-63.5, {211.3, -90.8}, false}, slice), 0.1);
}

// Gain, offset and illumination differ; nothing is left of equal grey values.
TEST(RobustSearch, DoesNotMindOtherGreyValues)
{
  const TestSlice slice = madeSlice(240, 211, 5);
  TestSlice moved = movedSlice(slice, 62, 31.4, -17.2, 90);
  for (std::size_t i = 0; i < moved.pixels.size(); ++i)
    moved.pixels[i] = static_cast<unsigned char>(30 + moved.pixels[i] / 3 + static_cast<int>(i % 240) / 8);
  EXPECT_LT(errorOf(findMotion(pyramid(slice), pyramid(moved), {}), {62, {31.4, -17.2}, false}, slice), 0.4);
}

// All channels have the same grey value everywhere: only the colours tell.
TEST(RobustSearch, SeesColoursOfEqualGrey)
{
  const TestSlice slice = madeSlice(180, 200, 8), moved = movedSlice(slice, -75, 14, 22, 90);
  const auto coloured = [](const TestSlice& s) {
    std::vector<unsigned char> rgba;
    for (const unsigned char v : s.pixels) {
      const auto red = static_cast<unsigned char>(v / 2 + 60), green = static_cast<unsigned char>(250 - red);
      rgba.insert(rgba.end(), {red, green, 128, 255});
    }
    return rgba;
  };
  const std::vector<unsigned char> one = coloured(slice), other = coloured(moved);
  const Finding finding =
      findMotion(Pyramid({180, 200, 4, one.data(), {}}), Pyramid({180, 200, 4, other.data(), {}}), {});
  EXPECT_LT(errorOf(finding, {-75, {14, 22}, false}, slice), 0.3);
}

// A label that is the same on both slices would hold them where they are; the mask takes it away.
TEST(RobustSearch, HeedsTheMask)
{
  TestSlice slice = madeSlice(220, 190, 12), moved = movedSlice(slice, 0, 21, -9, 90);
  std::vector<std::uint8_t> mask(slice.pixels.size(), 1);
  for (int y = 0; y < 190; ++y)
    for (int x = 0; x < 110; ++x) {
      const auto i = static_cast<std::size_t>(y * 220 + x);
      slice.pixels[i] = moved.pixels[i] = (x / 7 * 31 + y / 5 * 17) % 3 ? 0 : 255;
      mask[i] = 0;
    }
  const Finding finding = findMotion(Pyramid({220, 190, 1, slice.pixels.data(), mask}),
                                     Pyramid({220, 190, 1, moved.pixels.data(), mask}), {});
  EXPECT_LT(errorOf(finding, {0, {21, -9}, false}, slice), 0.3);
}

TEST(RobustSearch, StaysWithinTheLimits)
{
  const TestSlice slice = madeSlice(200, 200, 5), moved = movedSlice(slice, 40, 30, 0, 90);
  Limits known;
  known.middle.degrees = 40;
  known.largestDegrees = 0;
  EXPECT_EQ(findMotion(pyramid(slice), pyramid(moved), known).motion.degrees, 40);
  EXPECT_LT(errorOf(findMotion(pyramid(slice), pyramid(moved), known), {40, {30, 0}, false}, slice), 0.1);
  Limits narrow = known;
  narrow.middle.degrees = 20;
  narrow.largestDegrees = 10;
  EXPECT_LT(findMotion(pyramid(slice), pyramid(moved), narrow).confidence, 0.5);
}

TEST(RobustSearch, IsUnsureWhereNothingIsShared)
{
  const TestSlice one = madeSlice(200, 200, 7), other = madeSlice(200, 200, 8);
  const TestSlice blank{200, 200, std::vector<unsigned char>(40000, 77)};
  const TestSlice small{1, 3, {1, 2, 3}};
  EXPECT_LT(findMotion(pyramid(one), pyramid(other), {}).confidence, 0.5);
  for (const auto& [a, b] :
       {std::pair{one, blank}, std::pair{blank, blank}, std::pair{small, small}, std::pair{one, small}}) {
    const Finding finding = findMotion(pyramid(a), pyramid(b), {});
    EXPECT_FALSE(finding.found);
    EXPECT_EQ(finding.confidence, 0.0);
  }
}

// A slice that repeats itself fits in many places.
TEST(RobustSearch, IsUnsureWhereAnotherPositionFitsAsWell)
{
  TestSlice grid{200, 200, {}};
  for (int y = 0; y < 200; ++y)
    for (int x = 0; x < 200; ++x) grid.pixels.push_back(x % 20 < 6 || y % 20 < 6 ? 220 : 60);
  const Finding finding = findMotion(pyramid(grid), pyramid(movedSlice(grid, 0, 7, 4, 60)), {});
  EXPECT_LT(finding.confidence, 0.7); // the limit below which a pair is left is 0.75
  EXPECT_LT(finding.evidence.distinctness, 0.1);
}

// A section that is nearly symmetric lies mirrored where that is not allowed: it would be forced upon the
// other one.
TEST(RobustSearch, IsUnsureOfASliceThatFitsBetterTurnedOver)
{
  const TestSlice other = madeSlice(205, 190, 21), turned = mirrored(other);
  TestSlice section = other;
  for (std::size_t i = 0; i < section.pixels.size(); ++i)
    section.pixels[i] = static_cast<unsigned char>((other.pixels[i] * 65 + turned.pixels[i] * 35) / 100);
  const TestSlice upright = movedSlice(section, 12, 9, -14, 90);
  const Finding right = findMotion(pyramid(section), pyramid(upright), {});
  EXPECT_LT(errorOf(right, {12, {9, -14}, false}, section), 0.2);
  EXPECT_GT(right.confidence, 0.9);
  const Finding wrong = findMotion(pyramid(section), pyramid(mirrored(upright)), {});
  EXPECT_LT(wrong.confidence, 0.5);
  EXPECT_EQ(weaknessOf(wrong.evidence), "it fits better when it is turned over");
}

// The contrast is on the left, so that growth by 3 % looks like a shift by a pixel and a half to the left
// there.
TEST(RobustSearch, TakesLessOfTheGrowthForAShift)
{
  const TestSlice tissue = madeSlice(220, 200, 31);
  TestSlice slice = tissue, grown = tissue;
  const auto at = [&](double x, double y) {
    const int column = static_cast<int>(x), row = static_cast<int>(y);
    const double fx = x - column, fy = y - row;
    const unsigned char* p = &tissue.pixels[static_cast<std::size_t>(row * 220 + column)];
    const double value = (p[0] * (1 - fx) + p[1] * fx) * (1 - fy) + (p[220] * (1 - fx) + p[221] * fx) * fy;
    return 90 + (value - 90) * (x < 110 ? 1.0 : 0.35);
  };
  for (int y = 0; y < 200; ++y)
    for (int x = 0; x < 220; ++x) {
      const auto i = static_cast<std::size_t>(y * 220 + x);
      slice.pixels[i] = static_cast<unsigned char>(at(std::min(x, 218), std::min(y, 198)));
      grown.pixels[i] = static_cast<unsigned char>(at(110 + (x - 110) / 1.03, 100 + (y - 100) / 1.03));
    }
  const RigidMotion motion = refined(pyramid(slice), pyramid(grown), {}, true);
  EXPECT_LT(std::abs(motion.shift.x), 1.0);
}

TEST(RobustSearch, StopsWhenItIsAskedTo)
{
  const TestSlice slice = madeSlice(160, 150, 5);
  for (const int last : {0, 1, 3}) {
    int asked = 0;
    EXPECT_FALSE(findMotion(pyramid(slice), pyramid(slice), {}, [&] { return asked++ >= last; }).found);
  }
}

TEST(RobustSearch, GivesTheSameBytesForEveryNumberOfThreads)
{
  const TestSlice slice = madeSlice(301, 277, 9), moved = movedSlice(slice, 77, -30, 41, 0);
  const auto found = [&](std::size_t threads) {
    const oneapi::tbb::global_control limit(oneapi::tbb::global_control::max_allowed_parallelism, threads);
    return findMotion(pyramid(slice), pyramid(moved), {});
  };
  const Finding one = found(1);
  for (const std::size_t threads : {2u, 5u}) {
    const Finding many = found(threads);
    EXPECT_EQ(std::memcmp(&one.motion.degrees, &many.motion.degrees, sizeof(double)), 0);
    EXPECT_EQ(std::memcmp(&one.motion.shift, &many.motion.shift, sizeof(Point)), 0);
    EXPECT_EQ(one.confidence, many.confidence);
  }
}

} // namespace
