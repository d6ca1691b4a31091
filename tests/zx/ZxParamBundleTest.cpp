#include "zx/ZxParamBundle.h"

#include <gtest/gtest.h>

TEST(ZxParamBundle, MatchesNamesWithoutCase)
{
  ZxParamBundle b;
  b.setNums("Point0001", {3, 4});
  b.setString("[", "2"); // not letters that differ by 32
  b.setString("{", "3");
  b.setNums("pOINT0001", {5, 6});
  ASSERT_EQ(b.getNumEntries(), 3);
  EXPECT_EQ(b.entries()[0].name, "Point0001"); // the first spelling and place stay
  int p[2];
  EXPECT_TRUE(b.findNums("point0001", 2, p) && p[1] == 6);
  EXPECT_TRUE(b.remove("POINT0001"));
  EXPECT_FALSE(b.remove("POINT0001"));
  EXPECT_FALSE(b.findNums("Point0001", 2, p));
  std::string text;
  EXPECT_TRUE(b.findString("{", text) && text == "3");
}

TEST(ZxParamBundle, FindsExactCountsAndKindsOnly)
{
  ZxParamBundle b;
  b.setReals("r", {0.1, 2, 3, 4});
  b.setNums("i", {1, 2, 3});
  b.setString("s", "12");
  double r[5] = {-1};
  int i[3] = {-1};
  std::string s = "-";
  EXPECT_FALSE(b.findReals("r", 3, r) || b.findReals("r", 5, r) || b.findReals("none", 1, r));
  EXPECT_FALSE(b.findNums("i", 2, i) || b.findNums("r", 4, i) || b.findNums("s", 1, i));
  EXPECT_FALSE(b.findString("i", s));
  EXPECT_TRUE(r[0] == -1 && i[0] == -1 && s == "-");
  EXPECT_TRUE(b.findReals("i", 3, r) && r[2] == 3); // integers are reals, too
  EXPECT_TRUE(b.findReals("r", 4, r) && r[0] == 0.1);
  b.setNum("r", 7); // another kind under the same name
  EXPECT_TRUE(b.findNums("r", 1, i) && i[0] == 7);
  EXPECT_EQ(b.getBundle("R"), nullptr);
}

TEST(ZxParamBundle, NestsAndCopiesDeeply)
{
  ZxParamBundle a;
  ZxParamBundle* inner = a.getBundle("inner");
  EXPECT_EQ(a.getBundle("INNER"), inner);
  inner->setNum("n", 1);
  const ZxParamBundle copy(a);
  inner->setNum("n", 2);
  int n = 0;
  EXPECT_TRUE(copy.findBundle("inner")->findNums("n", 1, &n) && n == 1);
  a = *a.findBundle("inner"); // a part of itself
  a.merge(a);
  EXPECT_TRUE(a.findNums("n", 1, &n) && n == 2);
  a.merge(copy);
  ASSERT_EQ(a.getNumEntries(), 2);
  EXPECT_NE(a.findBundle("inner"), copy.findBundle("inner"));
}
