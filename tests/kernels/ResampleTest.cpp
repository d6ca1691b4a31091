#include "kernels/Resample.h"

#include "reference/PlainResample.h"
#include "support/GuardedCopy.h"
#include "support/Random.h"
#include "support/Threads.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
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
  const double c = std::cos(0.3), s = std::sin(0.3), h = std::sqrt(0.5), x = static_cast<int>(width / 2),
               y = static_cast<int>(height / 2);
  return {{},
          {1, 0, 0, 1, 0.5, -1.5},
          {1, 0, 0, 1, -0.25, 3.75},
          {-1, 0, 0, 1, 2 * x, 0},
          {c, s, -s, c, x - c * x + s * y - 2.25, y - s * x - c * y + 4.5},
          {-c, s, s, c, x + c * x - s * y + 1.0, y - s * x - c * y},
          {0, 1, -1, 0, 20, -2},
          {h, h, -h, h, 3.0, -9.25},
          {h, -h, h, h, -4.5, 9.0},
          // One rounding away from the next pixel, for both rules.
          {1, 0, 0, 1, std::nextafter(2.0, 0.0), std::nextafter(-1.0, 0.0)},
          {1, 0, 0, 1, 0.5 - std::ldexp(1.0, -50), 0.5 - 1e-7}, // below it at the left only
          {1, 0, 0, 1, -1.5 - 1e-12, std::nextafter(0.5, 1.0)},
          {1, 0, 0, 1, 3, -2},
          {1, 0, 0, 1, 4, 0.25},
          {1, 0, 0, 1, 1e9, -1e18},
          {c, s, -s, c, -1e9, 1e9},
          {0, 0, 0, 0, 3.4, 2.6},
          {1e-18, 0, 0, 1e-18, -0.5, -0.5},
          {1e300, -1e300, 1e300, 1e300, 1, 1},
          {1e308, 1e308, 1e308, 1e308, -1e308, 1e308},
          {nan, 0, 0, 1, 0, 0},
          {1, 0, 0, 1, inf, 0},
          {inf, 0, 0, inf, 0, 0}};
}

// Which of two numbers that are none a sum passes on is up to the processor.
template <class T>
bool sameValues(const std::vector<T>& a, const std::vector<T>& b)
{
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (std::memcmp(&a[i], &b[i], sizeof(T)) != 0 && (a[i] == a[i] || b[i] == b[i])) return false;
  return true;
}

template <class T>
void expectPlainResult(const ResampleFrame& frame, const T* source, int channels)
{
  const float background[] = {-7.5f, 70000.0f, 2.5f, std::numeric_limits<float>::quiet_NaN()};
  const auto n = countOf(frame.outWidth, frame.outHeight, channels);
  for (const Interpolation mode : {Interpolation::Nearest, Interpolation::Linear}) {
    std::vector<T> expected(n);
    reference::plainResample(frame, source, channels, mode, background, expected.data());
    forEachVectorTarget([&] {
      std::vector<T> output(n + 1, T{77}); // one value more shows writing too far
      const int cut = frame.outHeight / 3;
      withThreads(cut % 3 + 1, [&] {
        kernels::resampleRows(frame, source, channels, mode, background, output.data(), 0, cut);
        kernels::resampleRows(frame, source, channels, mode, background, output.data(), cut, frame.outHeight);
      });
      EXPECT_EQ(output.back(), T{77});
      output.pop_back();
      EXPECT_TRUE(sameValues(output, expected))
          << frame.width << " x " << frame.height << " x " << channels << " m11 " << frame.inverse.m11
          << " m12 " << frame.inverse.m12 << " dx " << frame.inverse.dx << " dy " << frame.inverse.dy;
    });
  }
}

