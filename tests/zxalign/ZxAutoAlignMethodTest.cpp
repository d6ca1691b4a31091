#include "zxalign/ZxAutoAlignMethod.h"

#include "ModuleTest.h"
#include "ZxOptimizeAlignMethod.h"
#include "zxalign/ZxAutoAlignMethodFabrique.h"

#include <cmath>
#include <memory>
#include <numbers>

namespace {

template <int N>
class Probe : public ZxAutoAlignMethod {
public:
  using ZxAutoAlignMethod::computeCenterAndOrientation;
  using ZxAutoAlignMethod::ZxAutoAlignMethod;
  int doLayout() override { return 0; }
  static ZxAutoAlignMethod* create(ZxAlignSlices* module) { return new Probe(module); }
};

using ZxAutoAlignMethodTest = ModuleTest;
using std::numbers::pi;

} // namespace

TEST_F(ZxAutoAlignMethodTest, FindsCentreAndDirection)
{
  connect(module->portData, greyStack({61, 41, 2}));
  const Probe<0> probe(module.get());
  McVec2f centre;
  float angle = 0, flipped = 0;
  for (const double degrees : {0.0, 90.0, 30.0, -30.0, 60.0}) {
    const double a = degrees * pi / 180.0;
    std::vector<unsigned char> image;
    for (int y = -17; y < 41 - 17; ++y)
      for (int x = -33; x < 61 - 33; ++x) {
        const double along = x * std::cos(a) + y * std::sin(a), across = -x * std::sin(a) + y * std::cos(a);
        image.push_back(std::abs(along) < 13.3 && std::abs(across) < 4.2 ? 100 : 0);
      }
    probe.computeCenterAndOrientation(image.data(), centre, angle, 0);
    EXPECT_NEAR(centre.x, 33, 1e-4f);
    EXPECT_NEAR(centre.y, 17, 1e-4f);
    EXPECT_NEAR(std::remainder(angle - (a + pi / 2), pi), 0.0, 0.03) << degrees;
    probe.computeCenterAndOrientation(image.data(), centre, flipped, 1);
    EXPECT_NEAR(std::remainder(angle + flipped, pi), 0.0, 1e-5) << degrees; // mirrored in x
  }
  // Black and white have no direction, but an angle all the same.
  const std::vector<unsigned char> black(61 * 41, 0), white(61 * 41, 255);
  probe.computeCenterAndOrientation(white.data(), centre, angle, 1);
  EXPECT_EQ(centre, (McVec2f{30, 20}));
  probe.computeCenterAndOrientation(black.data(), centre, flipped, 0);
  EXPECT_EQ(centre, McVec2f{});
  EXPECT_TRUE(std::isfinite(angle) && std::isfinite(flipped));
}

TEST_F(ZxAutoAlignMethodTest, AreRegisteredByNameAndNumber)
{
  ZxAutoAlignMethodFabrique& registry = *ZxAutoAlignMethodFabrique::getInstance();
  const auto made = [&](auto key) {
    return std::unique_ptr<ZxAutoAlignMethod>(registry.createAutoAlignMethod(module.get(), key));
  };
  EXPECT_NE(dynamic_cast<ZxOptimizeAlignMethod*>(made(1).get()), nullptr);
  EXPECT_NE(dynamic_cast<ZxOptimizeAlignMethod*>(made("OptimizeAlignMethod").get()), nullptr);
  for (const char* unknown : {"optimizeAlignMethod", "", "Probe"}) EXPECT_EQ(made(unknown), nullptr);
  for (const int unknown : {-1, 4, 99}) EXPECT_EQ(made(unknown), nullptr);

  registry.registerAutoAlignMethodPlugIn("Probe", &Probe<0>::create);
  registry.registerAutoAlignMethodPlugIn("Probe", &Probe<1>::create);
  EXPECT_NE(dynamic_cast<Probe<0>*>(made("Probe").get()), nullptr); // the first wins
  EXPECT_NE(dynamic_cast<Probe<0>*>(made(4).get()), nullptr);
  EXPECT_NE(dynamic_cast<Probe<1>*>(made(5).get()), nullptr);
  const std::vector<ZxAlignControl::Method> all = module->methods();
  ASSERT_EQ(all.size(), 6U);
  for (int id = 0; id < 6; ++id) EXPECT_EQ(all[static_cast<std::size_t>(id)].id, id);
  EXPECT_EQ(all[0].name, "CenterAlignMethod");
  EXPECT_EQ(all[2].name, "LandmarkAlignMethod");
  EXPECT_EQ(all[3].name, "EdgeDetectionAlignMethod");
  EXPECT_EQ(all[5].name, "Probe");
  connect(module->portData, greyStack({4, 4, 2}));
  EXPECT_EQ(module->doLayout(4), 1);
  EXPECT_EQ(module->doLayout(99), 0);
}
