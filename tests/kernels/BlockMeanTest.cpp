#include "kernels/BlockMean.h"

#include "support/Threads.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

template <class T>
std::vector<T> meanOf(const std::vector<T>& image, int width, int height, int channels, int factor)
{
  std::vector<T> reduced(static_cast<std::size_t>(width / factor * (height / factor) * channels));
  withThreads(3, [&] { kernels::blockMean(image.data(), width, height, channels, factor, reduced.data()); });
  return reduced;
}

} // namespace

// 5 x 3 pixels of two channels by blocks of 2: one row and one column are dropped.
TEST(BlockMean, TruncatesIntegersTowardsZero)
{
  const std::vector<std::int16_t> image = {1,  -1, 2, -2, 3, 100, 5, 200, 9, 9, // row 0
                                           4,  -4, 4, -4, 7, 300, 9, 401, 9, 9, // row 1
                                           99, 99, 9, 9,  9, 9,   9, 9,   9, 9};
  EXPECT_EQ(meanOf(image, 5, 3, 2, 2), (std::vector<std::int16_t>{2, -2, 6, 250}));
  const std::vector<std::int32_t> large(9, 2147483647);
  EXPECT_EQ(meanOf(large, 3, 3, 1, 3), std::vector<std::int32_t>{2147483647});
  const std::vector<std::uint16_t> white(16, 65535);
  EXPECT_EQ(meanOf(white, 4, 4, 1, 4), std::vector<std::uint16_t>{65535});
  const std::vector<std::uint8_t> bytes = {1, 2, 3, 5};
  EXPECT_EQ(meanOf(bytes, 2, 2, 1, 2), std::vector<std::uint8_t>{2});
}

// The order of the sum shows in what single precision would lose.
TEST(BlockMean, SumsRealsInDoublePrecision)
{
  const std::vector<float> image = {16777216.0f, 1.0f, 1.0f, 2.0f};
  EXPECT_EQ(meanOf(image, 2, 2, 1, 2), std::vector<float>{4194305.0f});
  const std::vector<double> reals = {1e16, 1.0, -1e16, 1.0};
  EXPECT_EQ(meanOf(reals, 2, 2, 1, 2), std::vector<double>{((1e16 + 1.0) - 1e16 + 1.0) / 4});
}

TEST(BlockCentre, TakesOneLabelOfEachBlock)
{
  std::vector<std::uint16_t> labels(7 * 4);
  for (std::size_t i = 0; i < labels.size(); ++i) labels[i] = static_cast<std::uint16_t>(i);
  std::vector<std::uint16_t> by2(3 * 2), by3(2);
  kernels::blockCentre(labels.data(), 7, 4, 2, by2.data());
  EXPECT_EQ(by2, (std::vector<std::uint16_t>{8, 10, 12, 22, 24, 26}));
  kernels::blockCentre(labels.data(), 7, 4, 3, by3.data());
  EXPECT_EQ(by3, (std::vector<std::uint16_t>{8, 11}));
}
