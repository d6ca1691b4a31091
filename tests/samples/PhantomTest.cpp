#include "samples/Phantom.h"

#include "mc/McRound.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <thread>
#include <vector>

namespace {

using samples::Phantom;
using samples::PhantomOptions;
using samples::PhantomTransform;

using Pixels = std::vector<std::uint8_t>;

// Odd, so that a centre at (size - 1) / 2 or size / 2.0 shows, and no multiple of the squares that are
// rendered.
constexpr int kSize = 131;

PhantomOptions smallOptions()
{
  PhantomOptions options;
  options.slices = 8;
  options.size = kSize;
  options.seed = 7;
  return options;
}

PhantomOptions undisplaced(PhantomOptions options)
{
  options.maxShift = 0;
  options.maxAngle = 0;
  options.noise = 0;
  return options;
}

Pixels render(const Phantom& phantom, int k)
{
  const auto side = static_cast<std::size_t>(phantom.options().size);
  Pixels pixels(side * side);
  phantom.renderSlice(k, pixels.data());
  return pixels;
}

double at(const Pixels& pixels, int x, int y)
{
  return pixels[static_cast<std::size_t>(y) * kSize + static_cast<std::size_t>(x)];
}

/// Mean difference between a slice and the tissue at the mapped places, which is given without displacement.
double difference(const Pixels& slice, const Pixels& tissue, const PhantomTransform& t)
{
  const double a = static_cast<double>(t.angleDegrees) * std::acos(-1.0) / 180.0;
  double sum = 0;
  int count = 0;
  for (int y = 0; y < kSize; ++y)
    for (int x = 0; x < kSize; ++x) {
      const double u = x - 65, v = y - 65;
      const double px = u * std::cos(a) + v * std::sin(a) + static_cast<double>(t.tx) + 65;
      const double py = -u * std::sin(a) + v * std::cos(a) + static_cast<double>(t.ty) + 65;
      if (px < 0 || py < 0 || px >= kSize - 1 || py >= kSize - 1) continue;
      const int left = mc::floorToInt(px), top = mc::floorToInt(py);
      const double fx = px - left, fy = py - top;
      const double upper = at(tissue, left, top) * (1 - fx) + at(tissue, left + 1, top) * fx;
      const double lower = at(tissue, left, top + 1) * (1 - fx) + at(tissue, left + 1, top + 1) * fx;
      sum += std::fabs(upper * (1 - fy) + lower * fy - at(slice, x, y));
      ++count;
    }
  return sum / count;
}

double correlation(const Pixels& a, const Pixels& b)
{
  const double n = static_cast<double>(a.size());
  double sa = 0, sb = 0, saa = 0, sbb = 0, sab = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const double p = a[i], q = b[i];
    sa += p, sb += q, saa += p * p, sbb += q * q, sab += p * q;
  }
  return (sab - sa * sb / n) / std::sqrt((saa - sa * sa / n) * (sbb - sb * sb / n));
}

TEST(Phantom, GivesTheSameBytesInAnyOrderOnAnyThreadAndInEveryBuild)
{
  const Phantom phantom(smallOptions());
  std::vector<Pixels> upwards, downwards(8);
  for (int k = 0; k < 8; ++k) upwards.push_back(render(phantom, k));
  const auto everyOther = [&downwards](int last) {
    const Phantom again(smallOptions());
    for (int k = last; k >= 0; k -= 2) downwards[static_cast<std::size_t>(k)] = render(again, k);
  };
  std::thread odd(everyOther, 7);
  everyOther(6);
  odd.join();
  EXPECT_EQ(upwards, downwards);

  std::uint64_t sum = 14695981039346656037ull;
  for (const Pixels& pixels : upwards)
    for (std::uint8_t pixel : pixels) sum = (sum ^ pixel) * 1099511628211ull;
  EXPECT_EQ(sum, 2998429757110449984ull);
}

TEST(Phantom, FollowsTheSeed)
{
  PhantomOptions other = smallOptions();
  other.seed = 8;
  const Phantom one(smallOptions()), two(other);
  EXPECT_NE(one.truth()[3].tx, two.truth()[3].tx);
  EXPECT_LT(correlation(render(one, 3), render(two, 3)), 0.3);
}

TEST(Phantom, ShowsTheTissueAtTheTransformedPlace)
{
  PhantomOptions options = smallOptions();
  options.maxShift = 9;
  options.maxAngle = 25;
  options.noise = 0;
  const Phantom displaced(options);
  const Phantom plain(undisplaced(options));
  for (int k : {1, 4, 6}) {
    const PhantomTransform t = displaced.truth()[static_cast<std::size_t>(k)];
    const Pixels slice = render(displaced, k), tissue = render(plain, k);
    const double right = difference(slice, tissue, t);
    EXPECT_LT(right, 2.5) << k;
    const auto moved = [&](float dx, float dy, float angle) {
      return difference(slice, tissue, {t.tx + dx, t.ty + dy, t.angleDegrees + angle, false});
    };
    // Even half a pixel or half a degree off is worse in every direction.
    for (float sign : {-1.0f, 1.0f}) {
      EXPECT_GT(moved(0.5f * sign, 0, 0), 1.2 * right) << k;
      EXPECT_GT(moved(0, 0.5f * sign, 0), 1.2 * right) << k;
      EXPECT_GT(moved(0, 0, 0.5f * sign), 1.1 * right) << k;
    }
  }
}

