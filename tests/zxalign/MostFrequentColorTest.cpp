#include "MostFrequentColor.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

template <class T>
McDArray<float> mostFrequent(const std::vector<T>& values, int channels = 1)
{
  McDArray<float> color;
  mostFrequentColor(values.data(), values.size() / static_cast<unsigned>(channels), channels, mcPrimTypeOf<T>,
                    color);
  return color;
}

using Color = McDArray<float>;

} // namespace

TEST(MostFrequentColor, FindsTheFullestBin)
{
  EXPECT_EQ(mostFrequent<std::int16_t>({-300, 5, -7, 5, -7, -7}), Color{-7});
  EXPECT_EQ(mostFrequent<std::uint16_t>({65535, 4, 4, 65535, 9}), Color{4}); // the first of equal ones
  EXPECT_EQ(mostFrequent<std::uint8_t>({255, 3, 3, 255, 0, 7, 3, 255}), Color{3});
  EXPECT_EQ(mostFrequent<float>({0.25f, 3.25f, 3.25f, 1.25f}), Color{3.25f});
  const float inf = std::numeric_limits<float>::infinity();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(mostFrequent<float>({inf, 2, 2, nan, -inf, 5}), Color{2});
  EXPECT_EQ(mostFrequent<float>({nan, nan}), Color{1000000});             // nothing to count
  EXPECT_NEAR(mostFrequent<float>({-1e9f, 1e9f, 1e9f})[0], 1e9f, 200.0f); // bins of many units
}

TEST(MostFrequentColor, CountsWholeColours)
{
  // Each channel by itself has another favourite; of the two colours seen twice the smaller key wins.
  EXPECT_EQ(
      mostFrequent<std::uint8_t>({9, 1, 1, 5, 2, 8, 1, 0, 9, 1, 1, 5, 2, 8, 1, 0, 9, 1, 1, 4, 9, 3, 0, 0}, 4),
      (Color{2, 8, 1, 0}));
  EXPECT_EQ(mostFrequent<float>({1, 2, 3, 4}, 2), Color{}); // left alone
  EXPECT_EQ(mostFrequent<float>({1, 2, 3, 4}, 4), Color{});
}
