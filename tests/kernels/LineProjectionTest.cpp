#include "kernels/LineProjection.h"

#include "reference/PlainLines.h"
#include "support/Random.h"
#include "support/Threads.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

using kernels::SampleLine;
using reference::PlainSlice;

namespace {

constexpr int kWidth = 141;
constexpr int kHeight = 87;

const double kNan = std::numeric_limits<double>::quiet_NaN();

/// Values with equal lengths of both signs, and some that are no numbers.
template <class T>
std::vector<T> voxels(int channels)
{
  Random random(17);
  std::vector<T> values(countOf(kWidth, kHeight, channels));
  for (T& v : values) {
    v = static_cast<T>(random.below(120) - (std::is_signed_v<T> ? 60 : 0));
    if (std::is_floating_point_v<T> && random.below(50) == 0) v = std::numeric_limits<T>::quiet_NaN();
  }
  return values;
}

SampleLine across(double x1, double y1, double x2, double y2)
{
  return kernels::sampleSegment(x1, y1, x2, y2);
}

/// Rows, columns and oblique lines, forwards and backwards, in blocks of one kind and mixed.
std::vector<SampleLine> manyLines()
{
  std::vector<SampleLine> lines;
  const double right = kWidth - 1, bottom = kHeight - 1;
  for (int y = 0; y < kHeight; ++y) lines.push_back(across(0, y, right, y));
  for (int y = 0; y < kHeight; ++y) lines.push_back(across(right, y * 0.99, 0, y * 0.99));
  for (int x = 0; x < kWidth; ++x) lines.push_back(across(x, 0, x, bottom));
  for (int x = 0; x < kWidth; ++x) lines.push_back(across(right - x, bottom, right - x, 0));
  for (int x = 0; x < kWidth; ++x) lines.push_back(across(x, 0, right - x * 0.7, bottom));
  Random random(5);
  for (int i = 0; i < 200; ++i)
    lines.push_back(across(random.real(-0.4, right), random.real(-0.4, bottom), random.real(0, right + 0.4),
                           random.real(0, bottom + 0.4)));
  for (std::size_t i = 10; i < lines.size(); i += 97) lines[i] = {};                   // misses
  for (std::size_t i = 20; i < lines.size(); i += 131) lines[i] = {kNan, 0, 1, 0, 10}; // nowhere
  lines.push_back(across(3, 4, 3, 4));
  return lines;
}

template <class T>
void expectProjectionsAsPlain(int channels)
{
  const std::vector<T> slice = voxels<T>(channels);
  const std::vector<SampleLine> lines = manyLines();
  const PlainSlice plain{slice.data(), mcPrimTypeOf<T>, channels, kWidth, kHeight};
  std::vector<T> expected(lines.size() * static_cast<std::size_t>(channels));
  for (std::size_t i = 0; i < lines.size(); ++i)
    reference::plainProjection(
        plain, lines[i],
        reinterpret_cast<unsigned char*>(expected.data() + i * static_cast<std::size_t>(channels)));
  for (const int threads : {1, 3}) {
    std::vector<T> out(expected.size(), T{1});
    withThreads(threads, [&] {
      kernels::projectLines(slice.data(), kWidth, kHeight, channels, lines.data(),
                            static_cast<int>(lines.size()), out.data());
    });
    EXPECT_EQ(out, expected) << "channels " << channels << " bytes " << sizeof(T);
  }
}

} // namespace

TEST(LineProjection, EqualsThePlainLoopForEveryType)
{
  for (const int channels : {1, 3, 4}) {
    expectProjectionsAsPlain<std::uint8_t>(channels);
    expectProjectionsAsPlain<std::int16_t>(channels);
    expectProjectionsAsPlain<std::int32_t>(channels);
    expectProjectionsAsPlain<float>(channels);
    expectProjectionsAsPlain<double>(channels);
    expectProjectionsAsPlain<std::uint16_t>(channels);
  }
}

TEST(LineProjection, SamplesASegmentInStepsOfNineTenths)
{
  const SampleLine line = across(1, 2, 10, 2); // 9 / 0.9 = 10
  EXPECT_EQ(line.steps, 10);
  EXPECT_DOUBLE_EQ(line.stepX, 0.9);
  EXPECT_EQ(across(4, 4, 4.5, 4).steps, 1);
  EXPECT_EQ(across(0, 0, 3, 4).steps, 5); // floor(5.55)
  EXPECT_EQ(across(7, 7, 7, 7).stepX, 0.0);
}
