#include "zxalign/ZxDefaultAlignmentEvaluator.h"

#include "AlignmentQuality.h"
#include "reference/PlainPairDifference.h"
#include "support/Random.h"
#include "zxalign/ZxAlignSlices.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using Bytes = std::vector<std::uint8_t>;

struct Pair {
  McHandle<ZxDefaultAlignmentEvaluator> evaluator = mcMake<ZxDefaultAlignmentEvaluator>();
  Bytes image0, image1, mask0, mask1;

  Pair(int width, int height, int channels, Bytes a, Bytes b) : image0(std::move(a)), image1(std::move(b))
  {
    evaluator->setImageStackParams(width, height, channels);
    evaluator->setImage0(image0.data());
    evaluator->setImage1(image1.data());
  }
};

/// The measure from its definition, with plain loops, for the given sizes.
double plainQuality(const kernels::PairImage& a, const kernels::PairImage& b, int channels,
                    const SliceXForm& x0, const SliceXForm& x1, const kernels::PairMask* mask0 = nullptr,
                    const kernels::PairMask* mask1 = nullptr)
{
  const kernels::PairDifference d = reference::plainPairDifference(
      a, inverse16(x0, a.width, a.height), b, inverse16(x1, b.width, b.height), std::max(a.width, b.width),
      std::max(a.height, b.height), channels, mask0, mask1);
  if (d.count == 0) return 0.0;
  const double n = static_cast<double>(d.count) * (channels == 4 ? 3 : 1);
  const double q = 1.0 - std::sqrt(static_cast<double>(d.squares) / (n * 65025.0));
  const double coverage =
      static_cast<double>(d.count) / (std::min(a.width, b.width) * std::min(a.height, b.height));
  return coverage < 0.5 ? q * std::sqrt(2.0 * coverage) : q;
}

const SliceXForm kTurned(1.5f, -2.25f, 20, false);
const SliceXForm kFlipped(-3, 1, -65, true);

} // namespace

TEST(ZxDefaultAlignmentEvaluator, HasItsEnds)
{
  Random random(1);
  for (const int channels : {1, 4}) {
    const Bytes image = random.bytes(countOf(9, 5, channels));
    EXPECT_EQ(Pair(9, 5, channels, image, image).evaluator->quality({}, {}, 0), 1.0f);
    EXPECT_EQ(
        Pair(9, 5, channels, Bytes(image.size(), 0), Bytes(image.size(), 255)).evaluator->quality({}, {}, 0),
        0.0f);
    EXPECT_EQ(Pair(9, 5, channels, image, image).evaluator->quality({}, {9, 0, 0, false}, 0), 0.0f); // apart
    const float nan = std::nanf("");
    EXPECT_LE(Pair(9, 5, channels, image, image).evaluator->quality({nan, 1e30f, nan, false}, {}, 0), 1.0f);
  }
  // A third of the grid is covered.
  EXPECT_FLOAT_EQ(Pair(9, 5, 1, Bytes(45, 8), Bytes(45, 8)).evaluator->quality({}, {6, 0, 0, false}, 0),
                  static_cast<float>(std::sqrt(2.0 / 3.0)));
}

TEST(ZxDefaultAlignmentEvaluator, EqualsTheDefinition)
{
  Random random(2);
  const auto module = mcMake<ZxAlignSlices>();
  for (const int channels : {1, 4}) {
    const Pair pair(23, 14, channels, random.bytes(countOf(23, 14, channels)),
                    random.bytes(countOf(23, 14, channels)));
    const kernels::PairImage a{pair.image0.data(), 23, 14}, b{pair.image1.data(), 23, 14};
    for (const SliceXForm& x0 : {SliceXForm(), kTurned, kFlipped})
      for (const SliceXForm& x1 : {kTurned, kFlipped, SliceXForm(14, 3, 5, false)}) {
        const auto expected = static_cast<float>(plainQuality(a, b, channels, x0, x1));
        EXPECT_EQ(pair.evaluator->quality(x0, x1, 0), expected);
        EXPECT_EQ(module->computeQuality(a.pixels, b.pixels, 23, 14, channels, x0, x1), expected);
      }
  }
}

