#include "kernels/Compose.h"

#include "mc/McMath.h"
#include "mc/McRound.h"
#include "reference/PlainCompose.h"
#include "support/Random.h"
#include "support/Threads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

using kernels::Affine16;
using kernels::ComposeMode;
using kernels::ComposeShow;
using kernels::Composition;

namespace {

constexpr ComposeMode kModes[] = {ComposeMode::RedGreen, ComposeMode::Checkerboard, ComposeMode::Average,
                                  ComposeMode::InvertedOverlay};
constexpr ComposeShow kShows[] = {ComposeShow::First, ComposeShow::Second, ComposeShow::Both};

// Of exactly the size, so that a byte read beyond either end is noticed by the address sanitizer.
struct Bytes {
  Bytes(Random& random, std::size_t n) : values(new std::uint8_t[n])
  {
    for (std::size_t i = 0; i < n; ++i) values[i] = static_cast<std::uint8_t>(random.next() >> 11);
  }
  std::unique_ptr<std::uint8_t[]> values;
};

struct Motion {
  double x, y, degrees;
  bool flip;
};

// The inverse of a rigid motion about the middle of the slice, seen at a zoom.
Affine16 inverseOf(const Motion& m, int width, int height, double zoom)
{
  double s = 0, c = 1;
  mc::sinCosDegrees(m.degrees, s, c);
  const double mirror = m.flip ? -1.0 : 1.0;
  const double cx = width / 2, cy = height / 2;
  return {mc::toFixed16(mirror * c / zoom),
          mc::toFixed16(s / zoom),
          mc::toFixed16(-mirror * s / zoom),
          mc::toFixed16(c / zoom),
          mc::toFixed16(cx + mirror * (-c * (m.x + cx) + s * (m.y + cy))),
          mc::toFixed16(cy - s * (m.x + cx) - c * (m.y + cy))};
}

struct Pair {
  Pair(Random& random, int width, int height, int channels)
    : a(random, countOf(width, height, channels)), b(random, countOf(width, height, channels))
  {
    composition.width = width;
    composition.height = height;
    composition.channels = channels;
    composition.first.pixels = a.values.get();
    composition.second.pixels = b.values.get();
  }
  void move(const Motion& first, const Motion& second, double zoom)
  {
    composition.first.inverse = inverseOf(first, composition.width, composition.height, zoom);
    composition.second.inverse = inverseOf(second, composition.width, composition.height, zoom);
  }
  Bytes a, b;
  Composition composition;
};

// Returns the number of pixels that are not black.
int expectPlainPicture(const Composition& c, int width, int height)
{
  // The rows are longer than the picture, and nothing behind them may change.
  const int stride = width + 3;
  std::vector<std::uint32_t> expected(countOf(stride, height), 0xdeadbeefu), actual(expected);
  reference::plainCompose(c, expected.data(), width, height, stride);
  kernels::composePair(c, actual.data(), width, height, stride);
  int lit = 0;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    if (actual[i] != expected[i]) {
      ADD_FAILURE() << "pixel " << i % countOf(stride, 1) << "," << i / countOf(stride, 1) << std::hex
                    << " is " << actual[i] << ", not " << expected[i] << std::dec << "; mode "
                    << static_cast<int>(c.mode) << " show " << static_cast<int>(c.show) << " channels "
                    << c.channels << " at " << c.left << "," << c.top;
      return 0;
    }
    lit += expected[i] != 0 && expected[i] != 0xdeadbeefu;
  }
  return lit;
}

int expectPlainPictures(Composition c, int width, int height)
{
  int lit = 0;
  for (const ComposeMode mode : kModes)
    for (const ComposeShow show : kShows) {
      c.mode = mode;
      c.show = show;
      lit += expectPlainPicture(c, width, height);
    }
  return lit;
}

} // namespace

// Odd, unequal sides and motions without any symmetry: a swapped axis, a lost sign, a wrong order of the
// colours, a field counted from the screen instead of the contents each change a pixel.
TEST(Compose, EqualsThePlainLoop)
{
  const Motion motions[][2] = {{{0, 0, 0, false}, {0, 0, 0, false}},
                               {{3.25, -7.5, 5, false}, {-11.75, 4, 3, true}},
                               {{0, 0, 0, false}, {20, -9, 0, true}},
                               {{-2, 5.5, 90, true}, {6, 1, -153.4, false}},
                               {{90, 0, 17, false}, {0, 0, -88, true}}};
  Random random(21);
  int lit = 0, all = 0;
  for (const int channels : {1, 4}) {
    Pair pair(random, 83, 67, channels);
    pair.composition.fieldSize = 7;
    for (const double zoom : {0.25, 1.0, 2.0, 3.0, 9.0})
      for (const auto& [first, second] : motions) {
        pair.move(first, second, zoom);
        for (const int scroll : {0, 1, 29}) {
          const int zoomedWidth = mc::truncToInt(83 * zoom), zoomedHeight = mc::truncToInt(67 * zoom);
          pair.composition.left = std::min(scroll, zoomedWidth - 1);
          pair.composition.top = std::min(scroll / 2, zoomedHeight - 1);
          const int width = std::min(300, zoomedWidth - pair.composition.left);
          const int height = std::min(90, zoomedHeight - pair.composition.top);
          lit += expectPlainPictures(pair.composition, width, height);
          all += 12 * width * height;
        }
      }
  }
  EXPECT_GT(lit, all / 3); // the slices are there, and not everywhere
  EXPECT_LT(lit, all / 10 * 9);
}

