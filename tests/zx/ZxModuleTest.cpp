#include "zx/ZxModule.h"
#include "support/Volumes.h"
#include "zx/ZxObjectPool.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

/// Notes which ports are new in a pass, and does what a test asks for.
class Probe : public ZxCompModule {
public:
  Probe()
    : ZxCompModule({&ZxLatticeInterface::getClassTypeId()}),
      labels(this, "labels", {&ZxLabelLatticeInterface::getClassTypeId()}),
      numbers(this, "numbers", "Numbers:", {{"a", 1.0f}, {"b", 2.0f}}),
      menu(this, "menu", "", {"one", "two"}, 1), buttons(this, "buttons", "", {"go", "stop"})
  {
  }
  void update() override { ++updates; }
  void compute() override
  {
    passes.emplace_back();
    for (const ZxPort* p : getPorts())
      if (p->isNew()) passes.back().push_back(p->getName());
    hits.push_back(buttons.getHit());
    if (work) work();
  }
  /// The ports that were new in the passes since the last call, one string a pass.
  std::vector<std::vector<std::string>> take() { return std::exchange(passes, {}); }

  ZxConnection labels;
  ZxPortFloatTextN numbers;
  ZxPortMultiMenu menu;
  ZxPortButtonList buttons;
  std::function<void()> work;
  std::vector<std::vector<std::string>> passes;
  std::vector<int> hits;
  int updates = 0;
};

using Passes = std::vector<std::vector<std::string>>;

class ZxModuleTest : public testing::Test {
protected:
  ~ZxModuleTest() override { pool.clear(); }
  ZxObjectPool& pool = ZxObjectPool::getThePool();
  McHandle<Probe> probe = mcMake<Probe>();
};

McHandle<ZxField3> volume()
{
  return makeField<std::uint8_t>({2, 2, 2}, 1, [](auto...) { return 0; });
}

} // namespace

TEST_F(ZxModuleTest, TellsWhatIsNewOnceAndChangesOnly)
{
  probe->fire();
  EXPECT_EQ(probe->take(), Passes{{}});
  EXPECT_EQ(probe->updates, 2);
  probe->numbers.setValue(1, 2.0f); // what it was
  probe->menu.setValue(1);
  probe->menu.setValue(2); // no such entry
  probe->menu.setValue(-1);
  probe->fire();
  probe->numbers.setValue(1, 2.5f);
  probe->menu.setValue(0);
  EXPECT_FALSE(probe->menu.isNew()); // outside a pass
  probe->fire();
  probe->fire();
  EXPECT_EQ(probe->take(), (Passes{{}, {"numbers", "menu"}, {}}));
  EXPECT_EQ(probe->findPort("menu"), &probe->menu);
  EXPECT_EQ(probe->findPort("Menu"), nullptr);
  EXPECT_EQ(probe->getPorts()[0], &probe->portData);
}

TEST_F(ZxModuleTest, StartsNoSecondPassForItsOwnChanges)
{
  probe->work = [this] {
    probe->numbers.setValue(0, probe->numbers.getValue(0) + 1);
    probe->portData.disconnect();
    probe->fire();
  };
  ASSERT_TRUE(probe->portData.connect(volume().get()));
  probe->fire();
  probe->work = {};
  probe->fire();
  EXPECT_EQ(probe->take(), (Passes{{"data"}, {}}));
  EXPECT_EQ(probe->numbers.getValue(0), 2.0f);
}

TEST_F(ZxModuleTest, LivesThroughAPassThatRemovesIt)
{
  pool.add(probe.get());
  Probe* const bare = probe.get();
  bool done = false;
  bare->work = [this, bare, &done] {
    pool.remove(bare);
    probe = {};
    done = true;
  };
  bare->fire();
  EXPECT_TRUE(done);
  EXPECT_TRUE(pool.objects().empty());
}

TEST_F(ZxModuleTest, PressesLastForOnePass)
{
  probe->buttons.hit(1);
  probe->fire();
  probe->fire();
  probe->buttons.setButtonSensitive(0, false);
  for (const int none : {0, 2, -1}) probe->buttons.hit(none);
  probe->fire();
  EXPECT_EQ(probe->hits, (std::vector<int>{1, -1, -1}));
  EXPECT_EQ(probe->take(), (Passes{{"buttons"}, {}, {}}));
}

TEST_F(ZxModuleTest, ConnectsAcceptedTypesAndKeepsThemAlive)
{
  auto labels = makeLabels<std::uint8_t>({2, 2, 2}, [](auto...) { return 0; });
  EXPECT_FALSE(probe->labels.connect(volume().get()));
  EXPECT_FALSE(probe->portData.connect(mcMake<ZxSpatialData>().get()));
  EXPECT_TRUE(probe->labels.connect(labels.get()));
  EXPECT_TRUE(probe->portData.connect(labels.get())); // labels are a lattice, too
  probe->fire();
  EXPECT_TRUE(probe->labels.connect(labels.get()));
  probe->fire();
  EXPECT_EQ(probe->take(), (Passes{{"data", "labels"}, {}}));
  ZxLattice* const lattice = labels->getLattice();
  labels = {};
  EXPECT_EQ(probe->labels.getLattice(), lattice);
  EXPECT_EQ(probe->labels.getSource()->getLabel().str(), "labels.tif");
}

TEST_F(ZxModuleTest, ForgetsWhatIsRemovedFromThePool)
{
  auto field = volume();
  pool.add(probe.get());
  pool.add(field.get());
  ASSERT_TRUE(probe->portData.connect(field.get()));
  probe->setResult(1, volume().get());
  probe->fire();
  EXPECT_EQ(probe->getResult(0), nullptr);
  EXPECT_EQ(probe->getResult(-1), nullptr);
  ZxData* const result = probe->getResult(1);
  ASSERT_NE(result, nullptr);
  EXPECT_TRUE(pool.contains(result));
  probe->take();

  // The module gives back the memory of a removed result and looks after its ports.
  const McHandle<ZxData> held(result);
  const int updates = probe->updates;
  pool.remove(result);
  EXPECT_EQ(probe->getResult(1), nullptr);
  EXPECT_GT(probe->updates, updates);
  pool.add(result);
  EXPECT_EQ(probe->getResult(1), nullptr);

  EXPECT_TRUE(probe->take().empty());
  pool.remove(field.get());
  EXPECT_FALSE(probe->portData.isConnected());
  EXPECT_EQ(probe->take(), Passes{{"data"}});
}

TEST_F(ZxModuleTest, PoolNumbersLabelsAndCreatesByName)
{
  const auto a = volume(), b = volume(), c = volume();
  for (const auto& v : {a, b, c, a}) pool.add(v.get());
  pool.add(nullptr);
  ASSERT_EQ(pool.objects().size(), 3U);
  EXPECT_EQ(b->getLabel().str(), "stack.tif (2)");
  EXPECT_EQ(c->getLabel().str(), "stack.tif (3)");
  EXPECT_EQ(pool.find("stack.tif (2)"), b.get());
  EXPECT_EQ(pool.find("stack"), nullptr);
  EXPECT_EQ(pool.create("ZxNothing"), nullptr);
  EXPECT_EQ(pool.create("ZxModule"), nullptr); // has no factory
  static const McTypeInfo type("Probe", {&ZxCompModule::getClassTypeId()},
                               []() -> McHandable* { return new Probe; });
  ZxObject* const made = pool.create("Probe");
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->getLabel().str(), "Probe");
  EXPECT_TRUE(pool.contains(made));
}
