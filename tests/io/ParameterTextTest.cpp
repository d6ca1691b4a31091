#include "ParameterText.h"

#include "zx/ZxData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

io::TextPairs roundTrip(const io::TextPairs& pairs)
{
  ZxParamBundle bundle;
  io::unflatten(pairs, bundle);
  return io::flatten(bundle);
}

} // namespace

TEST(ParameterTextTest, PairsNamePathTypeAndContents)
{
  ZxParamBundle p;
  p.getBundle("AlignTransform")->setReals("slice0000", {3, -4.25, 0.1});
  p.getBundle("AlignTransform")->getBundle("empty one");
  p.setNums("Index", {1, -2147483647 - 1});
  p.setString("note", "two\nlines");
  p.setString("", " ");
  p.setString("plain", "left as it is");
  p.setString("int", "int 3");
  ZxFileGeometry{}.store(p);
  const io::TextPairs expected = {{"AlignTransform/slice0000", "real 3 -4.25 0.1"},
                                  {"AlignTransform/empty%20one", "bundle"},
                                  {"Index", "int 1 -2147483648"},
                                  {"note", "string two%0Alines"},
                                  {"%", "string %20"},
                                  {"plain", "left as it is"},
                                  {"int", "string int 3"}};
  EXPECT_EQ(io::flatten(p), expected);
  EXPECT_EQ(roundTrip(expected), expected);
}

TEST(ParameterTextTest, AnyBytesBecomeOnePrintableLine)
{
  std::string all;
  for (int c = 0; c < 256; ++c) all += static_cast<char>(c);
  ZxParamBundle p;
  p.getBundle(all)->setString(all, all);
  const io::TextPairs pairs = io::flatten(p);
  const auto printable = [](const std::string& s) {
    return std::all_of(s.begin(), s.end(), [](char c) { return c >= ' ' && c <= '~' && c != '\\'; });
  };
  EXPECT_TRUE(printable(pairs[0].first) && printable(pairs[0].second));
  EXPECT_EQ(std::count(pairs[0].first.begin(), pairs[0].first.end(), '/'), 1);
  ZxParamBundle back;
  io::unflatten(pairs, back);
  std::string text;
  ASSERT_NE(back.findBundle(all), nullptr);
  EXPECT_TRUE(back.findBundle(all)->findString(all, text));
  EXPECT_EQ(text, all);
}

TEST(ParameterTextTest, RealsComeBackToTheLastBit)
{
  const double inf = std::numeric_limits<double>::infinity();
  const std::vector<double> reals = {0.1 + 0.2, -0.0, 5e-324,      1.7976931348623157e308,
                                     inf,       -inf, std::nan("")};
  ZxParamBundle p;
  p.setReals("r", reals);
  ZxParamBundle back;
  io::unflatten(io::flatten(p), back);
  std::vector<double> read(reals.size());
  ASSERT_TRUE(back.findReals("r", static_cast<int>(reals.size()), read.data()));
  for (std::size_t i = 0; i + 1 < reals.size(); ++i) {
    EXPECT_EQ(read[i], reals[i]);
    EXPECT_EQ(std::signbit(read[i]), std::signbit(reals[i]));
  }
  EXPECT_TRUE(std::isnan(read.back()));
}

TEST(ParameterTextTest, PairsOfOtherProgramsAreStrings)
{
  const io::TextPairs pairs = {
      {"a/b", "c"}, {"x", "real abc"}, {"y", "int 99999999999"}, {"z", "string %G1"}, {"d/%2", "int 1"}};
  ZxParamBundle p;
  io::unflatten(pairs, p);
  for (const auto& [key, value] : pairs) {
    std::string text;
    EXPECT_TRUE(p.findString(key, text)) << key;
    EXPECT_EQ(text, value);
  }
  ZxParamBundle again;
  io::unflatten(io::flatten(p), again);
  EXPECT_EQ(io::flatten(again), io::flatten(p));
}

TEST(ParameterTextTest, APathWithoutEndDoesNotNest)
{
  std::string path;
  for (int i = 0; i < 100000; ++i) path += "a/";
  ZxParamBundle p;
  io::unflatten({{path + "b", "int 1"}}, p);
  std::string text;
  EXPECT_TRUE(p.findString(path + "b", text));
}
