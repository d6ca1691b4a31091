#include "MethodTest.h"

namespace {

constexpr int kGravity = 0;
const McVec2f kBlob{71, 52};

/// A long bright blob with a heavy end: no half turn and no mirror image of it looks the same.
double blob(double x, double y)
{
  const double u = (x - 70.0) * 0.96 + (y - 50.0) * 0.28;
  const double v = -(x - 70.0) * 0.28 + (y - 50.0) * 0.96;
  if (std::hypot(u - 17.0, v - 6.0) < 8.0) return 250.0;
  return u * u / (27.0 * 27.0) + v * v / (9.0 * 9.0) < 1.0 ? 120.0 : 0.0;
}

class ZxCenterAlignMethodTest : public MethodTest {
protected:
  // Odd and unequal sides: a swapped axis or a centre half a pixel off shows.
  void connectBlob(std::vector<SliceXForm> slices, int channels = 1)
  {
    connectWorld(161, 123, blob, std::move(slices), channels);
  }
};

} // namespace

TEST_F(ZxCenterAlignMethodTest, BringsATurnedAndShiftedBlobBack)
{
  for (const int channels : {1, 4})
    for (const float degrees : {25.0f, -70.0f, 118.0f, -175.0f}) {
      connectBlob({{}, {11.5f, -8.25f, degrees, false}}, channels);
      selectPair(1, 0);
      const float before = module->computeQuality();
      EXPECT_EQ(align(kGravity), 1);
      EXPECT_LT(distance(0, 1, kBlob, 25), 0.4) << degrees;
      EXPECT_GT(module->computeQuality(), before + 0.01f) << degrees;
      EXPECT_TRUE(module->isModified());
    }
}

TEST_F(ZxCenterAlignMethodTest, HeedsFlipsAndTheTransformsThatArePresent)
{
  // The middle slice lies mirrored against the first, and as the last one.
  connectBlob({{6, 9, -95, false}, {-4, 3, 20, true}, {2, -5, 40, true}});
  for (const bool flipped : {true, false}) {
    setTransform(1, {12, -7, 130, flipped});
    setTransform(2, {3, 4, 5, flipped});
    selectPair(2, 1);
    align(kGravity);
    EXPECT_LT(distance(1, 2, kBlob, 25), 0.4);
    EXPECT_EQ(module->getSlice(2).flip, flipped);
  }
  setTransform(0, {1, 2, 3, false});
  setTransform(1, {12, -7, 130, true});
  selectPair(0, 1);
  align(kGravity);
  EXPECT_LT(distance(0, 1, kBlob, 25), 0.4);
}

TEST_F(ZxCenterAlignMethodTest, FindsTheSamePlaceOnProjectionsWhichLieInPlaceAlready)
{
  connectBlob({{}, {}, {5, 8, 33, false}, {}});
  for (const int i : {0, 1}) module->portMaxIntNumSlices.setValue(i, 1);
  for (const int i : {0, 1}) module->portLinearRange.setValue(i, static_cast<float>(255 * i));
  module->fire();
  std::vector<SliceXForm> found[2];
  for (const bool projected : {false, true}) {
    module->setUseMaxIntProjection(projected);
    setTransform(1, {-4, 6, 90, true});
    setTransform(2, {7, -3, 180, true});
    setTransform(3, {1, 2, 20, false});
    selectPair(2, 1);
    module->mapSlices();
    EXPECT_EQ(module->doLayout(kGravity), 1);
    for (int k = 0; k < 4; ++k) found[projected].push_back(module->getSlice(k));
  }
  for (std::size_t k = 0; k < 4; ++k) {
    const SliceXForm &a = found[0][k], &b = found[1][k];
    EXPECT_NEAR(a.translationX, b.translationX, 0.3) << k;
    EXPECT_NEAR(a.translationY, b.translationY, 0.3) << k;
    EXPECT_NEAR(std::remainder(a.rotation - b.rotation, 360.0f), 0.0f, 0.5f) << k;
    EXPECT_EQ(a.flip, b.flip) << k;
  }
}

TEST_F(ZxCenterAlignMethodTest, CarriesTheSlicesBeyondAlongAndLeavesTheRest)
{
  connectBlob({{}, {}, {5, 8, 33, false}, {-6, 1, 50, false}});
  setTransform(3, {2, 2, 9, false});
  selectPair(2, 1);
  const double apart = distance(2, 3, kBlob, 25);
  module->getSlice(2).landmarks.append(QPoint(4, 5));
  const McDArray<QPoint> landmarks = module->getSlice(2).landmarks;
  align(kGravity);
  EXPECT_LT(distance(1, 2, kBlob, 25), 0.4);
  EXPECT_NEAR(distance(2, 3, kBlob, 25), apart, 1e-3);
  EXPECT_TRUE(isAt(0, {}));
  EXPECT_TRUE(isAt(1, {}));
  EXPECT_EQ(module->getSlice(2).landmarks, landmarks);
}

TEST_F(ZxCenterAlignMethodTest, OnlyShiftsWhereRotationIsNotAllowed)
{
  connectBlob({{}, {7, -4, 60, false}});
  setTransform(1, {1, 1, 15, false});
  module->alignSettings().rotationAllowed = false;
  selectPair(1, 0);
  align(kGravity);
  EXPECT_EQ(module->getSlice(1).rotation, 15.0f);
  // The centre of gravity of the blob.
  EXPECT_LT(distance(0, 1, {73.6f, 52.6f}, 0), 1.0);
  EXPECT_GT(distance(0, 1, kBlob, 25), 10.0);
}

// Without a direction there is nothing to be turned; both slices count as having the same one.
TEST_F(ZxCenterAlignMethodTest, DoesNotTurnWhatHasNoAxis)
{
  const MethodTest::World black = [](double, double) { return 0.0; };
  const MethodTest::World square = [](double x, double y) {
    return std::abs(x - 40) < 10 && std::abs(y - 30) < 10 ? 200.0 : 0.0;
  };
  for (const auto& [world, shift] : {std::pair{black, 0.0f}, std::pair{square, 6.0f}}) {
    connectWorld(80, 64, world, {{}, {shift, -shift, 0, false}});
    selectPair(1, 0);
    align(kGravity);
    const SliceXForm& found = module->getSlice(1);
    EXPECT_NEAR(found.rotation, 0.0f, 1e-3f);
    EXPECT_NEAR(found.translationX, shift, 1e-3f);
    EXPECT_NEAR(found.translationY, -shift, 1e-3f);
  }
}
