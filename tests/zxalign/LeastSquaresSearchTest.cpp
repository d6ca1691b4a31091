// Before the toolkit, whose macros it does not bear.
#include "support/Threads.h"

#include "reference/PlainLeastSquares.h"
#include "support/Random.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

struct Case {
  int width, height, channels;
  std::vector<std::uint8_t> reference, editable;
  ZxAlignSettings settings;
  SliceXForm referencePlace, editablePlace;

  ImagePair pair() const { return {reference.data(), editable.data(), width, height, channels}; }
};

std::uint8_t blend(const Case& c, int x, int y, int channel, Random& random)
{
  const double u = 0.11 * x + channel, v = 0.07 * y;
  return static_cast<std::uint8_t>(128 + 70 * std::sin(u) * std::cos(v + 0.3 * u) + 0.2 * (x - c.width / 2) +
                                   random.real(-9, 9));
}

// Slices of every kind: structure with noise, noise alone, few grey levels (many candidates of equal quality)
// and blank ones.
void paint(Case& c, Random& random)
{
  const int kind = random.below(8);
  const int dx = random.below(9) - 4, dy = random.below(9) - 4;
  for (int y = 0; y < c.height; ++y)
    for (int x = 0; x < c.width; ++x)
      for (int k = 0; k < c.channels; ++k) {
        std::uint8_t a = blend(c, x, y, k, random), b = blend(c, x + dx, y + dy, k, random);
        if (kind == 0) a = static_cast<std::uint8_t>(random.below(256)), b = a;
        if (kind == 1) a = a > 128 ? 200 : 10, b = b > 128 ? 200 : 10;
        if (kind == 2) a = (x / 4 + y / 4) % 2 ? 255 : 0, b = (x / 4 + y / 4 + dx) % 2 ? 255 : 0;
        if (kind == 3) a = 90, b = 93;
        c.reference.push_back(a);
        c.editable.push_back(b);
      }
}

SliceXForm anyPlace(Random& random, int width)
{
  if (random.below(3) == 0) return {};
  const auto shift = [&] { return static_cast<float>(random.real(-0.2, 0.2) * width); };
  const bool turned = random.below(2) == 0;
  const float x = shift(), y = shift();
  return {random.below(2) ? x : std::floor(x), y, turned ? static_cast<float>(random.real(-30, 30)) : 0.0f,
          random.below(6) == 0};
}

// Mostly small, for the sake of the plain search; some large enough to be reduced.
std::pair<int, int> anySize(Random& random)
{
  const int kind = random.below(40);
  if (kind == 0) return {100 + random.below(110), 100 + random.below(110)};
  const int range = kind < 3 ? 110 : 24;
  return {20 + random.below(range), 20 + random.below(range)};
}

Case anyCase(std::uint32_t seed)
{
  Random random(seed);
  const auto [width, height] = anySize(random);
  Case c{width, height, random.below(5) == 0 ? 4 : 1, {}, {}, {}, {}, {}};
  paint(c, random);
  c.settings.maxIterations = random.below(10) == 0 ? random.below(4) : 12;
  c.settings.rotationAllowed = random.below(3) != 0;
  c.settings.resamplingLevels = random.below(4);
  c.settings.translationStep = random.below(4) == 0 ? 0.75f : 1.0f;
  c.settings.rotationStep = static_cast<float>(random.real(0.3, 2));
  c.referencePlace = anyPlace(random, c.width);
  c.editablePlace = anyPlace(random, c.width);
  return c;
}

void expectSame(const SliceXForm& a, const SliceXForm& b, std::uint32_t seed)
{
  EXPECT_EQ(a.translationX, b.translationX) << seed;
  EXPECT_EQ(a.translationY, b.translationY) << seed;
  EXPECT_EQ(a.rotation, b.rotation) << seed;
  EXPECT_EQ(a.flip, b.flip) << seed;
}

/// The number of accepted moves.
int expectPlainResult(const Case& c, std::uint32_t seed)
{
  reference::PlainLeastSquares plain(c.pair(), c.settings, c.referencePlace, c.editablePlace);
  plain.run();
  LeastSquaresSearch search(c.pair(), c.settings, c.referencePlace, c.editablePlace);
  EXPECT_EQ(search.allocate(), 0u);
  search.run([] { return false; });
  expectSame(search.editable(), plain.editable, seed);
  EXPECT_EQ(search.quality(), plain.best) << seed;
  EXPECT_EQ(search.numAcceptedMoves(), plain.accepted) << seed;
  return plain.accepted;
}

// The plain search takes long where the compiler does not help it.
#ifdef NDEBUG
constexpr std::uint32_t pairs = 2000;
#else
constexpr std::uint32_t pairs = 60;
#endif

} // namespace

// Whole runs: one candidate that is given up although it is better, one of equal ones that wins out of its
// turn, one row that is left out: each leads elsewhere.
TEST(LeastSquaresSearch, EqualsThePlainSearchOnThousandsOfPairs)
{
  int moves = 0;
  for (std::uint32_t seed = 1; seed <= pairs && !testing::Test::HasFailure(); ++seed)
    withThreads(seed % 3 == 0 ? 4 : static_cast<int>(seed % 3),
                [&] { moves += expectPlainResult(anyCase(seed), seed); });
  EXPECT_GT(moves, static_cast<int>(pairs) * 2);
}

// One placement at full size is several pieces of work; a stop between them leaves it out.
TEST(LeastSquaresSearch, AsksForAStopWithinLargeImages)
{
  Random random(77);
  Case c{2300, 1900, 1, {}, {}, {}, {}, {7, -5, 0.4f, false}};
  for (int y = 0; y < c.height; ++y)
    for (int x = 0; x < c.width; ++x) {
      c.reference.push_back(blend(c, x / 8, y / 8, 0, random));
      c.editable.push_back(blend(c, (x + 3) / 8, (y - 2) / 8, 0, random));
    }
  c.settings.maxIterations = 14;
  c.settings.resamplingLevels = 3;
  EXPECT_GT(expectPlainResult(c, 77), 2);

  int asked = 0;
  LeastSquaresSearch whole(c.pair(), c.settings, c.referencePlace, c.editablePlace);
  ASSERT_EQ(whole.allocate(), 0u);
  whole.run([&] { return ++asked, false; });
  EXPECT_GT(asked, 14 * 2); // more than once for every iteration and every pass
  float before = 0;
  for (int stop = asked - 3; stop <= asked; ++stop) {
    int left = stop;
    LeastSquaresSearch search(c.pair(), c.settings, c.referencePlace, c.editablePlace);
    ASSERT_EQ(search.allocate(), 0u);
    search.run([&] { return --left <= 0; });
    EXPECT_GE(search.quality(), before);
    before = search.quality();
  }
  EXPECT_LE(before, whole.quality());
}