// Any motion, zoom, size and position, also such that miss the slices altogether.
TEST(Compose, StaysInsideItsImages)
{
  Random random(22);
  for (int trial = 0; trial < 300; ++trial) {
    const int width = 1 + random.below(90), height = 1 + random.below(90);
    Pair pair(random, width, height, trial % 2 ? 4 : 1);
    const double zoom = random.below(4) == 0 ? 1.0 : random.real(0.05, 20.0);
    const auto motion = [&] {
      return Motion{random.real(-1.2, 1.2) * width, random.real(-1.2, 1.2) * height,
                    random.below(3) == 0 ? 90.0 * random.below(5) : random.real(-400, 400),
                    random.below(2) == 0};
    };
    pair.move(motion(), motion(), zoom);
    pair.composition.fieldSize = 1 + random.below(60);
    pair.composition.left = random.below(100);
    pair.composition.top = random.below(100);
    pair.composition.mode = kModes[random.below(4)];
    pair.composition.show = kShows[random.below(3)];
    expectPlainPicture(pair.composition, 1 + random.below(330), 1 + random.below(60));
  }
}

// Scrolled by (k, l) the picture is the same one, k columns and l rows further on.
TEST(Compose, ScrollsByWholePixels)
{
  Random random(23);
  Pair pair(random, 301, 203, 1);
  pair.move({1.5, 2.25, 4.7, false}, {-3, 8, -2.1, true}, 3.0);
  std::vector<std::uint32_t> whole(countOf(903, 609)), part(countOf(100, 80));
  kernels::composePair(pair.composition, whole.data(), 903, 609, 903);
  for (const auto& [left, top] : {std::pair{1, 1}, {127, 300}, {803, 529}}) {
    pair.composition.left = left;
    pair.composition.top = top;
    kernels::composePair(pair.composition, part.data(), 100, 80, 100);
    for (int y = 0; y < 80; ++y)
      ASSERT_TRUE(std::equal(part.begin() + y * 100, part.begin() + y * 100 + 100,
                             whole.begin() + (top + y) * 903 + left));
  }
}

TEST(Compose, GivesTheSameForAnyNumberOfThreads)
{
  Random random(24);
  Pair pair(random, 400, 300, 4);
  pair.move({1.5, 2.25, 30, false}, {-3, 8, -20, true}, 2.0);
  std::vector<std::uint32_t> one(countOf(800, 600)), three(one.size());
  withThreads(1, [&] { kernels::composePair(pair.composition, one.data(), 800, 600, 800); });
  withThreads(3, [&] { kernels::composePair(pair.composition, three.data(), 800, 600, 800); });
  EXPECT_EQ(one, three);
}

// Positions at the far end of the largest slice need all of 32 bits; far out in enlarged contents the
// products need more.
TEST(Compose, WorksAtTheLargestSides)
{
  Random random(25);
  Pair wide(random, 65535, 3, 4);
  wide.move({0, 0, 0.001, false}, {-0.5, 0, 0, true}, 1.0);
  expectPlainPictures(wide.composition, 65535, 3);
  Pair high(random, 3, 65535, 1);
  high.move({0.25, 0, 0, false}, {0, 12, 180, false}, 20.0);
  high.composition.top = 65535 * 20 - 40;
  EXPECT_GT(expectPlainPictures(high.composition, 60, 40), 0);
}

// A picture of one field shows the field's slice alone, and where equal slices meet the overlay is a uniform
// 127.
TEST(Compose, ShowsKnownPixels)
{
  const std::vector<std::uint8_t> colour(countOf(8, 8, 4), 90);
  Composition c;
  c.width = c.height = 8;
  c.channels = 4;
  c.first.pixels = c.second.pixels = colour.data();
  std::uint32_t picture[64];
  kernels::composePair(c, picture, 8, 8, 8);
  EXPECT_EQ(std::count(picture, picture + 64, 0x7f7f7fu), 64);

  const std::uint8_t dark = 10, bright = 200;
  c.width = c.height = c.channels = 1;
  c.first.pixels = &dark;
  c.second.pixels = &bright;
  const auto pixel = [&](ComposeMode mode) {
    c.mode = mode;
    kernels::composePair(c, picture, 1, 1, 1);
    return picture[0];
  };
  EXPECT_EQ(pixel(ComposeMode::RedGreen), 0xc80ac8u);
  EXPECT_EQ(pixel(ComposeMode::Checkerboard), 0xc8c8c8u);
  EXPECT_EQ(pixel(ComposeMode::Average), 0x696969u);
  EXPECT_EQ(pixel(ComposeMode::InvertedOverlay), 0xdededeu);
}

// What cannot be shown is black: no picture, no pixels, sides and steps beyond all limits.
TEST(Compose, ShowsNothingOfWhatIsBeyondItsLimits)
{
  Composition c;
  std::uint32_t picture[4] = {1, 2, 3, 4};
  kernels::composePair(c, picture, 0, 2, 2);
  kernels::composePair(c, picture, 2, 0, 2);
  EXPECT_EQ(picture[3], 4u);
  const std::uint8_t pixel = 255;
  c.width = c.height = 1;
  c.second.pixels = &pixel;
  c.second.inverse = {std::int64_t{1} << 45, 0, 0, 0, 0, 0};
  c.left = 2147483000;
  c.fieldSize = 0;
  for (const ComposeMode mode : kModes) {
    c.mode = mode;
    kernels::composePair(c, picture, 2, 2, 2);
    EXPECT_EQ(std::count(picture, picture + 4, 0u), 4);
  }
  c.left = 0;
  c.width = 65536;
  kernels::composePair(c, picture, 2, 2, 2);
  EXPECT_EQ(std::count(picture, picture + 4, 0u), 4);
}
