#include "kernels/ObjectPixels.h"

#include "mc/McRound.h"
#include "support/Random.h"
#include "support/Threads.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using kernels::ObjectImage;
using kernels::ObjectPoints;
using kernels::ObjectSquare;
using kernels::ObjectTest;
using kernels::PixelPosition;

int greyAt(const ObjectImage& image, int x, int y)
{
  const std::uint8_t* p = image.pixels + countOf(image.width, y) * static_cast<std::size_t>(image.channels) +
                          countOf(x, image.channels);
  return image.channels == 4 ? (p[0] + p[1] + p[2]) / 3 : p[0];
}

/// Pixel by pixel, as the test is described.
ObjectPoints plainPoints(const ObjectImage& image, const ObjectTest& test, const ObjectSquare& square)
{
  ObjectPoints points;
  for (int y = 0; y < image.height; y += square.raster)
    for (int x = 0; x < image.width; x += square.raster) {
      int count = 0;
      for (int v = y - square.half; v <= y + square.half; v += square.step)
        for (int u = x - square.half; u <= x + square.half; u += square.step)
          if (u >= 1 && v >= 1 && u < image.width && v < image.height && test(greyAt(image, u, v))) ++count;
      if (count > square.limit) points = points + ObjectPoints{1, x, y};
    }
  return points;
}

TEST(ObjectPixels, PointsAreThoseOfThePlainTest)
{
  const ObjectSquare squares[] = {{2, 1, 2, 15}, {0, 1, 1, 0}, {5, 3, 2, 4},
                                  {7, 2, 5, 31}, {3, 9, 3, 0}, {90, 4, 7, 60}};
  for (const int channels : {1, 4}) {
    const auto bytes = Random(7).bytes(countOf(53, 31, channels));
    const ObjectImage image{bytes.data(), 53, 31, channels};
    for (const bool dark : {false, true})
      for (const ObjectSquare& square : squares) {
        const ObjectTest test{dark ? 170 : 70, dark};
        const ObjectPoints expected = plainPoints(image, test, square);
        EXPECT_GT(expected.count, 0);
        for (const int threads : {1, 4})
          withThreads(threads, [&] {
            EXPECT_EQ(kernels::objectPoints(image, test, square), expected)
                << square.half << ' ' << square.step;
          });
      }
  }
  EXPECT_EQ(kernels::objectPoints({nullptr, 0, 9, 1}, {}, {}), ObjectPoints());
}

TEST(ObjectPixels, HistogramLeavesTheFrameOut)
{
  std::vector<std::uint8_t> bytes(countOf(9, 7), 1);
  bytes[3 * 9 + 4] = 200; // in the middle
  bytes[3 * 9 + 2] = 100; // on the frame
  const auto counts = kernels::greyHistogram({bytes.data(), 9, 7, 1}, 3);
  EXPECT_EQ(counts[200], 1U);
  EXPECT_EQ(counts[100], 0U);
  EXPECT_EQ(counts[1], 2U);
  EXPECT_EQ(kernels::greyHistogram({bytes.data(), 9, 7, 1}, 4), (std::array<std::uint64_t, 256>{}));
}

TEST(ObjectPixels, RaysMeetTheEdgeInAllDirections)
{
  // A disc of radius 20 around (50, 40); a pixel is an edge with 6 of its 7 x 7 neighbours in the disc.
  std::vector<std::uint8_t> bytes;
  for (int y = 0; y < 81; ++y)
    for (int x = 0; x < 101; ++x) bytes.push_back(std::hypot(x - 50.0, y - 40.0) < 20.0 ? 255 : 0);
  const ObjectImage image{bytes.data(), 101, 81, 1};
  for (int degrees = 0; degrees < 360; degrees += 7) {
    const double a = degrees * 3.14159265358979 / 180.0;
    // Rays may start far outside the image.
    const PixelPosition start{50 + mc::roundHalfUp(120 * std::cos(a)),
                              40 + mc::roundHalfUp(120 * std::sin(a))};
    PixelPosition edge{-1, -1};
    ASSERT_TRUE(kernels::findEdge(image, {100, false}, start, {50, 40}, edge));
    EXPECT_NEAR(std::hypot(edge.x - 50.0, edge.y - 40.0), 22.0, 1.5) << degrees;
    EXPECT_NEAR(std::remainder(std::atan2(edge.y - 40.0, edge.x - 50.0) - a, 6.28318530717959), 0.0, 0.04);
  }
  PixelPosition edge{3, 4};
  EXPECT_FALSE(kernels::findEdge(image, {255, false}, {0, 0}, {50, 40}, edge));
  EXPECT_EQ(edge, (PixelPosition{3, 4}));
  EXPECT_TRUE(kernels::findEdge(image, {100, false}, {50, 40}, {50, 40}, edge));
  EXPECT_EQ(edge, (PixelPosition{50, 40}));
}

// In colour each channel has to pass, not their mean.
TEST(ObjectPixels, EdgesInColourNeedAllChannels)
{
  std::vector<std::uint8_t> bytes;
  for (int i = 0; i < 49; ++i) bytes.insert(bytes.end(), {255, 255, 90, 0});
  PixelPosition edge;
  EXPECT_FALSE(kernels::findEdge({bytes.data(), 7, 7, 4}, {100, false}, {3, 3}, {3, 3}, edge));
  EXPECT_TRUE(kernels::findEdge({bytes.data(), 7, 7, 4}, {80, false}, {3, 3}, {3, 3}, edge));
}

} // namespace
