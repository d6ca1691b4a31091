#include "kernels/BlockAverage.h"

#include "support/Random.h"
#include "support/Threads.h"

#include <gtest/gtest.h>

// Sizes that no factor divides, so that dropped blocks count; sums that leave a remainder.
TEST(BlockAverage, TruncatesTheMeanOfWholeBlocks)
{
  Random random(31);
  for (const auto& [width, height] : {std::pair{5, 5}, {67, 41}, {1030, 517}})
    for (const int channels : {1, 4})
      for (const int f : {1, 2, 3, 8}) {
        const int w = width, h = height;
        const auto src = random.bytes(countOf(w, h, channels));
        std::vector<std::uint8_t> expected;
        for (int y = 0; y + f <= h; y += f)
          for (int x = 0; x + f <= w; x += f)
            for (int c = 0; c < channels; ++c) {
              int sum = 0;
              for (int k = 0; k < f * f; ++k)
                sum += src[countOf(y + k / f, w, channels) + countOf(x + k % f, channels) +
                           static_cast<std::size_t>(c)];
              expected.push_back(static_cast<std::uint8_t>(sum / (f * f)));
            }
        for (const int threads : {1, 3}) {
          std::vector<std::uint8_t> dst(expected.size() + 1, 201); // one byte more shows writing too far
          withThreads(threads, [&] { kernels::blockAverage(src.data(), w, h, channels, f, dst.data()); });
          EXPECT_EQ(dst.back(), 201);
          dst.pop_back();
          EXPECT_EQ(dst, expected) << w << " " << f;
        }
      }
}

TEST(BlockAverage, WritesNothingForAnImageSmallerThanABlock)
{
  const std::vector<std::uint8_t> src(9, 5);
  std::uint8_t dst = 201;
  kernels::blockAverage(src.data(), 3, 3, 1, 4, &dst);
  EXPECT_EQ(dst, 201);
}
