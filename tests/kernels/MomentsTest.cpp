#include "kernels/Moments.h"

#include "support/Random.h"
#include "support/Threads.h"

#include <gtest/gtest.h>

namespace {

TEST(Moments, AreThoseOfThePlainSum)
{
  for (const auto& [width, height] : {std::pair{1, 1}, {37, 19}, {300, 211}}) {
    const auto image = Random(5).bytes(countOf(width, height));
    std::int64_t m00 = 0, m10 = 0, m01 = 0, m20 = 0, m11 = 0, m02 = 0;
    for (std::int64_t i = 0; i < std::int64_t{width} * height; ++i) {
      const std::int64_t x = i % width, y = i / width, v = image[static_cast<std::size_t>(i)];
      m00 += v, m10 += x * v, m01 += y * v, m20 += x * x * v, m11 += x * y * v, m02 += y * y * v;
    }
    const kernels::Moments m = kernels::momentsOf(image.data(), width, height);
    const std::int64_t sums[] = {m00, m10, m01, m20, m11, m02};
    const double found[] = {m.m00, m.m10, m.m01, m.m20, m.m11, m.m02};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(found[i], static_cast<double>(sums[i])) << i;
  }
  EXPECT_EQ(kernels::momentsOf(nullptr, 5, 0).m00, 0.0);
}

// Sums of wide slices go beyond 32 bits.
TEST(Moments, ReachAcrossTheWidestSlice)
{
  const int width = 65535;
  const std::vector<std::uint8_t> image(countOf(width, 3), 255);
  const kernels::Moments m = kernels::momentsOf(image.data(), width, 3);
  const double n = width;
  EXPECT_EQ(m.m20, 3 * 255.0 * ((n - 1) * n * (2 * n - 1) / 6));
  EXPECT_EQ(m.m02, 255.0 * 5 * n);
}

} // namespace
