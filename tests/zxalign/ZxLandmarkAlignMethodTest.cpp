#include "MethodTest.h"

namespace {

constexpr int kLandmarks = 2;
// cos 0.8, sin 0.6: multiples of 5 stay whole when turned.
const float kTurn = static_cast<float>(std::atan2(0.6, 0.8) * 180.0 / 3.14159265358979323846);
const McVec2f kMiddle{64, 46};

class ZxLandmarkAlignMethodTest : public MethodTest {
protected:
  void SetUp() override
  {
    connectWorld(121, 91, [](double, double) { return 0.0; },
                 {{}, {10, -15, kTurn, false}, {-5, 20, -kTurn, true}, {0, 5, 90, true}});
    // About (60, 45), multiples of 5 away from it, no symmetry.
    place({{25, 10}, {-15, 30}, {-20, -25}, {30, -35}, {5, 30}});
  }

  /// Puts landmarks on every slice where it shows these places of the world, given from the slice centre.
  void place(const std::vector<McVec2f>& places)
  {
    for (int k = 0; k < size.slices; ++k) {
      McDArray<QPoint>& landmarks = module->getSlice(k).landmarks;
      landmarks.clear();
      for (const McVec2f& p : places) {
        const McVec2f at = inSlice(k, {60 + p.x, 45 + p.y});
        landmarks.append(QPoint(mc::roundHalfUp(at.x), mc::roundHalfUp(at.y)));
      }
    }
  }
};

} // namespace

TEST_F(ZxLandmarkAlignMethodTest, BringsLandmarksTogetherExactly)
{
  selectPair(1, 0);
  EXPECT_EQ(align(kLandmarks), 1);
  EXPECT_LT(distance(0, 1, kMiddle, 40), 1e-3);
  EXPECT_TRUE(module->isModified());
  const SliceXForm found = module->getSlice(1);
  align(kLandmarks); // in register already
  EXPECT_NEAR(module->getSlice(1).rotation, found.rotation, 1e-4f);
  EXPECT_NEAR(module->getSlice(1).translationX, found.translationX, 1e-4f);
}

TEST_F(ZxLandmarkAlignMethodTest, HeedsFlipsAndTheTransformsThatArePresent)
{
  setTransform(0, {3, -8, 77, false});
  setTransform(2, {30, 1, -20, true});
  setTransform(3, {-9, 2, 200, true});
  module->setEditableSide(-1);
  for (const auto& [editable, reference] : {std::pair{2, 3}, std::pair{3, 2}, std::pair{2, 0}}) {
    module->setReferenceSlice(reference);
    module->setSlice(editable);
    module->setReferenceFixed(true);
    align(kLandmarks);
    EXPECT_LT(distance(reference, editable, kMiddle, 40), 1e-3) << editable << reference;
  }
}

TEST_F(ZxLandmarkAlignMethodTest, WorksWithTwoLandmarksAndShiftsToOne)
{
  place({{20, -15}, {-30, 5}});
  selectPair(1, 0);
  align(kLandmarks);
  EXPECT_LT(distance(0, 1, kMiddle, 40), 1e-3);

  place({{20, -15}});
  setTransform(0, {0, 0, 12, false});
  align(kLandmarks); // one point has no direction: the slice takes that of the reference
  EXPECT_NEAR(module->getSlice(1).rotation, 12.0f, 1e-4f);
  EXPECT_LT(distance(0, 1, {80, 30}, 0), 1e-3);

  place({{20, -15}, {-30, 5}});
  setTransform(1, {0, 0, 30, false});
  module->alignSettings().rotationAllowed = false;
  align(kLandmarks);
  EXPECT_EQ(module->getSlice(1).rotation, 30.0f);
  EXPECT_LT(distance(0, 1, {55, 40}, 0), 1e-3);
}

TEST_F(ZxLandmarkAlignMethodTest, LeavesASliceWithoutLandmarksAlone)
{
  selectPair(2, 1);
  for (const int empty : {1, 2}) {
    SetUp();
    module->getSlice(empty).landmarks.clear();
    selectPair(2, 1);
    setTransform(2, {3, 1, 4, true});
    module->setModified(false);
    console.take();
    EXPECT_EQ(align(kLandmarks), 0);
    EXPECT_TRUE(isAt(2, {3, 1, 4, true}));
    EXPECT_FALSE(module->isModified());
    EXPECT_EQ(console.take(),
              Lines{"Slice " + std::to_string(empty) + " has no landmarks; slice 2 stays where it is."});
  }
}
