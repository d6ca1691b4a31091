#include "ModuleTest.h"

#include <algorithm>
#include <cmath>

using ZxAlignDataTest = ModuleTest;

namespace {

/// The window's rule in plain numbers.
int greyOf(double v, double min, double max)
{
  const double scale = max == min ? 255.0 : 255.0 / (max - min);
  return static_cast<int>(std::clamp(std::floor((v - min) * scale + 0.5), 0.0, 255.0));
}

} // namespace

TEST_F(ZxAlignDataTest, MapsEveryTypeThroughTheWindow)
{
  const ZxDims dims{5, 3, 3};
  const auto value = [](int x, int y, int k, int) { return 90 + 3 * x + 10 * y + k; };
  const auto check = [&](auto zero) {
    connect(module->portData, makeField<decltype(zero)>(dims, 1, value).get());
    for (const auto& [min, max] : {std::pair{95.f, 118.f}, {100.f, 100.f}, {0.f, 255.f}, {121.f, 90.f}}) {
      module->setRangeCurrent(min, max);
      std::vector<int> editable, reference;
      for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 5; ++x) {
          editable.push_back(greyOf(value(x, y, 1, 0), min, max));
          reference.push_back(greyOf(value(x, y, 0, 0), min, max));
        }
      EXPECT_EQ(editableImage(), editable) << mcNameOf(mcPrimTypeOf<decltype(zero)>) << " " << min;
      EXPECT_EQ(referenceImage(), reference) << mcNameOf(mcPrimTypeOf<decltype(zero)>) << " " << min;
    }
  };
  check(std::uint8_t{});
  check(std::int16_t{});
  check(std::int32_t{});
  check(float{});
  check(double{});
  check(std::uint16_t{});
}

TEST_F(ZxAlignDataTest, CopiesColourAndWeighsItToGrey)
{
  const ZxDims dims{4, 3, 2};
  connect(module->portData, makeField<std::uint8_t>(dims, 4, greyAt).get());
  ASSERT_TRUE(module->sliceData().isColorField());
  const unsigned char* colour = module->sliceData().getReferenceColorPtr();
  const std::vector<int> grey = referenceImage();
  for (int y = 0, i = 0; y < 3; ++y)
    for (int x = 0; x < 4; ++x, ++i) {
      for (int c = 0; c < 4; ++c) EXPECT_EQ(colour[4 * i + c], greyAt(x, y, 0, c));
      const double weighed = 0.3 * greyAt(x, y, 0, 0) + 0.59 * greyAt(x, y, 0, 1) + 0.11 * greyAt(x, y, 0, 2);
      EXPECT_NEAR(grey[static_cast<std::size_t>(i)], weighed, 0.501);
    }
  EXPECT_NE(module->sliceData().getEditableColorPtr(), module->sliceData().getReferenceColorPtr());
  connect(module->portData, greyStack(dims).get());
  EXPECT_EQ(module->sliceData().getReferenceColorPtr(), module->getComputedEditableSlicePtr());
}

TEST_F(ZxAlignDataTest, BlackensWhatTheMaskExcludes)
{
  const ZxDims dims{9, 3, 2};
  const auto inside = [](int x, int y, int k, int) { return (x + 2 * y + k) % 3 == 0 ? 300 * (k + 1) : 0; };
  for (const int vars : {1, 4}) {
    const auto bright = [](int x, int y, int, int) { return 200 + x + y; };
    connect(module->portData, makeField<std::uint8_t>(dims, vars, bright).get());
    connect(module->portMask, makeLabels<std::uint16_t>(dims, inside).get());
    ASSERT_TRUE(module->portMask.isConnected());
    module->setRangeCurrent(0, 255);
    const unsigned char* colour = module->sliceData().getEditableColorPtr();
    const std::vector<int> image = editableImage();
    for (int y = 0, i = 0; y < 3; ++y)
      for (int x = 0; x < 9; ++x, ++i) {
        const int expected = inside(x, y, 1, 0) ? 200 + x + y : 0;
        EXPECT_EQ(image[static_cast<std::size_t>(i)], expected);
        EXPECT_EQ(colour[vars * i + vars - 1], expected);
      }
    connect(module->portMask, makeLabels<std::int32_t>(dims, [](auto...) { return 0; }).get());
    EXPECT_EQ(editableImage(), std::vector<int>(27, 0));
    module->portMask.disconnect();
    module->fire();
    EXPECT_EQ(editableImage()[1], 201);
  }
}

