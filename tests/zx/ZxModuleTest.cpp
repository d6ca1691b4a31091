#include "zx/ZxModule.h"
#include "support/Volumes.h"
#include "zx/ZxObjectPool.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using Passes = std::vector<std::vector<std::string>>;

/// Notes which ports are new in a pass, and does what a test asks for.
class Probe : public ZxCompModule {
public:
  Probe()
    : ZxCompModule({&ZxLatticeInterface::getClassTypeId()}),
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

  ZxPortFloatTextN numbers;
  ZxPortMultiMenu menu;
  ZxPortButtonList buttons;
  std::function<void()> work;
  Passes passes; ///< the ports that were new in each
  std::vector<int> hits;
  int updates = 0;
};

class ZxModuleTest : public testing::Test {
protected:
  ~ZxModuleTest() override { pool.clear(); }
  static McHandle<ZxField3> volume()
  {
    return makeField<std::uint8_t>({2, 2, 2}, 1, [](auto...) { return 0; });
  }
  ZxObjectPool& pool = ZxObjectPool::getThePool();
  McHandle<Probe> probe = mcMake<Probe>();
};

} // namespace

TEST_F(ZxModuleTest, TellsWhatIsNewOnceAndChangesOnly)
{
  probe->fire();
  EXPECT_EQ(probe->updates, 2);
  probe->numbers.setValue(1, 2.0f);                               // what it was
  for (const int index : {1, 2, -1}) probe->menu.setValue(index); // likewise, and no such entries
  probe->fire();
  probe->numbers.setValue(1, 2.5f);
  probe->menu.setValue(0);
  probe->buttons.hit(1);
  EXPECT_FALSE(probe->menu.isNew()); // outside a pass
  probe->fire();
  probe->buttons.setButtonSensitive(0, false);
  for (const int none : {0, 2, -1}) probe->buttons.hit(none);
  probe->fire();
  EXPECT_EQ(probe->passes, (Passes{{}, {}, {"numbers", "menu", "buttons"}, {}}));
  EXPECT_EQ(probe->hits, (std::vector<int>{-1, -1, 1, -1}));
}

TEST_F(ZxModuleTest, StartsNoSecondPassForItsOwnChanges)
{
  probe->work = [this] {
    probe->numbers.setValue(0, probe->numbers.getValue(0) + 1);
    probe->portData.disconnect();
    probe->fire();
  };
  EXPECT_FALSE(probe->portData.connect(mcMake<ZxSpatialData>().get())); // not of an accepted type
  EXPECT_TRUE(probe->portData.connect(volume().get()));
  probe->fire();
  probe->work = {};
  probe->fire();
  EXPECT_EQ(probe->passes, (Passes{{"data"}, {}}));
  EXPECT_EQ(probe->numbers.getValue(0), 2.0f);
}

TEST_F(ZxModuleTest, LivesThroughAPassThatRemovesIt)
{
  pool.add(probe.get());
  Probe* const bare = probe.get();
  bare->work = [this, bare] {
    pool.remove(bare);
    probe = {};
  };
  bare->fire();
  EXPECT_TRUE(pool.objects().empty());
}

TEST_F(ZxModuleTest, ForgetsWhatIsRemovedFromThePool)
{
  const auto field = volume();
  pool.add(probe.get());
  pool.add(field.get());
  ASSERT_TRUE(probe->portData.connect(field.get()));
  probe->setResult(1, volume().get());
  probe->fire();
  EXPECT_EQ(probe->getResult(0), nullptr);
  const McHandle<ZxData> result(probe->getResult(1));
  ASSERT_TRUE(pool.contains(result.get()));
  EXPECT_EQ(result->getLabel(), "stack.tif (2)");
  // The module gives back the memory of a removed result and looks after its ports.
  const int updates = probe->updates;
  pool.remove(result.get());
  EXPECT_GT(probe->updates, updates);
  pool.add(result.get());
  EXPECT_EQ(probe->getResult(1), nullptr);
  pool.remove(field.get());
  EXPECT_FALSE(probe->portData.isConnected());
  EXPECT_EQ(probe->passes, (Passes{{"data"}, {"data"}}));
}

// While a pass handles what the user does, the input may be removed: the module must hear of it, in a pass of
// its own.
TEST_F(ZxModuleTest, HearsOfDataThatGoAwayDuringAPass)
{
  const McHandle<ZxField3> input = volume();
  pool.add(input.get());
  pool.add(probe.get());
  probe->portData.connect(input.get());
  probe->work = [&] {
    probe->work = nullptr;
    pool.remove(input.get());
  };
  probe->fire();
  EXPECT_EQ(probe->passes, (Passes{{"data"}, {"data"}}));
  EXPECT_FALSE(probe->portData.isConnected());
}

// A person at the window presses and types while a pass handles events: nothing of it is lost, nothing is
// seen by the pass that runs, and each change gets a pass of its own.
TEST_F(ZxModuleTest, TakesUpChangesFromOutsideAfterThePass)
{
  probe->work = [this] {
    probe->change([this] { probe->numbers.setValue(0, 7.0f); });
    for (const int button : {1, 0}) probe->change([this, button] { probe->buttons.hit(button); });
    EXPECT_TRUE(probe->isInPass());
    EXPECT_EQ(probe->numbers.getValue(0), 1.0f);
    probe->work = nullptr;
  };
  probe->change([this] { probe->buttons.hit(1); });
  EXPECT_EQ(probe->passes, (Passes{{"buttons"}, {"numbers"}, {"buttons"}, {"buttons"}}));
  EXPECT_EQ(probe->hits, (std::vector<int>{1, -1, 1, 0}));
}

// What a pass works on stays in memory until the pass has ended, even when the last one to hold it lets go.
TEST_F(ZxModuleTest, KeepsDataOfThePassAlive)
{
  struct Watched : ZxRegScalarField3 {
    explicit Watched(bool& flag) : ZxRegScalarField3(ZxLattice3::create({{2, 2, 2}})), alive(flag) {}
    ~Watched() override { alive = false; }
    bool& alive;
  };
  bool alive = true;
  auto* input = new Watched(alive);
  pool.add(input);
  pool.add(probe.get());
  probe->portData.connect(input);
  probe->work = [&] {
    pool.remove(input);
    EXPECT_TRUE(alive);
    probe->work = nullptr;
  };
  probe->fire();
  EXPECT_FALSE(alive);
}
