#include "io/ParameterJson.h"

#include "io/Error.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>

namespace {

ZxParamBundle allKinds()
{
  const double inf = std::numeric_limits<double>::infinity();
  ZxParamBundle p;
  p.setNums("ints", {1, -2147483647 - 1, 2147483647});
  p.setNums("no ints", {});
  p.setReals("reals",
             {3, -0.0, 0.1 + 0.2, 5e-324, 1.7976931348623157e308, inf, -inf, std::nan(""), -std::nan("")});
  p.setReals("no reals", {});
  p.setString("100%", "\"quoted\"\n\xC3\xA9");
  p.setString("bytes \xFF%", std::string("\xFF\0%", 3));
  p.getBundle("b")->getBundle("c");
  return p;
}

std::string problem(const std::string& text)
{
  try {
    io::fromJson(text, "/f/v.tif.params.json");
  } catch (const io::Error& error) {
    return error.what();
  }
  return {};
}

} // namespace

TEST(ParameterJsonTest, EverythingComesBackAsItWas)
{
  const std::string text = io::toJson(allKinds());
  const ZxParamBundle back = io::fromJson(text, "f");
  // Equal text is equal names, order, kinds and numbers: every number has one shortest text.
  EXPECT_EQ(io::toJson(back), text);
  EXPECT_NE(text.find("3.0,"), std::string::npos);
  double reals[9];
  ASSERT_TRUE(back.findReals("reals", 9, reals));
  EXPECT_EQ(reals[2], 0.1 + 0.2);
  EXPECT_EQ(reals[3], 5e-324);
  EXPECT_TRUE(std::isnan(reals[8]) && std::signbit(reals[8]) && std::signbit(reals[1]));
  std::string bytes;
  EXPECT_TRUE(back.findString("bytes \xFF%", bytes));
  EXPECT_EQ(bytes, std::string("\xFF\0%", 3));
}

TEST(ParameterJsonTest, ACommaLocaleDoesNotMatter)
{
  const std::string before = std::setlocale(LC_NUMERIC, nullptr);
  if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8")) GTEST_SKIP() << "no such locale here";
  const std::string text = io::toJson(allKinds());
  EXPECT_EQ(io::toJson(io::fromJson(text, "f")), text);
  std::setlocale(LC_NUMERIC, before.c_str());
}

TEST(ParameterJsonTest, DamagedTextGivesOneSentence)
{
  const std::string deep = [] {
    std::string text;
    for (int i = 0; i < 100000; ++i) text += "{\"a\":";
    return text;
  }();
  const std::string arrays(100000, '[');
  for (const std::string& text :
       {std::string(), std::string("{"), std::string("[1]"), std::string("{\"a\": 1}"),
        std::string("{\"a\": [\"x\"]}"), std::string("{\"a\": [[1.5]]}"),
        std::string("{\"a\": [\"bytes\", \"%0\"]}"), std::string("{\"a\": null}"), std::string("\xFF\xFE"),
        deep, "{\"a\":" + arrays}) {
    const std::string sentence = problem(text);
    EXPECT_NE(sentence.find("v.tif.params.json"), std::string::npos) << text.substr(0, 40);
    EXPECT_EQ(sentence.find('\n'), std::string::npos);
  }
  EXPECT_EQ(problem("{\"a\": [1, 2.5], \"A\": [3]}"), "");
}

TEST(ParameterJsonTest, NumbersBeyondAnIntAreReals)
{
  const ZxParamBundle p = io::fromJson("{\"a\": [2147483648]}", "f");
  double value = 0;
  int number = 0;
  EXPECT_FALSE(p.findNums("a", 1, &number));
  EXPECT_TRUE(p.findReals("a", 1, &value));
  EXPECT_EQ(value, 2147483648.0);
}
