#include "MostFrequentColor.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

template <class T>
float mostFrequent(const std::vector<T>& values)
{
  McDArray<float> color;
  mostFrequentColor(values.data(), values.size(), 1, mcPrimTypeOf<T>, color);
  return color[0];
}

} // namespace

TEST(MostFrequentColor, FindsTheFullestBin)
{
  EXPECT_EQ(mostFrequent(std::vector<std::uint8_t>(9, 7)), 7.0f);
  EXPECT_EQ(mostFrequent(std::vector<std::int16_t>{-300, 5, -7, 5, -7, -7}), -7.0f);
  EXPECT_EQ(mostFrequent(std::vector<std::uint16_t>{65535, 4, 4, 65535, 9}), 4.0f); // the first of equal ones
  EXPECT_EQ(mostFrequent(std::vector<float>{0.25f, 3.25f, 3.25f, 1.25f}), 3.25f);
}

TEST(MostFrequentColor, WithstandsAnyFloat)
{
  const float inf = std::numeric_limits<float>::infinity();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(mostFrequent(std::vector<float>{inf, 2, 2, nan, -inf, 5}), 2.0f);
  EXPECT_EQ(mostFrequent(std::vector<float>{nan, nan}), 1000000.0f); // nothing to count
  EXPECT_EQ(mostFrequent(std::vector<float>{}), 1000000.0f);
  EXPECT_NEAR(mostFrequent(std::vector<float>{-1e9f, 1e9f, 1e9f}), 1e9f, 200.0f); // bins of many units
}

TEST(MostFrequentColor, CountsWholeColours)
{
  // Each channel by itself has another favourite; of the two colours seen twice the smaller key wins.
  const std::vector<std::uint8_t> pixels{9, 1, 1, 5, 2, 8, 1, 0, 9, 1, 1, 5,
                                         2, 8, 1, 0, 9, 1, 1, 4, 9, 3, 0, 0};
  McDArray<float> color{1};
  mostFrequentColor(pixels.data(), pixels.size() / 4, 4, McPrimType::UInt8, color);
  EXPECT_EQ(color, (McDArray<float>{2, 8, 1, 0}));
}

TEST(MostFrequentColor, LeavesOtherChannelCountsAlone)
{
  const std::vector<float> values(8, 3.0f);
  McDArray<float> color{-1};
  mostFrequentColor(values.data(), 4, 2, McPrimType::Float, color);
  mostFrequentColor(values.data(), 2, 4, McPrimType::Float, color);
  EXPECT_EQ(color, McDArray<float>{-1});
}