TEST(ZxDefaultAlignmentEvaluator, ComparesImagesOfDifferentSizes)
{
  Random random(3);
  Pair pair(20, 8, 1, random.bytes(160), random.bytes(160));
  pair.evaluator->setDimensions1(8, 20);
  const kernels::PairImage wide{pair.image0.data(), 20, 8}, tall{pair.image1.data(), 8, 20};
  for (const SliceXForm& x : {SliceXForm(), kTurned, SliceXForm(-5, 4, 0, false)})
    EXPECT_EQ(pair.evaluator->quality({}, x, 0), static_cast<float>(plainQuality(wide, tall, 1, {}, x)));
  // The overlap is as large as it can be: 8 x 8.
  pair.image0 = Bytes(160, 7);
  pair.image1 = Bytes(160, 7);
  pair.evaluator->setImage0(pair.image0.data());
  pair.evaluator->setImage1(pair.image1.data());
  EXPECT_EQ(pair.evaluator->quality({-6, 0, 0, false}, {0, -6, 0, false}, 0), 1.0f);
}

TEST(ZxDefaultAlignmentEvaluator, IgnoresTheFourthByte)
{
  Random random(4);
  Bytes a = random.bytes(countOf(6, 5, 4)), b = random.bytes(a.size());
  const float before = Pair(6, 5, 4, a, b).evaluator->quality({}, kTurned, 0);
  for (std::size_t i = 3; i < a.size(); i += 4) a[i] = static_cast<std::uint8_t>(~b[i]);
  EXPECT_EQ(Pair(6, 5, 4, a, b).evaluator->quality({}, kTurned, 0), before);
  a[2] = static_cast<std::uint8_t>(~b[2]);
  EXPECT_NE(Pair(6, 5, 4, a, b).evaluator->quality({}, {}, 0), before);
}

TEST(ZxDefaultAlignmentEvaluator, CountsMasksInPairsAndInItsOwnWayOnReducedImages)
{
  Random random(5);
  Pair pair(22, 14, 1, random.bytes(308), random.bytes(308));
  for (Bytes* mask : {&pair.mask0, &pair.mask1})
    for (int i = 0; i < 308; ++i) mask->push_back(random.below(4) ? 1 : 0);
  ZxDefaultAlignmentEvaluator& e = *pair.evaluator;
  const float unmasked = e.quality({}, kTurned, 0);
  e.setMask0(pair.mask0.data());
  EXPECT_EQ(e.quality({}, kTurned, 0), unmasked);
  e.setMask1(pair.mask1.data());
  const kernels::PairMask mask0{pair.mask0.data(), 22, 14}, mask1{pair.mask1.data(), 22, 14};
  for (const int level : {0, 1}) {
    const int f = 1 << level, w = 22 / f, h = 14 / f;
    Bytes small0, small1;
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x)
        for (auto [image, small] : {std::pair(&pair.image0, &small0), {&pair.image1, &small1}}) {
          int sum = 0;
          for (int i = 0; i < f * f; ++i)
            sum += (*image)[static_cast<std::size_t>((y * f + i / f) * 22 + x * f + i % f)];
          small->push_back(static_cast<std::uint8_t>(sum / (f * f)));
        }
    SliceXForm x = kTurned;
    x.translationX /= static_cast<float>(f);
    x.translationY /= static_cast<float>(f);
    EXPECT_EQ(e.quality({}, kTurned, level),
              static_cast<float>(
                  plainQuality({small0.data(), w, h}, {small1.data(), w, h}, 1, {}, x, &mask0, &mask1)))
        << level;
  }
}

TEST(ZxDefaultAlignmentEvaluator, ReducesByWholeBlocksAndKeepsOneLevel)
{
  // The last row and column of 5 x 5 are dropped: differences there do not count on level 1.
  Bytes a(25, 50), b(25, 50);
  for (int i = 0; i < 5; ++i)
    b[static_cast<std::size_t>(20 + i)] = b[static_cast<std::size_t>(5 * i + 4)] = 255;
  Pair pair(5, 5, 1, a, b);
  EXPECT_EQ(pair.evaluator->quality({}, {}, 1), 1.0f);
  EXPECT_EQ(pair.evaluator->quality({}, {}, 2), 1.0f); // one pixel
  EXPECT_EQ(pair.evaluator->quality({}, {}, 3), 0.0f); // none
  EXPECT_EQ(pair.evaluator->quality({}, {}, 40), 0.0f);
  EXPECT_LT(pair.evaluator->quality({}, {}, 0), 1.0f);
  EXPECT_EQ(pair.evaluator->quality({}, {2, 0, 0, false}, 1), 1.0f); // half overlap: not lowered yet
  // Another image makes another reduced one.
  pair.image1 = Bytes(25, 10);
  pair.evaluator->setImage1(pair.image1.data());
  EXPECT_FLOAT_EQ(pair.evaluator->quality({}, {}, 1), 1.0f - 40.0f / 255.0f);
}
