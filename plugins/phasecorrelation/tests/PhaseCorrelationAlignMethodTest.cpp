#include "TestSlices.h"
#include "mc/McMath.h"
#include "zx/ZxField3.h"
#include "zx/ZxInterpreter.h"
#include "zx/ZxModule.h"
#include "zx/ZxObjectPool.h"
#include "zx/ZxPackage.h"
#include "zxalign/ZxAlignControl.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

/// The module with the plug-in, loaded as programs load them, and three slices: one made slice, and twice
/// what it looks like when it is moved.
class PhaseCorrelationAlignMethod : public testing::Test {
protected:
  static constexpr int width = 203, height = 180;

  static void SetUpTestSuite()
  {
    const std::string entry[] = {"Phase", "registerPhaseCorrelation", PLUGIN};
    const std::string list[] = {ZxInterpreter::makeList(entry)};
    ZxInterpreter::getTheInterpreter().setVar(kZxAlignPlugInVariable, ZxInterpreter::makeList(list).c_str());
    ASSERT_EQ(ZxPackage::load("zxalign"), "");
  }

  void SetUp() override
  {
    m_module = McHandle<ZxCompModule>(
        dynamic_cast<ZxCompModule*>(ZxObjectPool::getThePool().create("ZxAlignSlices")));
    ASSERT_TRUE(m_module);
    control = dynamic_cast<ZxAlignControl*>(m_module.get());
    for (const ZxAlignControl::Method& method : control->methods())
      if (method.name == "PhaseCorrelationAlignMethod") id = method.id;
    ASSERT_GE(id, 4);
    ZxLatticeShape shape;
    shape.dims = {width, height, 3};
    m_volume = ZxField3::create(ZxLattice3::create(shape));
    const TestSlice slice = madeSlice(width, height, 11);
    fill(0, slice);
    fill(1, movedSlice(slice, 130, 50, -31, 0));
    fill(2, movedSlice(slice, 130, 50, -31, 0));
    m_module->portData.connect(m_volume.get());
    m_module->fire();
    ASSERT_EQ(control->numSlices(), 3);
  }

  void TearDown() override
  {
    m_module = {};
    ZxObjectPool::getThePool().clear();
  }

  void fill(int k, const TestSlice& slice)
  {
    auto* out = static_cast<unsigned char*>(m_volume->getLattice()->beginWrite(k));
    std::copy(slice.pixels.begin(), slice.pixels.end(), out);
    m_volume->getLattice()->endWrite(k);
  }

  static void expectTransform(const ZxAlignTransform& t, double degrees, double tx, double ty)
  {
    EXPECT_LT(angleBetween(static_cast<double>(t.angleDegrees), degrees), 0.5) << t.angleDegrees;
    EXPECT_NEAR(static_cast<double>(t.tx), tx, 1.0);
    EXPECT_NEAR(static_cast<double>(t.ty), ty, 1.0);
  }

  ZxAlignControl* control = nullptr;
  int id = 0;

private:
  McHandle<ZxCompModule> m_module;
  McHandle<ZxField3> m_volume;
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