TEST_F(ZxAlignDataTest, ProjectsAwayFromTheOtherSlice)
{
  // Slice k is bright in column k alone, so that an image shows which slices it holds.
  const ZxDims dims{9, 2, 9};
  connect(module->portData,
          makeField<std::uint8_t>(dims, 1, [](int x, int, int k, int) { return x == k ? 250 : 0; }).get());
  module->portDisplayMode.setValue(1);
  module->portMaxIntNumSlices.setValue(0, 2);
  module->portMaxIntNumSlices.setValue(1, 3);
  module->fire();
  const auto slicesIn = [](const std::vector<int>& image) {
    std::vector<int> slices;
    for (int x = 0; x < 9; ++x)
      if (image[static_cast<std::size_t>(x)]) slices.push_back(x);
    return slices;
  };
  using Slices = std::vector<int>;
  const auto expectPair = [&](int side, int editable, const Slices& editables, const Slices& references) {
    module->setEditableSide(side);
    module->setSlice(editable);
    module->setReferenceSlice(editable - side);
    module->mapSlices();
    EXPECT_EQ(slicesIn(editableImage()), editables) << side << " " << editable;
    EXPECT_EQ(slicesIn(referenceImage()), references) << side << " " << editable;
  };
  expectPair(+1, 4, {4, 5, 6}, {2, 3});
  expectPair(+1, 8, {8}, {6, 7});
  expectPair(+1, 1, {1, 2, 3}, {0});
  expectPair(-1, 4, {2, 3, 4}, {5, 6});
  expectPair(-1, 7, {5, 6, 7}, {8});
  expectPair(-1, 0, {0}, {1, 2});
  module->portMaxIntNumSlices.setValue(0, 4e9f); // more than an integer
  module->portMaxIntNumSlices.setValue(1, 4e9f);
  module->fire();
  expectPair(-1, 7, {0, 1, 2, 3, 4, 5, 6, 7}, {8});
  expectPair(+1, 2, {2, 3, 4, 5, 6, 7, 8}, {0, 1});
}

TEST_F(ZxAlignDataTest, ProjectsTransformedAndWindowedSlices)
{
  connect(module->portData, greyStack({6, 4, 2}).get());
  setTransform(1, {2, -1, 0, true});
  module->portMaxIntNumSlices.setValue(1, 1);
  module->portDisplayMode.setValue(1);
  module->fire();
  module->setRangeCurrent(20, 200);
  std::vector<int> expected;
  for (int y = 0; y < 4; ++y)
    for (int x = 0; x < 6; ++x) {
      const int sx = 6 - (x - 2), sy = y + 1; // mirrored about x = 3, then shifted
      const bool inside = sx >= 0 && sx < 6 && sy < 4;
      const float v = inside ? static_cast<float>(greyAt(sx, sy, 1)) : 0.0f;
      expected.push_back(static_cast<int>(std::clamp((v - 20.0f) * (255.0f / 180.0f), 0.0f, 255.0f)));
    }
  EXPECT_EQ(editableImage(), expected);
  EXPECT_NE(std::find_if(work.steps().begin(), work.steps().end(),
                         [](const auto& s) { return s.text == "Projecting slice 1"; }),
            work.steps().end());
}

TEST_F(ZxAlignDataTest, ProjectsGreyBytesOnly)
{
  connect(module->portData, makeField<std::uint16_t>({4, 3, 2}, 1, greyAt).get());
  module->portDisplayMode.setValue(1);
  console.take();
  module->fire();
  EXPECT_EQ(console.take(), Lines(2, "Cannot project, only unsigned chars allowed"));
  EXPECT_EQ(editableImage(), std::vector<int>(12, 0));

  connect(module->portData, makeField<std::uint8_t>({4, 3, 2}, 4, greyAt).get());
  EXPECT_EQ(module->portDisplayMode.getValue(), 0); // switched off for colour
  module->portDisplayMode.setValue(1);
  console.take();
  module->fire();
  EXPECT_EQ(console.take(), Lines(2, "Cannot project, only 1 channel images allowed"));
}

TEST_F(ZxAlignDataTest, GivesRawSlicesAndMaskBits)
{
  const ZxDims dims{5, 3, 4};
  auto field =
      makeField<std::int16_t>(dims, 1, [](int x, int y, int k, int) { return x - 100 * y + 1000 * k; });
  connect(module->portData, field.get());
  const auto* raw = reinterpret_cast<const std::int16_t*>(module->sliceData().getOriginalDataPtr(3));
  EXPECT_EQ(raw[2 * 5 + 4], 4 - 200 + 3000);
  EXPECT_EQ(module->sliceData().getOriginalDataPtr(4), nullptr);
  EXPECT_EQ(module->sliceData().getOriginalDataPtr(-1), nullptr);
  EXPECT_TRUE(module->sliceData().getMaskBitfield(0).empty());
  connect(module->portMask, makeLabels<std::uint8_t>(dims, [](int x, int y, int k, int) {
                              return x == 4 && y == 1 && k == 2;
                            }).get());
  const std::vector<std::uint8_t> bits = module->sliceData().getMaskBitfield(2);
  EXPECT_EQ(bits, (std::vector<std::uint8_t>{0, 1U << (9 - 8)}));
  EXPECT_EQ(module->sliceData().getMaskBitfield(1), std::vector<std::uint8_t>(2, 0));
}
