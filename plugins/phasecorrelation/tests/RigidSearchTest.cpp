#include "RigidSearch.h"

#include "TestSlices.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace phasecorrelation;
using namespace spectral;

Picture picture(const TestSlice& slice)
{
  return pictureOf(slice.pixels.data(), slice.width, slice.height, false);
}

struct Displacement {
  double degrees, dx, dy;
};

/// Shares of the width are shifts to both sides; angles of every quadrant, on and beside the half turn.
void expectFound(const TestSlice& slice, double background)
{
  const double w = slice.width;
  for (const Displacement& d : {Displacement{0, 0.25 * w, -0.2 * w},
                                {-37.5, -0.25 * w, 0.1 * w},
                                {101, 0.05 * w, 0.25 * w},
                                {180, -0.11 * w, 0.07 * w},
                                {-161.25, 0.25 * w, 0.25 * w}}) {
    const TestSlice moved = movedSlice(slice, d.degrees, d.dx, d.dy, background);
    const auto motion = findMotion(picture(slice), picture(moved));
    ASSERT_TRUE(motion) << d.degrees;
    EXPECT_LT(angleBetween(motion->degrees, d.degrees), 0.5) << motion->degrees;
    EXPECT_LT(std::hypot(motion->dx - d.dx, motion->dy - d.dy), 1.0) << d.degrees;
  }
}

TEST(RigidSearch, FindsMadeSlicesOfRaggedSizes)
{
  expectFound(madeSlice(203, 181, 3), 0);
  expectFound(madeSlice(170, 229, 4), 255);
}

TEST(RigidSearch, FindsRealSlicesAgainstThemselvesMoved)
{
  const TestSlice em = readSlice("em/isbi2012_sstem_train/7.png");
  const TestSlice ct = readSlice("medical/ct_head_png_series/texture-90.png");
  if (em.pixels.empty() || ct.pixels.empty()) GTEST_SKIP() << "the test data are not there";
  expectFound(em, 0);
  expectFound(ct, 0);
}

// A third in both directions leaves less than half of the slice.
TEST(RigidSearch, FindsAShiftOfAThird)
{
  const TestSlice slice = madeSlice(240, 240, 9);
  const auto motion = findMotion(picture(slice), picture(movedSlice(slice, 70, 80, -79, 0)));
  ASSERT_TRUE(motion);
  EXPECT_LT(angleBetween(motion->degrees, 70), 0.5);
  EXPECT_LT(std::hypot(motion->dx - 80, motion->dy + 79), 1.0);
}

TEST(RigidSearch, FindsTheDisplacementAloneAtAKnownAngle)
{
  const TestSlice slice = madeSlice(160, 201, 5);
  const auto motion = findDisplacement(picture(slice), picture(movedSlice(slice, 30, -23.5, 12.25, 0)), 30);
  ASSERT_TRUE(motion);
  EXPECT_EQ(motion->degrees, 30);
  EXPECT_NEAR(motion->dx, -23.5, 0.3);
  EXPECT_NEAR(motion->dy, 12.25, 0.3);
}

// Wide slices are searched reduced: the result still counts pixels of the slice.
TEST(RigidSearch, CountsPixelsOfTheSliceWhenItIsReduced)
{
  const TestSlice slice = madeSlice(1301, 902, 6);
  const auto motion = findMotion(picture(slice), picture(movedSlice(slice, -120, 210, 133, 0)));
  ASSERT_TRUE(motion);
  EXPECT_LT(angleBetween(motion->degrees, -120), 0.2);
  EXPECT_LT(std::hypot(motion->dx - 210, motion->dy - 133), 1.0);
}

TEST(RigidSearch, FindsNothingWhereNothingIsShared)
{
  const TestSlice one = madeSlice(200, 200, 7), other = madeSlice(200, 200, 8);
  const TestSlice blank{200, 200, std::vector<unsigned char>(40000, 77)};
  const TestSlice small{1, 3, {1, 2, 3}};
  EXPECT_FALSE(findMotion(picture(one), picture(other)));
  EXPECT_FALSE(findMotion(picture(one), picture(blank)));
  EXPECT_FALSE(findMotion(picture(blank), picture(blank)));
  EXPECT_FALSE(findMotion(picture(small), picture(small)));
}

TEST(RigidSearch, StopsWhenItIsAskedTo)
{
  const TestSlice slice = madeSlice(160, 150, 5);
  for (const int last : {0, 5, 20}) {
    int asked = 0;
    EXPECT_FALSE(findMotion(picture(slice), picture(slice), [&] { return asked++ >= last; }));
    EXPECT_LE(asked, last + 4);
  }
}

TEST(Picture, MirroringAndReducingKeepTheCentreOfTheSlice)
{
  const TestSlice slice = madeSlice(64, 51, 1);
  const Picture plain = picture(slice), mirrored = pictureOf(slice.pixels.data(), 64, 51, true);
  EXPECT_EQ(plain.centreX, 32);
  EXPECT_EQ(mirrored.centreX, 31);
  EXPECT_EQ(mirrored.values[51], plain.values[12]);
  const Picture third = reduced(plain, 22);
  EXPECT_EQ(third.width, 21);
  EXPECT_EQ(third.height, 17);
  // Pixel (10, 8) of a third covers 30 to 32 and 24 to 26, its centre lies at (31, 25).
  EXPECT_DOUBLE_EQ(third.centreX, 10 + 1 / 3.0);
  EXPECT_DOUBLE_EQ(third.centreY, 8);
}

} // namespace
