#include "AlignmentStorage.h"

#include "support/Console.h"

#include <gtest/gtest.h>

#include <limits>

using storage::Missing;

namespace {

constexpr ZxDims kDims{20, 10, 3};

McDArray<SliceInfo> threeSlices()
{
  McDArray<SliceInfo> slices{SliceInfo(3, 4, 10, true), SliceInfo(-0.1f, 1e-7f, 359.99f, false), SliceInfo()};
  slices[0].landmarks = {{5, 6}, {7, 9}};
  slices[1].landmarks = {{0, 1}, {19, 9}};
  slices[2].landmarks = {{-3, 2}, {4, 4}};
  return slices;
}

} // namespace

TEST(AlignmentStorage, ComesBackExactly)
{
  const McDArray<SliceInfo> slices = threeSlices();
  ZxParamBundle parameters;
  parameters.getBundle("AlignTransform")->setNum("slice0009", 1);
  parameters.getBundle("AlignPoints")->getBundle("slice0009");
  ASSERT_TRUE(storage::writeTransforms(parameters, slices, kDims));
  ASSERT_TRUE(storage::writePoints(parameters, slices));
  const ZxParamBundle& stored = *parameters.findBundle("AlignTransform");
  ASSERT_EQ(stored.getNumEntries(), 4); // nothing of before
  EXPECT_EQ(stored.entries()[0].name, "slice0000");
  EXPECT_EQ(std::get<ZxParamBundle::Reals>(stored.entries()[0].value), (ZxParamBundle::Reals{3, -4, 10, 1}));
  EXPECT_EQ(std::get<ZxParamBundle::Reals>(stored.entries()[2].value)[3], -1.0);
  EXPECT_EQ(std::get<ZxParamBundle::Ints>(stored.entries()[3].value), (ZxParamBundle::Ints{20, 10}));
  EXPECT_EQ(parameters.findBundle("AlignPoints")->getNumEntries(), 3);

  McDArray<SliceInfo> back(3);
  ASSERT_TRUE(storage::readTransforms(parameters, back, kDims, Missing::Tell));
  ASSERT_TRUE(storage::readPoints(parameters, back, kDims, storage::pointBundle, Missing::Tell));
  EXPECT_EQ(back, slices);
}

TEST(AlignmentStorage, ReadsFiveFourAndThreeValues)
{
  struct Case {
    ZxParamBundle::Reals stored;
    bool flipBefore, flipAfter;
  };
  const Case cases[] = {{{1, -2, 30, -1, 1}, false, true}, {{1, -2, 30, -1, -1}, true, false},
                        {{1, -2, 30, 0, 1}, true, false},  {{1, -2, 30, 1}, false, true},
                        {{1, -2, 30, 0}, false, true},     {{1, -2, 30, -0.5}, true, false},
                        {{1, -2, 30}, true, true},         {{1, -2, 30}, false, false}};
  for (const Case& c : cases) {
    ZxParamBundle parameters;
    parameters.getBundle("AlignTransform")->setReals("slice0000", c.stored);
    McDArray<SliceInfo> slices{SliceInfo(9, 9, 9, c.flipBefore)};
    Console console;
    storage::readTransforms(parameters, slices, kDims, Missing::Tell);
    EXPECT_EQ(slices[0], SliceInfo(1, 2, 30, c.flipAfter)) << c.stored.size() << " values";
    // A reference has entries of four values only, and those that are missing are passed over.
    slices[0] = SliceInfo(9, 9, 9, c.flipBefore);
    storage::readTransforms(parameters, slices, kDims, Missing::PassOver);
    EXPECT_EQ(slices[0].translationX, c.stored.size() == 4 ? 1 : 9);
    EXPECT_EQ(console.take(), Lines{});
  }
}

TEST(AlignmentStorage, ScalesPixelsButNotAngles)
{
  ZxParamBundle parameters;
  ZxParamBundle& transforms = *parameters.getBundle("AlignTransform");
  transforms.setReals("slice0000", {3, -4, 10, -1});
  transforms.setNums("ImageSize", {10, 40});
  ZxParamBundle& points = *parameters.getBundle("AlignPoints");
  points.getBundle("slice0000")->setNums("point0000", {3, 7});
  points.getBundle("slice0000")->setNums("POINT0001", {-3, -7});

  McDArray<SliceInfo> slices(1);
  storage::readTransforms(parameters, slices, kDims, Missing::Tell);
  EXPECT_EQ(slices[0], SliceInfo(6, 1, 10, false));
  storage::readPoints(parameters, slices, kDims, storage::pointBundle, Missing::Tell); // no size of their own
  EXPECT_EQ(slices[0].landmarks, (McDArray<QPoint>{{3, 7}, {-3, -7}}));
  storage::readPoints(parameters, slices, kDims, storage::transformBundle, Missing::Tell);
  EXPECT_EQ(slices[0].landmarks, (McDArray<QPoint>{{6, 1}, {-6, -1}})); // 7 / 4 truncated
  points.setNums("ImageSize", {0, -3});                                 // no size at all
  storage::readPoints(parameters, slices, kDims, storage::pointBundle, Missing::Tell);
  EXPECT_EQ(slices[0].landmarks[0], QPoint(3, 7));
}

TEST(AlignmentStorage, TellsWhatIsMissing)
{
  McDArray<SliceInfo> slices = threeSlices();
  ZxParamBundle parameters;
  EXPECT_FALSE(storage::readTransforms(parameters, slices, kDims, Missing::Tell));
  EXPECT_FALSE(storage::readPoints(parameters, slices, kDims, storage::pointBundle, Missing::Tell));
  parameters.getBundle("AlignTransform")->setReals("slice0001", {1, 2});
  parameters.getBundle("AlignTransform")->setReals("slice0002", {0, 0, 0, -1});
  parameters.getBundle("AlignPoints")->getBundle("slice0000");
  Console console;
  storage::readTransforms(parameters, slices, kDims, Missing::Tell);
  EXPECT_EQ(console.take(), (Lines{"No transform for slice 0", "No transform for slice 1"}));
  storage::readPoints(parameters, slices, kDims, storage::pointBundle, Missing::Tell);
  EXPECT_EQ(console.take(), (Lines{"No landmarks for slice 1", "No landmarks for slice 2"}));
  EXPECT_TRUE(slices[0].landmarks.isEmpty());
  EXPECT_EQ(slices[1], threeSlices()[1]);
  // Plain values where the bundles belong.
  parameters.setNum("aligntransform", 1);
  parameters.setNum("alignpoints", 1);
  EXPECT_FALSE(storage::writeTransforms(parameters, slices, kDims));
  EXPECT_FALSE(storage::writePoints(parameters, slices));
}

TEST(AlignmentStorage, KeepsDamagedLandmarksWithinReach)
{
  ZxParamBundle parameters;
  ZxParamBundle* points = parameters.getBundle("AlignPoints")->getBundle("slice0000");
  points->setNums("Point0000", {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()});
  McDArray<SliceInfo> slices(1);
  ASSERT_TRUE(storage::readPoints(parameters, slices, {20, 10, 1}, "AlignPoints", Missing::PassOver));
  ASSERT_EQ(slices[0].landmarks.size(), 1u);
  EXPECT_EQ(slices[0].landmarks[0], QPoint(-(1 << 24), 1 << 24));
}
