#include "AlignMethodTest.h"
#include "mc/McMath.h"

namespace {

/// Three slices: one made slice, and twice what it looks like when it is moved.
class PhaseCorrelationAlignMethod : public AlignMethodTest {
protected:
  PhaseCorrelationAlignMethod() : AlignMethodTest("PhaseCorrelationAlignMethod", 3) {}
  static void SetUpTestSuite() { load("Phase", "registerPhaseCorrelation", PLUGIN); }

  void SetUp() override
  {
    AlignMethodTest::SetUp();
    const TestSlice slice = madeSlice(width, height, 11);
    fill(0, slice);
    fill(1, movedSlice(slice, 130, 50, -31, 0));
    fill(2, movedSlice(slice, 130, 50, -31, 0));
    connect();
  }

  static void expectTransform(const ZxAlignTransform& t, double degrees, double tx, double ty)
  {
    AlignMethodTest::expectTransform(t, degrees, tx, ty, 0.5, 1.0);
  }
};

TEST_F(PhaseCorrelationAlignMethod, PutsSlicesOnTheReferenceAndCarriesTheOthersAlong)
{
  EXPECT_EQ(control->alignAll(id, 0, {}), 2);
  const auto found = control->transforms();
  EXPECT_EQ(found[0], ZxAlignTransform());
  for (int k : {1, 2}) expectTransform(found[static_cast<std::size_t>(k)], 130, 50, -31);
}

// The reference is turned by 20 degrees, shifted and lies beside its place: what was (50, -31) turns with it.
TEST_F(PhaseCorrelationAlignMethod, FollowsAReferenceThatIsTurnedItself)
{
  const ZxAlignTransform start[] = {{7, -4, 20, false}, {1, 2, 3, false}, {0, 0, 0, false}};
  control->setTransforms(start);
  control->alignAll(id, 0, {});
  double sine = 0, cosine = 1;
  mc::sinCosDegrees(20, sine, cosine);
  for (std::size_t k : {1u, 2u})
    expectTransform(control->transforms()[k], 150, 7 + 50 * cosine - 31 * sine, -4 - 50 * sine - 31 * cosine);
}

// What the two show is mirrored alike, so they still match when both are: dx and the turn change their sign.
TEST_F(PhaseCorrelationAlignMethod, TakesSlicesAsTheyAreDisplayed)
{
  const ZxAlignTransform start[] = {{0, 0, 0, true}, {0, 0, 0, true}, {0, 0, 0, true}};
  control->setTransforms(start);
  control->alignAll(id, 0, {});
  expectTransform(control->transforms()[1], -130, -50, -31);
  EXPECT_TRUE(control->transforms()[1].flip);
}

TEST_F(PhaseCorrelationAlignMethod, OnlyShiftsWhereRotationIsNotAllowed)
{
  EXPECT_EQ(control->setSetting("rotation", "off"), "");
  const ZxAlignTransform start[] = {{0, 0, 0, false}, {0, 0, 130, false}, {0, 0, 0, false}};
  control->setTransforms(start);
  control->alignAll(id, 0, {});
  EXPECT_EQ(control->transforms()[1].angleDegrees, 130.0f);
  expectTransform(control->transforms()[1], 130, 50, -31);
  // Turned by 130 degrees against its neighbour the last slice cannot be matched: it follows and stays there.
  EXPECT_EQ(control->transforms()[2].angleDegrees, 0.0f);
}

} // namespace
