#include "kernels/PairDifference.h"
#include "kernels/SampledComparison.h"

#include "reference/PlainPairDifference.h"
#include "support/GuardedCopy.h"
#include "support/Random.h"
#include "support/Threads.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <cmath>

using kernels::Affine16;
using kernels::PairDifference;
using kernels::PairImage;
using kernels::PairMask;
using kernels::SampledComparison;
using kernels::SampledReference;

namespace {

constexpr std::int64_t kLimit = std::int64_t{1} << 45;

std::int64_t fixed(double v) { return static_cast<std::int64_t>(std::floor(v * 65536.0 + 0.5)); }

// A turn by any angle, a small one, half a right one or none, about no special point, mirrored in half of the
// cases.
Affine16 randomMotion(Random& random, int width, int height)
{
  const double angles[] = {0.0,        random.real(-3.2, 3.2),   random.real(-0.2, 0.2),
                           0.78539816, random.real(-0.02, 0.02), 1.57079633};
  const double angle = angles[random.below(6)];
  const double mirror = random.below(2) == 0 ? 1.0 : -1.0;
  return {fixed(mirror * std::cos(angle)),       fixed(std::sin(angle)),
          fixed(-mirror * std::sin(angle)),      fixed(std::cos(angle)),
          fixed(random.real(-0.5, 1.0) * width), fixed(random.real(-0.5, 1.0) * height)};
}

struct Pair {
  PairImage a, b;
  Affine16 ma, mb;
  int gridWidth, gridHeight, channels;
};

PairDifference compareSampled(const Pair& p)
{
  SampledReference sampled;
  SampledComparison comparison;
  EXPECT_TRUE(sampled.reserve(p.gridWidth, p.gridHeight, p.channels) && comparison.reserve(p.gridHeight));
  sampled.sample(p.a, p.ma, p.gridWidth, p.gridHeight, p.channels);
  comparison.start(sampled, p.b, p.mb);
  const int part = comparison.bands() / 3;
  comparison.add(0, part);
  return {comparison.add(part, comparison.bands()), comparison.count()};
}

// By every way to the difference, with one thread and several, on every instruction set.
void expectPlainResult(const Pair& p)
{
  const PairDifference expected =
      reference::plainPairDifference(p.a, p.ma, p.b, p.mb, p.gridWidth, p.gridHeight, p.channels);
  SCOPED_TRACE(testing::Message() << p.a.width << "x" << p.a.height << " channels " << p.channels);
  forEachVectorTarget([&] {
    EXPECT_EQ(compareSampled(p), expected);
    for (const int threads : {1, 3})
      withThreads(threads, [&] {
        EXPECT_EQ(kernels::pairDifference(p.a, p.ma, p.b, p.mb, p.gridWidth, p.gridHeight, p.channels),
                  expected);
      });
  });
}

} // namespace

// Images of different, odd sizes and motions of every kind: a swapped axis, a lost sign, a column too many or
// too few at an edge, a dropped tail of a block or of a band each change the sums.
TEST(PairDifference, EqualsThePlainLoop)
{
  Random random(11);
  const int sizes[][4] = {{1, 1, 1, 1},       {7, 5, 5, 9},         {3, 40, 33, 2},      {31, 67, 64, 33},
                          {259, 41, 300, 43}, {1500, 15, 1400, 27}, {417, 203, 420, 201}};
  std::uint64_t counted = 0;
  std::uint64_t all = 0;
  for (const auto& [w0, h0, w1, h1] : sizes)
    for (const int channels : {1, 4})
      for (int trial = 0; trial < 18; ++trial) {
        const GuardedCopy a(random.bytes(countOf(w0, h0, channels)));
        const GuardedCopy b(random.bytes(countOf(w1, h1, channels)));
        const Pair p{{a.data(), w0, h0},
                     {b.data(), w1, h1},
                     randomMotion(random, w0, h0),
                     randomMotion(random, w1, h1),
                     std::max(w0, w1),
                     std::max(h0, h1),
                     channels};
        expectPlainResult(p);
        all += static_cast<std::uint64_t>(p.gridWidth) * static_cast<std::uint64_t>(p.gridHeight);
        counted += kernels::pairDifference(p.a, p.ma, p.b, p.mb, p.gridWidth, p.gridHeight, channels).count;
      }
  EXPECT_GT(counted, all / 20); // the pairs do overlap, and not completely
  EXPECT_LT(counted, all / 2);
}

TEST(PairDifference, EqualsThePlainLoopForHugeAndDegenerateMappings)
{
  Random random(12);
  const GuardedCopy a(random.bytes(37 * 23)), b(random.bytes(29 * 31));
  const std::int64_t values[] = {0, 1, -1, 65535, 65536, -65536, 36 << 16, kLimit, -kLimit, kLimit - 1};
  const auto any = [&] { return values[random.below(10)]; };
  for (int trial = 0; trial < 600; ++trial) {
    const Affine16 ma{any(), any(), any(), any(), any(), any()};
    const Affine16 mb = trial % 2 ? Affine16{} : Affine16{any(), any(), any(), any(), any(), any()};
    const Pair p{{a.data(), 37, 23}, {b.data(), 29, 31}, ma, mb, 37, 31, 1};
    SCOPED_TRACE(trial);
    ASSERT_NO_FATAL_FAILURE(expectPlainResult(p));
  }
}