template <class T>
void expectPlainResult(const ResampleFrame& frame, const std::vector<T>& source, int channels)
{
  const std::size_t n = countOf(frame.width, frame.height, channels);
  const GuardedCopy<T> guarded({source.begin(), source.begin() + static_cast<std::ptrdiff_t>(n)});
  ASSERT_NE(guarded.data(), nullptr);
  expectPlainResult(frame, guarded.data(), channels);
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

// Widths around every vector length, slices without an inside, and more than one tile.
TYPED_TEST(ResampleOf, EqualsThePlainLoopAtEverySize)
{
  Random random(24);
  for (const int width : {1, 2, 3, 4, 5, 8, 9, 15, 16, 17, 31, 33, 64, 257, 530})
    for (const int height : {1, 2, 3, 40}) {
      const int channels = 1 + random.below(5);
      const auto source = values<TypeParam>(random, countOf(width, height, std::max(channels, 4)));
      const double angle = random.real(-0.4, 0.4), mirror = random.below(2) ? -1.0 : 1.0;
      const double c = std::cos(angle), s = std::sin(angle), x = width / 2, y = height / 2;
      const Affine turned{mirror * c,
                          -mirror * s,
                          s,
                          c,
                          x - mirror * c * x - s * y + random.real(-1, 1),
                          y + mirror * s * x - c * y + random.real(-1, 1)};
      for (const Affine& inverse : {turned, Affine{0.3, 0.01, 0.2, 0.5, -0.4, 0.1}}) {
        const ResampleFrame frame{width, height, width + random.below(9), height + 2, random.below(5),
                                  1,     inverse};
        expectPlainResult(frame, source, 1);
        expectPlainResult(frame, source, std::min(channels, 4));
      }
    }
}

TEST(Resample, PassesOnInfiniteValuesAndNoNumbersLikeThePlainLoop)
{
  Random random(25);
  auto source = values<float>(random, 60 * 30);
  const float special[] = {std::numeric_limits<float>::infinity(),   -std::numeric_limits<float>::infinity(),
                           std::numeric_limits<float>::quiet_NaN(),  -0.0f,
                           std::numeric_limits<float>::denorm_min(), std::numeric_limits<float>::max()};
  for (int i = 0; i < 300; ++i)
    source[static_cast<std::size_t>(random.below(60 * 30))] = special[random.below(6)];
  const std::vector<double> doubles(source.begin(), source.end());
  for (const Affine& inverse : mappings(60, 30)) {
    const ResampleFrame frame{60, 30, 66, 33, 3, 1, inverse};
    expectPlainResult(frame, source, 1);
    expectPlainResult(frame, doubles, 1);
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

TEST(Resample, WorksAtTheLargestSides)
{
  Random random(22);
  const double c = std::cos(1e-5), s = std::sin(1e-5);
  const Affine turn{c, s, -s, c, 0.3, -0.2};
  expectPlainResult(ResampleFrame{65535, 5, 65540, 7, 3, 1, turn}, random.bytes(std::size_t{65535} * 5), 1);
  expectPlainResult(ResampleFrame{65535, 3, 65536, 3, 0, 0, turn}, values<float>(random, 65535 * 12), 4);
  expectPlainResult(ResampleFrame{5, 65535, 7, 65540, 1, 3, turn}, values<std::int16_t>(random, 65535 * 5),
                    1);
}

// Columns next to each other lie so far apart in the slice that offsets need more than 32 bits.
TEST(Resample, ReachesAcrossFourGigabytes)
{
  const int edge = 65535;
  const std::unique_ptr<void, void (*)(void*)> memory(std::calloc(countOf(edge, edge), 1), std::free);
  if (!memory) GTEST_SKIP() << "no memory for a slice of 4 GB";
  auto* const slice = static_cast<std::uint8_t*>(memory.get());
  const ResampleFrame frame{edge, edge, 300, 3, 0, 0, {200.3, 210.7, 5.1, -3.3, 7.25, 20.5}};
  Random random(26);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 300; ++x)
      for (const int beyond : {0, 1}) {
        const auto column = static_cast<int>(frame.inverse.mapX(x, y)) + beyond;
        const auto row = static_cast<int>(frame.inverse.mapY(x, y)) + beyond;
        slice[countOf(row, edge) + static_cast<std::size_t>(column)] =
            static_cast<std::uint8_t>(random.next());
      }
  expectPlainResult(frame, slice, 1);
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
    std::vector<std::uint16_t> expected(44 * 31);
    reference::plainResample(frame, source.data(), 1, Interpolation::Nearest, &zero, expected.data());
    forEachVectorTarget([&] {
      std::vector<std::uint16_t> labels(44 * 31);
      kernels::resampleLabelRows(frame, source.data(), labels.data(), 0, 31);
      EXPECT_EQ(labels, expected);
    });
  }
}
