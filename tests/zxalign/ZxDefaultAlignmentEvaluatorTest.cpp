#include "zxalign/ZxDefaultAlignmentEvaluator.h"

#include "AlignmentQuality.h"
#include "kernels/BlockAverage.h"
#include "reference/PlainPairDifference.h"
#include "support/Random.h"
#include "zxalign/ZxAlignSlices.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using Bytes = std::vector<std::uint8_t>;

/// An evaluator with two images of its own; without images given, random ones.
struct Pair {
  int width, height, channels;
  Bytes image0, image1;
  McHandle<ZxDefaultAlignmentEvaluator> evaluator = mcMake<ZxDefaultAlignmentEvaluator>();

  Pair(int w, int h, int c, Bytes a, Bytes b)
    : width(w), height(h), channels(c), image0(std::move(a)), image1(std::move(b))
  {
    evaluator->setImageStackParams(width, height, channels);
    evaluator->setImage0(image0.data());
    evaluator->setImage1(image1.data());
  }
  Pair(int w, int h, int c, Random random)
    : Pair(w, h, c, random.bytes(countOf(w, h, c)), Random(99).bytes(countOf(w, h, c)))
  {
  }
  float quality(const SliceXForm& x0 = {}, const SliceXForm& x1 = {}, int level = 0) const
  {
    return evaluator->quality(x0, x1, level);
  }
};

/// The measure from its definition.
float plainQuality(const kernels::PairImage& a, const kernels::PairImage& b, int channels,
                   const SliceXForm& x0, const SliceXForm& x1, const kernels::PairMask* mask0 = nullptr,
                   const kernels::PairMask* mask1 = nullptr)
{
  const kernels::PairDifference d = reference::plainPairDifference(
      a, inverse16(x0, a.width, a.height), b, inverse16(x1, b.width, b.height), std::max(a.width, b.width),
      std::max(a.height, b.height), channels, mask0, mask1);
  if (d.count == 0) return 0.0f;
  const double n = static_cast<double>(d.count) * (channels == 4 ? 3 : 1);
  const double q = 1.0 - std::sqrt(static_cast<double>(d.squares) / (n * 65025.0));
  const double coverage =
      static_cast<double>(d.count) / (std::min(a.width, b.width) * std::min(a.height, b.height));
  return static_cast<float>(coverage < 0.5 ? q * std::sqrt(2.0 * coverage) : q);
}

const SliceXForm kTurned(1.5f, -2.25f, 20, false);
const SliceXForm kFlipped(-3, 1, -65, true);

} // namespace

TEST(ZxDefaultAlignmentEvaluator, HasItsEnds)
{
  for (const int channels : {1, 4}) {
    const Bytes image = Random(1).bytes(countOf(9, 5, channels));
    const Pair same(9, 5, channels, image, image);
    EXPECT_EQ(same.quality(), 1.0f);
    EXPECT_EQ(same.quality({}, {9, 0, 0, false}), 0.0f); // apart
    EXPECT_EQ(Pair(9, 5, channels, Bytes(image.size(), 0), Bytes(image.size(), 255)).quality(), 0.0f);
    EXPECT_LE(same.quality({std::nanf(""), 1e30f, std::nanf(""), false}), 1.0f);
  }
}

TEST(ZxDefaultAlignmentEvaluator, EqualsTheDefinition)
{
  const auto module = mcMake<ZxAlignSlices>();
  for (const int channels : {1, 4}) {
    const Pair pair(23, 14, channels, Random(2));
    const kernels::PairImage a{pair.image0.data(), 23, 14}, b{pair.image1.data(), 23, 14};
    for (const SliceXForm& x0 : {SliceXForm(), kTurned, kFlipped})
      for (const SliceXForm& x1 : {kTurned, kFlipped, SliceXForm(14, 3, 5, false)}) {
        const float expected = plainQuality(a, b, channels, x0, x1);
        EXPECT_EQ(pair.quality(x0, x1), expected);
        EXPECT_EQ(module->computeQuality(a.pixels, b.pixels, 23, 14, channels, x0, x1), expected);
      }
  }
  const Pair sizes(20, 8, 1, Random(3));
  sizes.evaluator->setDimensions1(8, 20);
  const kernels::PairImage wide{sizes.image0.data(), 20, 8}, tall{sizes.image1.data(), 8, 20};
  // The overlap of the last is 4 x 8 of 8 x 8: just not lowered.
  for (const SliceXForm& x :
       {SliceXForm(), kTurned, SliceXForm(-5, 4, 0, false), SliceXForm(-4, -6, 0, false)})
    EXPECT_EQ(sizes.quality({}, x), plainQuality(wide, tall, 1, {}, x));
}

TEST(ZxDefaultAlignmentEvaluator, CountsMasksInPairsAndInItsOwnWayOnReducedImages)
{
  Random random(5);
  const Pair pair(22, 14, 1, Random(6));
  Bytes bytes0, bytes1;
  for (Bytes* mask : {&bytes0, &bytes1})
    for (int i = 0; i < 22 * 14; ++i) mask->push_back(random.below(4) ? 1 : 0);
  const kernels::PairMask mask0{bytes0.data(), 22, 14}, mask1{bytes1.data(), 22, 14};
  const float unmasked = pair.quality({}, kTurned);
  pair.evaluator->setMask0(bytes0.data());
  EXPECT_EQ(pair.quality({}, kTurned), unmasked);
  pair.evaluator->setMask1(bytes1.data());
  for (const int level : {0, 1}) {
    const int f = 1 << level, w = 22 / f, h = 14 / f;
    Bytes small0(countOf(w, h)), small1(countOf(w, h));
    kernels::blockAverage(pair.image0.data(), 22, 14, 1, f, small0.data());
    kernels::blockAverage(pair.image1.data(), 22, 14, 1, f, small1.data());
    const auto s = static_cast<float>(f);
    const SliceXForm x(kTurned.translationX / s, kTurned.translationY / s, kTurned.rotation, false);
    EXPECT_EQ(pair.quality({}, kTurned, level),
              plainQuality({small0.data(), w, h}, {small1.data(), w, h}, 1, {}, x, &mask0, &mask1));
  }
}

TEST(ZxDefaultAlignmentEvaluator, ReducesByWholeBlocksAndKeepsOneLevel)
{
  // The last row and column of 5 x 5 are dropped: differences there do not count on level 1.
  Pair pair(5, 5, 1, Bytes(25, 50), Bytes(25, 50));
  for (std::size_t i = 0; i < 5; ++i) pair.image1[20 + i] = pair.image1[5 * i + 4] = 255;
  for (const int level : {1, 2}) EXPECT_EQ(pair.quality({}, {}, level), 1.0f);
  for (const int level : {3, 40}) EXPECT_EQ(pair.quality({}, {}, level), 0.0f); // no pixel is left
  EXPECT_LT(pair.quality(), 1.0f);
  EXPECT_EQ(pair.quality({}, {2, 0, 0, false}, 1), 1.0f); // half overlap: not lowered yet
  // Another image makes another reduced one.
  const Bytes other(25, 10);
  pair.image1 = other;
  pair.evaluator->setImage1(pair.image1.data());
  EXPECT_FLOAT_EQ(pair.quality({}, {}, 1), 1.0f - 40.0f / 255.0f);
}