TEST(Phantom, ChangesFromSliceToSliceAsTissueDoes)
{
  const Phantom phantom(undisplaced(smallOptions()));
  std::vector<Pixels> slices(8);
  for (int k = 0; k < 8; ++k) slices[static_cast<std::size_t>(k)] = render(phantom, k);
  std::set<int> means;
  for (std::size_t k = 0; k < 8; ++k) {
    double sum = 0;
    for (std::uint8_t pixel : slices[k]) sum += pixel;
    means.insert(mc::floorToInt(sum / static_cast<double>(slices[k].size())));
    if (k == 7) break;
    EXPECT_GT(correlation(slices[k], slices[k + 1]), 0.5) << k;
    EXPECT_LT(correlation(slices[k], slices[k + 1]), 0.95) << k;
  }
  EXPECT_LT(correlation(slices[0], slices[7]), correlation(slices[0], slices[1]) - 0.15);
  EXPECT_GE(means.size(), 4u) << "staining does not vary";
}

TEST(Phantom, HasNoiseOfTheDeviationAskedFor)
{
  PhantomOptions options = undisplaced(smallOptions());
  const Pixels clean = render(Phantom(options), 2);
  options.noise = 9;
  const Pixels noisy = render(Phantom(options), 2);
  double sum = 0, squares = 0;
  for (std::size_t i = 0; i < clean.size(); ++i) {
    const double d = noisy[i] - clean[i];
    sum += d, squares += d * d;
  }
  const double n = static_cast<double>(clean.size());
  EXPECT_NEAR(sum / n, 0.0, 0.3);
  EXPECT_NEAR(std::sqrt(squares / n), 9.0, 0.4);
}

TEST(Phantom, DisplacesOverTheWholeRangeAskedFor)
{
  PhantomOptions options;
  options.slices = 200;
  options.maxShift = 7;
  options.maxAngle = 3;
  const std::vector<PhantomTransform> truth = Phantom(options).truth();
  ASSERT_EQ(truth.size(), 200u);
  const auto expectRange = [&truth](float PhantomTransform::*member, float most) {
    const auto [low, high] = std::minmax_element(
        truth.begin(), truth.end(), [member](const auto& a, const auto& b) { return a.*member < b.*member; });
    EXPECT_GE((*low).*member, -most);
    EXPECT_LT((*low).*member, -0.9f * most);
    EXPECT_LE((*high).*member, most);
    EXPECT_GT((*high).*member, 0.9f * most);
  };
  expectRange(&PhantomTransform::tx, 7);
  expectRange(&PhantomTransform::ty, 7);
  expectRange(&PhantomTransform::angleDegrees, 3);
  EXPECT_NE(truth[5].tx, truth[5].ty);
}

TEST(Phantom, RefusesAndLimitsOptionsOutOfRange)
{
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const auto complaint = [](auto change) {
    PhantomOptions options;
    change(options);
    return samples::check(options);
  };
  EXPECT_EQ(samples::check({}), "");
  EXPECT_EQ(
      complaint([](auto& o) { o.slices = 1, o.size = 16, o.maxShift = 16, o.maxAngle = 180, o.noise = 0; }),
      "");
  EXPECT_NE(complaint([](auto& o) { o.slices = 0; }).find("slices"), std::string::npos);
  EXPECT_NE(complaint([](auto& o) { o.slices = 65536; }).find("65535"), std::string::npos);
  EXPECT_NE(complaint([](auto& o) { o.size = 15; }).find("size"), std::string::npos);
  EXPECT_NE(complaint([](auto& o) { o.size = 65536; }).find("size"), std::string::npos);
  EXPECT_NE(complaint([](auto& o) { o.maxShift = -0.5; }).find("shift"), std::string::npos);
  EXPECT_NE(complaint([](auto& o) { o.size = 64, o.maxShift = 64.5; }).find("64 pixels"), std::string::npos);
  EXPECT_NE(complaint([nan](auto& o) { o.maxAngle = nan; }).find("angle"), std::string::npos);
  EXPECT_NE(complaint([](auto& o) { o.noise = 129; }).find("noise"), std::string::npos);

  const PhantomOptions limited = Phantom({-3, 5, 1, nan, 500, -1}).options();
  EXPECT_EQ(samples::check(limited), "");
  EXPECT_EQ(limited.slices, 1);
  EXPECT_EQ(limited.maxAngle, 180.0);
  EXPECT_EQ(render(Phantom(limited), 0).size(), 256u);
}

} // namespace