// Positions up to 65,535 * 65536 need all of 32 bits, and the sum of the squares more.
TEST(PairDifference, WorksAtTheLargestSides)
{
  Random random(13);
  const int n = 65535;
  const auto a = random.bytes(std::size_t{65535} * 12);
  const auto b = random.bytes(std::size_t{65535} * 12);
  const Affine16 turn{fixed(0.99999), fixed(2e-5), fixed(-2e-5), fixed(0.99999), fixed(-20.25), fixed(0.75)};
  const Affine16 mirror{-65536, 0, 0, 65536, fixed(65534.5), 0};
  const Affine16 transposed{0, 65536, 65536, 0, 0, 0};
  expectPlainResult({{a.data(), n, 3}, {b.data(), n, 3}, {}, turn, n, 3, 1});
  expectPlainResult({{a.data(), n, 3}, {b.data(), n, 3}, mirror, turn, n, 3, 4});
  expectPlainResult({{a.data(), 3, n}, {b.data(), 3, n}, {}, mirror, 3, n, 4});
  expectPlainResult({{a.data(), n, 3}, {b.data(), 3, n}, {}, transposed, n, 3, 1});
  expectPlainResult({{a.data(), n, 3}, {b.data(), n, 3}, {65536, 0, kLimit, -kLimit, 0, 0}, {}, n, 3, 1});

  const std::vector<std::uint8_t> black(std::size_t{65535} * 12, 0), white(black.size(), 255);
  const PairDifference most =
      kernels::pairDifference({black.data(), n, 3}, {}, {white.data(), n, 3}, {}, n, 3, 4);
  EXPECT_EQ(most.count, 65535u * 3u);
  EXPECT_EQ(most.squares, std::uint64_t{65535} * 3 * 3 * 65025);
}

// The sum is exact until it reaches the limit, and from there on only that counts.
TEST(SampledComparison, GivesUpAtItsLimit)
{
  Random random(15);
  const int w = 700, h = 491;
  const auto a = random.bytes(countOf(w, h)), b = random.bytes(countOf(w, h));
  SampledReference sampled;
  SampledComparison comparison;
  ASSERT_TRUE(sampled.reserve(w, h, 1) && comparison.reserve(h));
  for (int trial = 0; trial < 40; ++trial) {
    const Affine16 ma = randomMotion(random, w / 8, h / 8), mb = randomMotion(random, w / 8, h / 8);
    sampled.sample({a.data(), w, h}, ma, w, h, 1);
    const PairDifference all =
        reference::plainPairDifference({a.data(), w, h}, ma, {b.data(), w, h}, mb, w, h, 1);
    for (const std::uint64_t limit : {std::uint64_t{0}, all.squares / 3, all.squares, all.squares + 1}) {
      comparison.start(sampled, {b.data(), w, h}, mb);
      const std::uint64_t sum = comparison.add(0, comparison.bands(), limit);
      EXPECT_EQ(comparison.count(), all.count);
      EXPECT_EQ(sum >= limit, all.squares >= limit);
      EXPECT_TRUE(sum >= limit || sum == all.squares);
      EXPECT_LE(sum, all.squares);
    }
  }
}

TEST(PairDifference, GivesZerosForEmptyAndOversizedInput)
{
  const std::vector<std::uint8_t> a(65536, 1), b(65536, 9);
  const PairDifference none{};
  EXPECT_EQ(kernels::pairDifference({a.data(), 0, 0}, {}, {b.data(), 4, 4}, {}, 4, 4, 1), none);
  EXPECT_EQ(kernels::pairDifference({a.data(), 4, 4}, {}, {b.data(), 4, 4}, {}, 0, 0, 1), none);
  EXPECT_EQ(kernels::pairDifference({a.data(), 65536, 1}, {}, {b.data(), 65536, 1}, {}, 65536, 1, 1), none);
}

// At full size the mask is looked up pixel by pixel; for reduced images by the odd rule, whose index leaves
// the reduced image for most rows.
TEST(PairDifferenceMasked, EqualsThePlainLoop)
{
  Random random(14);
  const auto a = random.bytes(83 * 47 * 4), b = random.bytes(83 * 47 * 4);
  auto maskA = random.bytes(83 * 47), maskB = random.bytes(83 * 47);
  for (auto& v : maskA) v = v > 60 ? v : 0;
  for (auto& v : maskB) v = v > 90 ? v : 0;
  std::uint64_t counts[3] = {};
  for (int trial = 0; trial < 60; ++trial) {
    const int level = trial % 3;
    const int w = 83 >> level, h = 47 >> level, channels = trial % 2 ? 4 : 1;
    const Pair p{{a.data(), w, h}, {b.data(), w, h}, randomMotion(random, w / 4, h / 4), {}, w, h, channels};
    const PairMask ka{maskA.data(), 83, 47}, kb{maskB.data(), 83, 47};
    const PairDifference expected =
        reference::plainPairDifference(p.a, p.ma, p.b, p.mb, w, h, channels, &ka, &kb);
    EXPECT_EQ(kernels::pairDifferenceMasked(p.a, p.ma, ka, p.b, p.mb, kb, w, h, channels), expected);
    counts[level] += expected.count;
  }
  for (const std::uint64_t count : counts) EXPECT_GT(count, 0u);
}
