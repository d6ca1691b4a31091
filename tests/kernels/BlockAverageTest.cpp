#include "kernels/BlockAverage.h"

#include "reference/PlainBlockAverage.h"
#include "support/GuardedCopy.h"
#include "support/Random.h"
#include "support/Threads.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

namespace {

void expectPlainResult(const std::vector<std::uint8_t>& image, int width, int height, int channels,
                       int factor)
{
  const GuardedCopy<std::uint8_t> src(image);
  ASSERT_NE(src.data(), nullptr);
  std::vector<std::uint8_t> expected(countOf(width / factor, height / factor, channels));
  reference::plainBlockAverage(src.data(), width, height, channels, factor, expected.data());
  forEachVectorTarget([&] {
    for (const int threads : {1, 3}) {
      std::vector<std::uint8_t> dst(expected.size() + 1, 201); // one byte more shows writing too far
      withThreads(threads,
                  [&] { kernels::blockAverage(src.data(), width, height, channels, factor, dst.data()); });
      EXPECT_EQ(dst.back(), 201);
      dst.pop_back();
      EXPECT_EQ(dst, expected) << width << " x " << height << " x " << channels << " by " << factor;
    }
  });
}

} // namespace

// Sizes that no factor divides, so that dropped blocks count; sums that leave a remainder.
TEST(BlockAverage, TruncatesTheMeanOfWholeBlocks)
{
  Random random(31);
  for (const auto& [width, height] : {std::pair{5, 5}, {16, 8}, {67, 41}, {263, 70}})
    for (const int channels : {1, 2, 3, 4, 5}) {
      const auto image = random.bytes(countOf(width, height, channels));
      for (const int factor : {1, 2, 3, 4, 5, 6, 7, 8, 9, 16, 32})
        expectPlainResult(image, width, height, channels, factor);
    }
}

// Sums of a column and of a block at the ends of what 16 and 32 bits hold, for white images too.
TEST(BlockAverage, HoldsTheLargestSums)
{
  Random random(32);
  for (const int channels : {1, 4})
    for (const int factor : {2, 8, 16, 32, 255, 257, 258, 300}) {
      const int width = 2 * factor + 1, height = factor + 1;
      const std::vector<std::uint8_t> white(countOf(width, height, channels), 255);
      expectPlainResult(white, width, height, channels, factor);
      expectPlainResult(random.bytes(white.size()), width, height, channels, factor);
    }
}

TEST(BlockAverage, WritesNothingForAnImageSmallerThanABlock)
{
  const std::vector<std::uint8_t> src(9, 5);
  std::uint8_t dst = 201;
  kernels::blockAverage(src.data(), 3, 3, 1, 4, &dst);
  EXPECT_EQ(dst, 201);
}
