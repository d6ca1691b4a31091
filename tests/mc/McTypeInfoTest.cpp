#include "mc/McTypeInfo.h"

#include "mc/McHandable.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

class Thing : public McHandable {};

McHandable* makeThing() { return new Thing; }

} // namespace

TEST(McTypeInfo, KnowsAllBases)
{
  const McTypeInfo root("TestRoot", {});
  const McTypeInfo left("TestLeft", {&root});
  const McTypeInfo right("TestRight", {});
  const McTypeInfo both("TestBoth", {&left, &right}, makeThing);
  for (const McTypeInfo* const base : {&root, &left, &right, &both}) EXPECT_TRUE(both.isDerivedFrom(*base));
  EXPECT_FALSE(left.isDerivedFrom(right));
  EXPECT_FALSE(root.isDerivedFrom(both));
}

TEST(McTypeInfo, CreatesByNameWhatHasAFactory)
{
  const McTypeInfo thing("TestThing", {}, makeThing);
  const McTypeInfo abstract("TestAbstract", {});
  ASSERT_EQ(McTypeInfo::find("TestThing"), &thing);
  EXPECT_FALSE(abstract.canCreate());
  EXPECT_EQ(abstract.create(), nullptr);
  const McHandle<McHandable> object(thing.create());
  EXPECT_NE(dynamic_cast<const Thing*>(object.get()), nullptr);
}

TEST(McTypeInfo, ListsRecordsInTheirOrderWhileTheyLive)
{
  {
    const McTypeInfo second("TestB", {}), first("TestA", {});
    const auto all = McTypeInfo::all();
    const auto b = std::find(all.begin(), all.end(), &second), a = std::find(all.begin(), all.end(), &first);
    EXPECT_LT(b, a);
    EXPECT_NE(a, all.end());
  }
  EXPECT_EQ(McTypeInfo::find("TestA"), nullptr);
}
