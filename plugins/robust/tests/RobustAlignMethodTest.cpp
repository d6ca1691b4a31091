#include "AlignMethodTest.h"
#include "zx/ZxInterpreter.h"

#include <algorithm>

namespace {

/// Six slices: one made slice, and what it looks like when it is moved.
class RobustAlignMethod : public AlignMethodTest {
protected:
  static constexpr int slices = 6;

  RobustAlignMethod() : AlignMethodTest("RobustAlignMethod", slices) {}
  static void SetUpTestSuite() { load("Robust", "registerRobust", PLUGIN); }

  void SetUp() override
  {
    AlignMethodTest::SetUp();
    for (const auto& [name, value] :
         {std::pair{"flip", "off"}, std::pair{"neighbours", "1"}, std::pair{"rotation", "on"}})
      ASSERT_EQ(control->setSetting(name, value), "");
    for (int k = 0; k < slices; ++k) fill(k, movedSlice(slice, 40.0 * k, 4.0 * k, -6.0 * k, 0));
    connect();
  }

  static void expectTransform(const ZxAlignTransform& t, double degrees, double tx, double ty)
  {
    AlignMethodTest::expectTransform(t, degrees, tx, ty, 0.1, 0.2);
  }
  void expectAligned(int k) const
  {
    expectTransform(control->transforms()[static_cast<std::size_t>(k)], 40.0 * k, 4.0 * k, -6.0 * k);
  }
  /// What the parameters say about a slice; -1 when they say nothing.
  double confidence(const char* name, std::string* reason = nullptr) const
  {
    const ZxParamBundle* all = volume->parameters().findBundle("AlignConfidence");
    const ZxParamBundle* own = all ? all->findBundle(name) : nullptr;
    double value = -1.0;
    if (own) own->findReals("confidence", 1, &value);
    if (own && reason) own->findString("reason", *reason);
    return value;
  }

  const TestSlice slice = madeSlice(width, height, 11);
};

TEST_F(RobustAlignMethod, AlignsSlicesWhereverTheyLie)
{
  EXPECT_EQ(control->alignAll(id, 0, {}), slices - 1);
  for (int k = 0; k < slices; ++k) expectAligned(k);
  std::string reason = "?";
  EXPECT_GT(confidence("slice0003", &reason), 0.9);
  EXPECT_EQ(reason, "");
  EXPECT_EQ(confidence("slice0000"), -1.0);
}

// Slice 2 shows something else: it is named and stays relative to slice 1, and slice 3 fits neither.
TEST_F(RobustAlignMethod, LeavesAPairThatItIsUnsureOf)
{
  fill(2, madeSlice(width, height, 99));
  std::vector<bool> changed;
  control->alignAll(id, 0, [&](const ZxAlignPairResult& pair) { changed.push_back(pair.changed); });
  EXPECT_EQ(changed, (std::vector<bool>{true, false, false, true, true}));
  expectTransform(control->transforms()[2], 40, 4, -6);
  std::string reason;
  EXPECT_LT(confidence("slice0002", &reason), 0.5);
  EXPECT_NE(reason, "");
}

TEST_F(RobustAlignMethod, BridgesADamagedSliceByItsNeighbours)
{
  fill(2, madeSlice(width, height, 99));
  ASSERT_EQ(control->setSetting("neighbours", "3"), "");
  EXPECT_EQ(control->alignAll(id, 4, {}), slices - 1);
  const ZxAlignTransform fixed = control->transforms()[4];
  EXPECT_EQ(fixed, ZxAlignTransform());
  // Placed on slice 4: what is known of a slice relative to it.
  const ZxAlignTransform start[] = {{}, {}, {}, {}, {16, -24, 160, false}, {}};
  control->setTransforms(start);
  control->alignAll(id, 4, {});
  for (const int k : {0, 1, 3, 4, 5}) expectAligned(k);
  EXPECT_LT(confidence("slice0002"), 0.5);
}

TEST_F(RobustAlignMethod, FlipsAMirroredSliceWhereThatIsAllowed)
{
  TestSlice turned = movedSlice(slice, 20, 12, 7, 0);
  for (int y = 0; y < height; ++y)
    std::reverse(turned.pixels.begin() + y * width, turned.pixels.begin() + (y + 1) * width);
  fill(1, turned);
  control->alignAll(id, 0, {});
  EXPECT_EQ(control->transforms()[1], ZxAlignTransform());
  ASSERT_EQ(control->setSetting("flip", "on"), "");
  control->alignAll(id, 0, {});
  EXPECT_TRUE(control->transforms()[1].flip);
  // The width is odd: the mirror line of the transform is the middle of the slice.
  expectTransform(control->transforms()[1], 20, 12, 7);
  EXPECT_FALSE(control->transforms()[2].flip);
  expectAligned(5);
}

TEST_F(RobustAlignMethod, OnlyShiftsWhereRotationIsNotAllowed)
{
  ASSERT_EQ(control->setSetting("rotation", "off"), "");
  const ZxAlignTransform start[] = {{}, {0, 0, 40, false}, {}, {}, {}, {}};
  control->setTransforms(start);
  control->alignAll(id, 0, {});
  EXPECT_EQ(control->transforms()[1].angleDegrees, 40.0f);
  expectAligned(1);
}

TEST_F(RobustAlignMethod, HasSettingsOfItsOwn)
{
  EXPECT_EQ(control->setSetting("least-confidence", "0.9"), "");
  EXPECT_EQ(control->getSetting("least-confidence"), "0.9");
  EXPECT_STREQ(ZxInterpreter::getTheInterpreter().getVar("::zxalign_robust(least-confidence)"), "0.9");
  EXPECT_EQ(control->setSetting("neighbours", "0"),
            "The setting neighbours cannot be \"0\"; it takes: 1 to 16.");
  EXPECT_EQ(control->getSetting("neighbours"), "1");
  // What a script has put there is looked at when it is used.
  ZxInterpreter::getTheInterpreter().setVar("::zxalign_robust(least-confidence)", "much");
  control->alignAll(id, 0, {});
  EXPECT_EQ(control->transforms()[1], ZxAlignTransform());
  EXPECT_EQ(control->setSetting("least-confidence", "0.75"), "");
}

} // namespace
