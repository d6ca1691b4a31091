#include "kernels/Projection.h"

#include "support/Random.h"
#include "support/Threads.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

TEST(Projection, KeepsTheLargerValueOfTheMovedSlice)
{
  Random random(51);
  const int w = 261, h = 187;
  const auto slice = random.bytes(w * h), before = random.bytes(w * h);
  const double c = std::cos(0.4), s = std::sin(0.4), nan = std::numeric_limits<double>::quiet_NaN();
  const kernels::Affine mappings[] = {{},
                                      {1, 0, 0, 1, -1.25, -1.5},
                                      {-1, 0, 0, 1, 260, 2.5},
                                      {c, s, -s, c, 40.3, -30.7},
                                      {nan, 0, 0, 1, 0, 0},
                                      {0, 1, -1, 0, 200, -3},
                                      {-c, s, s, c, 240.1, -60.9},
                                      {1e300, 0, 0, 1e300, 0, 0},
                                      {1e308, 1e308, 1e308, 1e308, -1e308, 1e308}};
  for (const kernels::Affine& m : mappings) {
    auto expected = before;
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        const double ix = std::trunc(m.m11 * x + m.m21 * y + m.dx + 0.5);
        const double iy = std::trunc(m.m12 * x + m.m22 * y + m.dy + 0.5);
        if (!(ix >= 0 && ix < w && iy >= 0 && iy < h)) continue;
        auto& value = expected[countOf(y, w) + static_cast<std::size_t>(x)];
        value = std::max(value, slice[static_cast<std::size_t>(iy) * w + static_cast<std::size_t>(ix)]);
      }
    forEachVectorTarget([&] {
      for (const int threads : {1, 3}) {
        auto image = before;
        withThreads(threads, [&] { kernels::projectSlice(slice.data(), w, h, m, image.data()); });
        EXPECT_EQ(image, expected) << "m11 " << m.m11 << " dx " << m.dx;
      }
    });
  }
}

// Positions down to just above -1.5 are pixel 0, -1.5 itself is not.
TEST(Projection, TruncatesTowardsZero)
{
  const std::uint8_t slice[] = {50, 60};
  std::vector<std::uint8_t> image(2, 0);
  kernels::projectSlice(slice, 2, 1, {1, 0, 0, 1, -1.49, 0}, image.data());
  EXPECT_EQ(image, (std::vector<std::uint8_t>{50, 50}));
  std::fill(image.begin(), image.end(), std::uint8_t{0});
  kernels::projectSlice(slice, 2, 1, {1, 0, 0, 1, -1.5, 0}, image.data());
  EXPECT_EQ(image, (std::vector<std::uint8_t>{0, 50}));
}

TEST(Projection, WindowTruncatesAndClamps)
{
  std::vector<std::uint8_t> image{0, 99, 100, 101, 150, 255};
  kernels::windowProjected(image.data(), image.size(), 100.0f, 2.55f);
  EXPECT_EQ(image, (std::vector<std::uint8_t>{0, 0, 0, 2, 127, 255}));
}
