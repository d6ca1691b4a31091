#include "kernels/Resample.h"

#include "reference/PlainResample.h"
#include "support/Random.h"
#include "support/Threads.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

using kernels::Affine;
using kernels::Interpolation;
using kernels::ResampleFrame;

namespace {

// Values over the whole range of a type, so that rounding, clamping and the way through float show.
template <class T>
std::vector<T> values(Random& random, std::size_t n)
{
  std::vector<T> v(n);
  for (T& x : v) {
    if constexpr (std::is_floating_point_v<T>)
      x = static_cast<T>(random.real(-1e6, 1e6));
    else
      x = static_cast<T>(random.next());
  }
  return v;
}

std::vector<Affine> mappings(int width, int height)
{
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double c = std::cos(0.3), s = std::sin(0.3), x = static_cast<int>(width / 2),
               y = static_cast<int>(height / 2);
  return {{},
          {1, 0, 0, 1, 0.5, -1.5},
          {1, 0, 0, 1, -0.25, 3.75},
          {-1, 0, 0, 1, 2 * x, 0},
          {c, s, -s, c, x - c * x + s * y - 2.25, y - s * x - c * y + 4.5},
          {-c, s, s, c, x + c * x - s * y + 1.0, y - s * x - c * y},
          {0, 1, -1, 0, 20, -2},
          {0, 0, 0, 0, 3.4, 2.6},
          {1e-18, 0, 0, 1e-18, -0.5, -0.5},
          {1e300, -1e300, 1e300, 1e300, 1, 1},
          {1e308, 1e308, 1e308, 1e308, -1e308, 1e308},
          {nan, 0, 0, 1, 0, 0},
          {1, 0, 0, 1, inf, 0},
          {inf, 0, 0, inf, 0, 0}};
}

template <class T>
bool sameBytes(const std::vector<T>& a, const std::vector<T>& b)
{
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

template <class T>
void expectPlainResult(const ResampleFrame& frame, const std::vector<T>& source, int channels)
{
  const float background[] = {-7.5f, 70000.0f, 2.5f, std::numeric_limits<float>::quiet_NaN()};
  const auto n = countOf(frame.outWidth, frame.outHeight, channels);
  for (const Interpolation mode : {Interpolation::Nearest, Interpolation::Linear}) {
    std::vector<T> expected(n);
    reference::plainResample(frame, source.data(), channels, mode, background, expected.data());
    for (const int threads : {1, 3}) {
      std::vector<T> output(n);
      const int cut = frame.outHeight / 3;
      withThreads(threads, [&] {
        kernels::resampleRows(frame, source.data(), channels, mode, background, output.data(), 0, cut);
        kernels::resampleRows(frame, source.data(), channels, mode, background, output.data(), cut,
                              frame.outHeight);
      });
      EXPECT_TRUE(sameBytes(output, expected)) << "m11 " << frame.inverse.m11 << " dx " << frame.inverse.dx;
    }
  }
}

template <class T>
class ResampleOf : public testing::Test {
};
using VoxelTypes = testing::Types<std::uint8_t, std::int16_t, std::int32_t, float, double, std::uint16_t>;
TYPED_TEST_SUITE(ResampleOf, VoxelTypes);

} // namespace

// Ragged sizes, borders of different width on every side (also cutting into the input) and mappings that
// turn, mirror, shift by halves, collapse or overflow.
TYPED_TEST(ResampleOf, EqualsThePlainLoop)
{
  Random random(21);
  const int width = 37, height = 23;
  for (const int channels : {1, 3, 4}) {
    const auto source = values<TypeParam>(random, countOf(width, height, channels));
    for (const Affine& inverse : mappings(width, height)) {
      expectPlainResult(ResampleFrame{width, height, 44, 31, 2, 5, inverse}, source, channels);
      expectPlainResult(ResampleFrame{width, height, 30, 20, -3, -1, inverse}, source, channels);
    }
  }
}

TEST(Resample, LeavesOtherRowsAlone)
{
  const std::vector<std::uint8_t> source(5 * 4, 9);
  std::vector<std::uint8_t> output(5 * 4, 77);
  const float background = 1.0f;
  kernels::resampleRows(ResampleFrame{5, 4, 5, 4, 0, 0, {}}, source.data(), 1, Interpolation::Nearest,
                        &background, output.data(), 1, 3);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(output[static_cast<std::size_t>(i)], i >= 5 && i < 15 ? 9 : 77);
}

TEST(Resample, WorksAtTheLargestWidth)
{
  Random random(22);
  const Affine turn{std::cos(1e-5), std::sin(1e-5), -std::sin(1e-5), std::cos(1e-5), 0.3, -0.2};
  expectPlainResult(ResampleFrame{65535, 5, 65540, 7, 3, 1, turn}, random.bytes(std::size_t{65535} * 5), 1);
}

// A float cannot hold 2^24 + 1: images lose it, labels must not.
TEST(Resample, RoundsLargeIntegersOfImagesButNotOfLabels)
{
  const std::vector<std::int32_t> source{16777217, -16777219, 2147483647, 5};
  std::vector<std::int32_t> image(4), labels(4);
  const float background = 0.0f;
  const ResampleFrame frame{4, 1, 4, 1, 0, 0, {}};
  kernels::resampleRows(frame, source.data(), 1, Interpolation::Nearest, &background, image.data(), 0, 1);
  kernels::resampleLabelRows(frame, source.data(), labels.data(), 0, 1);
  EXPECT_EQ(image, (std::vector<std::int32_t>{16777216, -16777220, 2147483647, 5}));
  EXPECT_EQ(labels, source);
}

TEST(Resample, LabelsTakeTheNearestPixelAndZeroOutside)
{
  Random random(23);
  const auto source = values<std::uint16_t>(random, 37 * 23);
  const float zero = 0.0f;
  for (const Affine& inverse : mappings(37, 23)) {
    const ResampleFrame frame{37, 23, 44, 31, 2, 5, inverse};
    std::vector<std::uint16_t> labels(44 * 31), expected(44 * 31);
    reference::plainResample(frame, source.data(), 1, Interpolation::Nearest, &zero, expected.data());
    kernels::resampleLabelRows(frame, source.data(), labels.data(), 0, 31);
    EXPECT_EQ(labels, expected);
  }
}
