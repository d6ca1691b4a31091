#include "AlignmentGeometry.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

// Voxels of 2 x 3 units, unlike sides.
constexpr ZxDims kDims{11, 7, 2};
constexpr ZxBox3f kBox{0, 20, 0, 18, 0, 1};

McDArray<SliceInfo> identityAnd(const SliceXForm& x) { return {SliceInfo(), SliceInfo(x)}; }

} // namespace

TEST(AlignmentGeometry, SmallestOutputHoldsEverySlice)
{
  struct Case {
    SliceXForm second;
    int width, height;
  };
  // Shifts count in x voxel sizes along both axes, and pixels are W / (xmax - xmin) to the unit: 11 * 26 / 20
  // and 7 * 22 / 18. About (5, 3), the centre in pixels, a quarter turn maps the box to x 4..22, y -4..16, a
  // half turn to x 0..20, y -6..12.
  const Case cases[] = {{{}, 11, 7},
                        {{3, 2, 0, false}, 14, 8},
                        {{-3, -2, 0, false}, 14, 8},
                        {{0, 0, 180, false}, 11, 9},
                        {{0, 0, 90, false}, 12, 8}};
  for (const Case& c : cases) {
    int width = 0, height = 0;
    minimalOutputSize(identityAnd(c.second), kDims, kBox, width, height);
    EXPECT_EQ(width, c.width) << c.second.rotation;
    EXPECT_EQ(height, c.height) << c.second.rotation;
  }
}

TEST(AlignmentGeometry, CentresWithTheOddPixelFirst)
{
  const int cases[][3] = {{0, 0, 0}, {1, 1, 0}, {3, 2, 1}, {4, 2, 2}, {-3, -2, -1}, {-4, -2, -2}};
  for (const auto& [difference, first, last] : cases) {
    const OutputBorders x = centredBorders(kDims, 11 + difference, 7);
    const OutputBorders y = centredBorders(kDims, 11, 7 + difference);
    EXPECT_TRUE(x.left == first && x.right == last && x.top == 0 && x.bottom == 0) << difference;
    EXPECT_TRUE(y.top == first && y.bottom == last && y.left == 0 && y.right == 0) << difference;
  }
}

TEST(AlignmentGeometry, OriginPlacesTheCommonBoxFirst)
{
  const McDArray<SliceInfo> slices = identityAnd({-3, -3, 0, false});
  // The box begins at -6 along both axes: 3 pixels of 2 units, 2 of 3 units.
  const OutputBorders b = originBorders(slices, kDims, kBox, 20, 10, 0, 0);
  EXPECT_TRUE(b.left == 3 && b.right == 20 - 11 - 3 && b.top == 2 && b.bottom == 10 - 7 - 2);
  // A height of 10 makes pixels of 2 units; the width only counts for the right border.
  const OutputBorders c = originBorders(slices, kDims, kBox, 20, 30, 5, 10);
  EXPECT_TRUE(c.left == 3 && c.right == 20 - 5 - 3 && c.top == 3 && c.bottom == 30 - 10 - 3);
  // Coordinates minus pixels, exact for boxes from 0 only.
  EXPECT_EQ(originBorders({SliceInfo()}, kDims, {10, 30, 0, 18, 0, 1}, 11, 7, 0, 0).left, 10 - 5);
}

TEST(AlignmentGeometry, SurvivesNumbersThatAreNone)
{
  const float huge = std::numeric_limits<float>::max();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  for (const float t : {huge, -huge, nan, std::numeric_limits<float>::infinity()}) {
    const McDArray<SliceInfo> slices = identityAnd({t, -t, t, false});
    const OutputBorders b = originBorders(slices, kDims, kBox, 1 << 20, 1, 0, 0);
    EXPECT_EQ(b.left + 11 + b.right, 1 << 20);
    int width = 0, height = 0;
    minimalOutputSize(slices, kDims, kBox, width, height);
    EXPECT_GE(width, 0);
  }
}

TEST(AlignmentGeometry, OutputBoxScalesTheMaxima)
{
  const ZxBox3f box = outputBox(kDims, {2, 20, 3, 18, 4, 5}, 21, 4);
  EXPECT_EQ(box, (ZxBox3f{2, 40, 3, 9, 4, 5}));
  EXPECT_EQ(outputBox({1, 7, 2}, {0, 0, 0, 18, 0, 1}, 5, 7).xmax, 0.0f);
}
