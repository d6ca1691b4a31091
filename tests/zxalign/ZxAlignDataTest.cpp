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
  const auto value = [](int x, int y, int k, int = 0) { return 90 + 3 * x + 10 * y + k; };
  const auto check = [&](auto zero) {
    connect(module->portData, makeField<decltype(zero)>({5, 3, 3}, 1, value));
    for (const auto& [min, max] : {std::pair{95.f, 118.f}, {100.f, 100.f}, {0.f, 255.f}, {121.f, 90.f}}) {
      module->setRangeCurrent(min, max);
      for (int i = 0; i < 15; ++i) {
        const auto at = static_cast<std::size_t>(i);
        EXPECT_EQ(editableImage()[at], greyOf(value(i % 5, i / 5, 1), min, max))
            << mcNameOf(mcPrimTypeOf<decltype(zero)>);
        EXPECT_EQ(referenceImage()[at], greyOf(value(i % 5, i / 5, 0), min, max));
      }
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
  connect(module->portData, makeField<std::uint8_t>({4, 3, 2}, 4, greyAt));
  const unsigned char* colour = module->sliceData().getReferenceColorPtr();
  for (int i = 0; i < 12; ++i) {
    const auto at = [i](int c) { return greyAt(i % 4, i / 4, 0, c); };
    for (int c = 0; c < 4; ++c) EXPECT_EQ(colour[4 * i + c], at(c));
    EXPECT_NEAR(referenceImage()[static_cast<std::size_t>(i)], 0.3 * at(0) + 0.59 * at(1) + 0.11 * at(2),
                0.501);
  }
  EXPECT_NE(module->sliceData().getEditableColorPtr(), colour);
  connect(module->portData, greyStack({4, 3, 2}));
  EXPECT_EQ(module->sliceData().getReferenceColorPtr(), module->getComputedEditableSlicePtr());
}

TEST_F(ZxAlignDataTest, BlackensWhatTheMaskExcludes)
{
  const ZxDims dims{9, 3, 2};
  // Labels of more than 8 bits: the lowest byte alone would be 0.
  const auto inside = [](int x, int y, int k, int = 0) {
    return (x + 2 * y + k) % 3 == 0 ? 256 * (k + 1) : 0;
  };
  for (const int vars : {1, 4}) {
    connect(module->portData,
            makeField<std::uint8_t>(dims, vars, [](int x, int y, auto...) { return 200 + x + y; }));
    connect(module->portMask, makeLabels<std::uint16_t>(dims, inside));
    module->setRangeCurrent(0, 255);
    const unsigned char* colour = module->sliceData().getEditableColorPtr();
    for (int i = 0; i < 27; ++i) {
      const int expected = inside(i % 9, i / 9, 1) ? 200 + i % 9 + i / 9 : 0;
      EXPECT_EQ(editableImage()[static_cast<std::size_t>(i)], expected);
      EXPECT_EQ(colour[vars * i + vars - 1], expected);
    }
    module->portMask.disconnect();
    module->fire();
    EXPECT_EQ(editableImage()[1], 201);
  }
}

TEST_F(ZxAlignDataTest, ProjectsAwayFromTheOtherSlice)
{
  // Slice k is bright in column k alone, so that an image shows which slices it holds.
  connect(module->portData,
          makeField<std::uint8_t>({9, 1, 9}, 1, [](int x, int, int k, int) { return x == k ? 250 : 0; }));
  module->portDisplayMode.setValue(1);
  struct Case {
    float referenceThickness, editableThickness;
    int side, editable;
    const char *references, *editables; // one character a slice
  };
  const Case cases[] = {
      {2, 3, +1, 4, "..xx.....", "....xxx.."},      {2, 3, +1, 8, "......xx.", "........x"},
      {2, 3, +1, 1, "x........", ".xxx....."},      {2, 3, -1, 4, ".....xx..", "..xxx...."},
      {2, 3, -1, 7, "........x", ".....xxx."},      {2, 3, -1, 0, ".xx......", "x........"},
      {1, 1, -1, 3, "....x....", "...x....."},      {4e9f, 4e9f, -1, 7, "........x", "xxxxxxxx."},
      {4e9f, 4e9f, +1, 2, "xx.......", "..xxxxxxx"}};
  for (const Case& c : cases) {
    module->portMaxIntNumSlices.setValue(0, c.referenceThickness);
    module->portMaxIntNumSlices.setValue(1, c.editableThickness);
    module->fire();
    module->setEditableSide(c.side);
    module->setSlice(c.editable);
    module->setReferenceSlice(c.editable - c.side);
    module->mapSlices();
    for (std::size_t k = 0; k < 9; ++k) {
      EXPECT_EQ(referenceImage()[k] != 0, c.references[k] == 'x') << c.side << " " << c.editable;
      EXPECT_EQ(editableImage()[k] != 0, c.editables[k] == 'x') << c.side << " " << c.editable;
    }
  }
}

TEST_F(ZxAlignDataTest, ProjectsTransformedAndWindowedSlices)
{
  connect(module->portData, greyStack({6, 4, 2}));
  setTransform(1, {2, -1, 0, true});
  module->portDisplayMode.setValue(1);
  module->fire();
  module->setRangeCurrent(20, 200);
  for (int i = 0; i < 24; ++i) {
    const int sx = 6 - (i % 6 - 2), sy = i / 6 + 1; // mirrored about x = 3, then shifted
    const float v = sx >= 0 && sx < 6 && sy < 4 ? static_cast<float>(greyAt(sx, sy, 1)) : 0.0f;
    EXPECT_EQ(editableImage()[static_cast<std::size_t>(i)],
              static_cast<int>(std::clamp((v - 20.0f) * (255.0f / 180.0f), 0.0f, 255.0f)));
  }
}

TEST_F(ZxAlignDataTest, ProjectsGreyBytesOnly)
{
  connect(module->portData, makeField<std::uint16_t>({4, 3, 2}, 1, greyAt));
  module->portDisplayMode.setValue(1);
  module->fire();
  EXPECT_EQ(console.take(), Lines(2, "Cannot project, only unsigned chars allowed"));
  EXPECT_EQ(editableImage(), std::vector<int>(12, 0));
  connect(module->portData, makeField<std::uint8_t>({4, 3, 2}, 4, greyAt));
  EXPECT_EQ(module->portDisplayMode.getValue(), 0); // switched off for colour
  EXPECT_EQ(console.take(), Lines{});
  module->portDisplayMode.setValue(1);
  module->fire();
  EXPECT_EQ(console.take(), Lines(2, "Cannot project, only 1 channel images allowed"));
}
