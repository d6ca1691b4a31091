#include "zxalign/ZxAutoAlignMethod.h"

#include "ModuleTest.h"
#include "ZxOptimizeAlignMethod.h"
#include "zxalign/ZxAutoAlignMethodFabrique.h"

#include <cmath>
#include <memory>
#include <numbers>

namespace {

class Probe : public ZxAutoAlignMethod {
public:
  using ZxAutoAlignMethod::computeCenterAndOrientation;
  using ZxAutoAlignMethod::ZxAutoAlignMethod;
  int doLayout() override { return 0; }
};

class OtherProbe : public Probe {
public:
  using Probe::Probe;
};

using ZxAutoAlignMethodTest = ModuleTest;
using std::numbers::pi;

} // namespace

TEST_F(ZxAutoAlignMethodTest, FindsCentreAndDirection)
{
  connect(module->portData, greyStack({61, 41, 2}).get());
  struct Case {
    double degrees; // of the long axis, x towards y (downwards)
    double expected;
  };
  // The direction is the one across the long axis; its sign is that of the formula.
  for (const double degrees : {0.0, 90.0, 30.0, -30.0, 60.0}) {
    const double a = degrees * pi / 180.0;
    std::vector<unsigned char> image;
    for (int y = 0; y < 41; ++y)
      for (int x = 0; x < 61; ++x) {
        const double u = (x - 33) * std::cos(a) + (y - 17) * std::sin(a);
        const double v = -(x - 33) * std::sin(a) + (y - 17) * std::cos(a);
        image.push_back(std::abs(u) < 13.3 && std::abs(v) < 4.2 ? 100 : 0);
      }
    McVec2f centre;
    float angle = 0, flipped = 0;
    const Probe probe(module.get());
    probe.computeCenterAndOrientation(image.data(), centre, angle, 0);
    EXPECT_NEAR(centre.x, 33, 1e-4f);
    EXPECT_NEAR(centre.y, 17, 1e-4f);
    EXPECT_NEAR(std::remainder(angle - (a + pi / 2), pi), 0.0, 0.03) << degrees;
    probe.computeCenterAndOrientation(image.data(), centre, flipped, 1);
    EXPECT_NEAR(std::remainder(angle + flipped, pi), 0.0, 1e-5) << degrees; // mirrored in x
  }
}

TEST_F(ZxAutoAlignMethodTest, GivesAnAngleToWhatHasNone)
{
  connect(module->portData, greyStack({8, 8, 2}).get());
  McVec2f centre{9, 9};
  float angle = 7;
  const std::vector<unsigned char> black(64, 0), white(64, 255);
  Probe(module.get()).computeCenterAndOrientation(black.data(), centre, angle, 0);
  EXPECT_EQ(centre, McVec2f{});
  EXPECT_TRUE(std::isfinite(angle));
  Probe(module.get()).computeCenterAndOrientation(white.data(), centre, angle, 1);
  EXPECT_EQ(centre, (McVec2f{3.5f, 3.5f}));
  EXPECT_TRUE(std::isfinite(angle));
}

TEST_F(ZxAutoAlignMethodTest, AreRegisteredByNameAndNumber)
{
  ZxAutoAlignMethodFabrique& registry = *ZxAutoAlignMethodFabrique::getInstance();
  using Method = std::unique_ptr<ZxAutoAlignMethod>;
  const auto is = [](const Method& m, const auto* zero) {
    return dynamic_cast<std::remove_pointer_t<decltype(zero)>*>(m.get()) != nullptr;
  };
  const ZxOptimizeAlignMethod* const optimize = nullptr;
  EXPECT_TRUE(is(Method(registry.createAutoAlignMethod(module.get(), 1)), optimize));
  EXPECT_TRUE(is(Method(registry.createAutoAlignMethod(module.get(), "OptimizeAlignMethod")), optimize));
  for (const char* unknown : {"optimizeAlignMethod", "", "Probe"})
    EXPECT_EQ(registry.createAutoAlignMethod(module.get(), unknown), nullptr);
  for (const int unknown : {-1, 4, 99})
    EXPECT_EQ(registry.createAutoAlignMethod(module.get(), unknown), nullptr);

  const auto make = [](ZxAlignSlices* m) -> ZxAutoAlignMethod* { return new Probe(m); };
  const auto makeOther = [](ZxAlignSlices* m) -> ZxAutoAlignMethod* { return new OtherProbe(m); };
  registry.registerAutoAlignMethodPlugIn("Probe", make);
  registry.registerAutoAlignMethodPlugIn("Probe", makeOther);
  const OtherProbe* const other = nullptr;
  EXPECT_FALSE(is(Method(registry.createAutoAlignMethod(module.get(), "Probe")), other)); // the first wins
  EXPECT_FALSE(is(Method(registry.createAutoAlignMethod(module.get(), 4)), other));
  EXPECT_TRUE(is(Method(registry.createAutoAlignMethod(module.get(), 5)), other));
  const std::vector<ZxAlignControl::Method> all = module->methods();
  ASSERT_EQ(all.size(), 3U);
  EXPECT_EQ(all[0].id, 1);
  EXPECT_EQ(all[2].id, 5);
  EXPECT_EQ(all[2].name, "Probe");
  connect(module->portData, greyStack({4, 4, 2}).get());
  EXPECT_EQ(module->doLayout(4), 1);
  EXPECT_EQ(module->doLayout(0), 0);
}
