#include "kernels/GreyMapping.h"

#include "support/Random.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

std::uint8_t grey(float v, float min, float scale)
{
  const float moved = (v - min) * scale + 0.5f;
  if (std::isnan(moved) || moved < 0.0f) return 0;
  return moved >= 255.0f ? 255 : static_cast<std::uint8_t>(moved);
}

template <class T>
void expectMapped(const std::vector<T>& values, float min, float scale)
{
  forEachVectorTarget([&] {
    std::vector<std::uint8_t> mapped(values.size() + 1, 201); // one byte more shows writing too far
    kernels::mapLinear(values.data(), values.size(), min, scale, mapped.data());
    for (std::size_t i = 0; i < values.size(); ++i)
      ASSERT_EQ(mapped[i], grey(static_cast<float>(values[i]), min, scale)) << i;
    EXPECT_EQ(mapped.back(), 201);
  });
}

template <class T>
std::vector<T> integers(Random& random)
{
  std::vector<T> v(1009);
  for (T& x : v) x = static_cast<T>(random.next());
  v[0] = std::numeric_limits<T>::min();
  v[1] = std::numeric_limits<T>::max();
  return v;
}

} // namespace

TEST(GreyMapping, MapsEveryTypeToTheNearestLevel)
{
  Random random(41);
  for (const auto& [min, scale] :
       {std::pair{0.0f, 1.0f}, {-300.0f, 0.31f}, {100.0f, 255.0f}, {9.0f, 1e-6f}}) {
    expectMapped(integers<std::uint8_t>(random), min, scale);
    expectMapped(integers<std::int16_t>(random), min, scale);
    expectMapped(integers<std::uint16_t>(random), min, scale);
    expectMapped(integers<std::int32_t>(random), min, scale);
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    std::vector<double> reals{0.49,  0.5,   1.5,    2.5, -0.7, -3,  254.5,
                              255.4, 1e300, -1e300, inf, -inf, nan, 16777217.0};
    for (int i = 0; i < 200; ++i) reals.push_back(random.real(-400.0, 800.0));
    expectMapped(reals, min, scale);
    expectMapped(std::vector<float>(reals.begin(), reals.end()), min, scale);
  }
}

TEST(GreyMapping, HasFixedValuesAtTheEdges)
{
  const std::vector<std::int16_t> aroundAnEmptyWindow{99, 100, 101};
  std::vector<std::uint8_t> out(3);
  kernels::mapLinear(aroundAnEmptyWindow.data(), 3, 100.0f, 255.0f, out.data());
  EXPECT_EQ(out, (std::vector<std::uint8_t>{0, 0, 255}));
  const std::vector<float> odd{std::numeric_limits<float>::quiet_NaN(), 0.5f, 254.5f};
  kernels::mapLinear(odd.data(), 3, 0.0f, 1.0f, out.data());
  EXPECT_EQ(out, (std::vector<std::uint8_t>{0, 1, 255}));
}

// Three different weights: exchanged channels change the level; the fourth byte never does.
TEST(GreyMapping, WeighsTheColoursOfAPixel)
{
  Random random(42);
  const auto rgba = random.bytes(4 * 1009);
  std::vector<std::uint8_t> out(1009);
  forEachVectorTarget([&] {
    kernels::mapColour(rgba.data(), out.size(), 20.0f, 1.3f, out.data());
    for (std::size_t i = 0; i < out.size(); ++i) {
      const double sum = 0.3 * rgba[4 * i] + 0.59 * rgba[4 * i + 1] + 0.11 * rgba[4 * i + 2];
      ASSERT_EQ(out[i], grey(static_cast<float>(sum), 20.0f, 1.3f)) << i;
    }
  });
  const std::uint8_t red[] = {100, 0, 0, 255}, blue[] = {0, 0, 100, 0};
  kernels::mapColour(red, 1, 0.0f, 1.0f, &out[0]);
  kernels::mapColour(blue, 1, 0.0f, 1.0f, &out[1]);
  EXPECT_EQ(out[0], 30);
  EXPECT_EQ(out[1], 11);
}

TEST(GreyMapping, ClearsThePixelsOutsideTheMask)
{
  const std::uint8_t bits[] = {0b00000101, 0b00000010};
  std::vector<std::uint8_t> grey(10, 8), colour(40, 9), greyOnly(10, 8);
  kernels::applyMask(bits, 10, grey.data(), colour.data());
  kernels::applyMask(bits, 10, greyOnly.data(), nullptr);
  EXPECT_EQ(grey, (std::vector<std::uint8_t>{8, 0, 8, 0, 0, 0, 0, 0, 0, 8}));
  EXPECT_EQ(greyOnly, grey);
  for (std::size_t i = 0; i < colour.size(); ++i) EXPECT_EQ(colour[i], grey[i / 4] ? 9 : 0);
}
