#include "zx/ZxParamBundle.h"

#include <gtest/gtest.h>

using Ints = ZxParamBundle::Ints;
using Reals = ZxParamBundle::Reals;

TEST(ZxParamBundle, MatchesNamesWithoutCase)
{
  ZxParamBundle b;
  b.setNums("Point0001", {3, 4});
  b.setNums("pOINT0001", {5, 6});
  ASSERT_EQ(b.getNumEntries(), 1);
  EXPECT_EQ(b.entries()[0].name, "Point0001"); // the first spelling stays
  int p[2];
  EXPECT_TRUE(b.findNums("point0001", 2, p));
  EXPECT_EQ(p[1], 6);
  b.setString("a", "1");
  b.setString("[", "2"); // not letters that differ by 32
  b.setString("{", "3");
  EXPECT_EQ(b.getNumEntries(), 4);
  EXPECT_TRUE(b.remove("POINT0001"));
  EXPECT_FALSE(b.remove("POINT0001"));
  EXPECT_FALSE(b.findNums("Point0001", 2, p));
}

TEST(ZxParamBundle, FindsExactCountsAndKindsOnly)
{
  ZxParamBundle b;
  b.setReals("r", {0.1, 2, 3, 4});
  b.setNums("i", {1, 2, 3});
  b.setString("s", "12");
  double r[5] = {-1, -1, -1, -1, -1};
  int i[3] = {-1, -1, -1};
  std::string s = "-";
  for (const int n : {3, 5}) EXPECT_FALSE(b.findReals("r", n, r));
  EXPECT_FALSE(b.findNums("i", 2, i));
  EXPECT_FALSE(b.findNums("r", 4, i));
  EXPECT_FALSE(b.findNums("s", 1, i));
  EXPECT_FALSE(b.findString("i", s));
  EXPECT_FALSE(b.findReals("none", 1, r));
  EXPECT_EQ(r[0], -1);
  EXPECT_EQ(i[0], -1);
  EXPECT_EQ(s, "-");
  EXPECT_TRUE(b.findReals("i", 3, r)); // integers are reals, too
  EXPECT_EQ(r[2], 3);
  EXPECT_TRUE(b.findReals("r", 4, r));
  EXPECT_EQ(r[0], 0.1);
  EXPECT_TRUE(b.findString("s", s));
  b.setNum("r", 7); // another kind under the same name
  EXPECT_TRUE(b.findNums("r", 1, i));
  EXPECT_EQ(i[0], 7);
}

TEST(ZxParamBundle, NestsAndCopiesDeeply)
{
  ZxParamBundle a;
  a.setNum("plain", 1);
  EXPECT_EQ(a.getBundle("PLAIN"), nullptr);
  EXPECT_EQ(a.findBundle("inner"), nullptr);
  ZxParamBundle* inner = a.getBundle("inner");
  EXPECT_EQ(a.getBundle("INNER"), inner);
  inner->setNum("n", 1);
  ZxParamBundle copy(a);
  inner->setNum("n", 2);
  int n = 0;
  EXPECT_TRUE(copy.findBundle("inner")->findNums("n", 1, &n));
  EXPECT_EQ(n, 1);
  a = *a.findBundle("inner"); // a part of itself
  EXPECT_TRUE(a.findNums("n", 1, &n));
  EXPECT_EQ(n, 2);
  a = *&a;
  a.merge(a);
  EXPECT_EQ(a.getNumEntries(), 1);
  a.setNum("own", 5);
  a.merge(copy);
  ASSERT_EQ(a.getNumEntries(), 4);
  EXPECT_EQ(a.entries()[0].name, "n"); // in the order in which they were set
  EXPECT_EQ(a.entries()[3].name, "inner");
  a.removeAll();
  EXPECT_NE(copy.findBundle("inner"), nullptr);
}
