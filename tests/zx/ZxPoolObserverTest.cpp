#include "zx/ZxPoolObserver.h"
#include "support/Volumes.h"
#include "zx/ZxModule.h"
#include "zx/ZxModuleClasses.h"
#include "zx/ZxObjectPool.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using Events = std::vector<std::string>;

class Recorder : public ZxPoolObserver {
public:
  void objectAdded(ZxObject* o) override { note("added ", o); }
  void objectRemoved(ZxObject* o) override { note("removed ", o); }
  void objectChanged(ZxObject* o) override { note("changed ", o); }
  void portsChanged(ZxModule* m) override { note("ports ", m); }
  Events take() { return std::exchange(m_events, {}); }

private:
  void note(const char* what, ZxObject* o)
  {
    m_events.push_back(what + o->getLabel().str());
    if (m_events.size() > 1 && m_events.back() == m_events[m_events.size() - 2]) m_events.pop_back();
  }
  Events m_events;
};

/// Lets go of inputs of a single slice.
class Picky : public ZxCompModule {
public:
  static const McTypeInfo& getClassTypeId()
  {
    static const McTypeInfo type("Picky", {&ZxCompModule::getClassTypeId()},
                                 []() -> McHandable* { return new Picky; });
    return type;
  }
  const McTypeInfo& getTypeId() const override { return getClassTypeId(); }
  Picky() : ZxCompModule({&ZxLabelLatticeInterface::getClassTypeId()}) {}
  void compute() override
  {
    if (portData.isNew() && portData.getLattice() && portData.getLattice()->getDims().slices == 1)
      portData.disconnect();
  }
};

class ZxPoolObserverTest : public testing::Test {
protected:
  ~ZxPoolObserverTest() override { pool.clear(); }
  static McHandle<ZxUniformLabelField3> labels(int slices)
  {
    auto field = makeLabels<std::uint8_t>({2, 2, slices}, [](auto...) { return 0; });
    field->setLabel("labels");
    return field;
  }
  ZxObjectPool& pool = ZxObjectPool::getThePool();
  const McTypeInfo& picky = Picky::getClassTypeId();
};

} // namespace

TEST_F(ZxPoolObserverTest, HearsWhatHappensToObjectsOfThePoolOnly)
{
  Recorder recorder;
  const auto field = labels(2);
  field->touch();
  EXPECT_EQ(recorder.take(), Events());
  pool.add(field.get());
  field->setLabel("cells");
  field->setSaved();
  pool.remove(field.get());
  pool.remove(field.get());
  field->touch();
  EXPECT_EQ(recorder.take(), (Events{"added labels", "changed cells", "removed cells"}));
}

TEST_F(ZxPoolObserverTest, HearsWhenAModuleLetsGoOfItsInput)
{
  EXPECT_TRUE(ZxModuleClasses::attachableTo(*mcMake<ZxSpatialData>()).empty());
  const auto one = labels(1), two = labels(2);
  pool.add(one.get());
  const auto classes = ZxModuleClasses::attachableTo(*two); // Packages that were loaded have some, too.
  ASSERT_EQ(std::count(classes.begin(), classes.end(), &picky), 1);
  Recorder recorder;
  ZxModule* module = ZxModuleClasses::attach(picky, *two);
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(module->portData.getSource(), two.get());
  EXPECT_EQ(recorder.take(), (Events{"added Picky", "ports Picky"}));
  module->change([&] { module->portData.connect(one.get()); });
  EXPECT_FALSE(module->portData.isConnected());
  EXPECT_EQ(recorder.take(), Events{"ports Picky"});
}
