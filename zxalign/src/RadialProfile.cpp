#include "RadialProfile.h"

#include "mc/McMath.h"
#include "mc/McRound.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

std::size_t entry(int k) { return static_cast<std::size_t>(k); }

float wholeDistance(kernels::PixelPosition a, kernels::PixelPosition b)
{
  const double dx = a.x - b.x;
  const double dy = a.y - b.y;
  return static_cast<float>(std::trunc(std::sqrt(dx * dx + dy * dy)));
}

/// Sum of |reference[i] - editable[i + shift]|. It only grows, so it is left as soon as it reaches the limit.
double difference(const RadialProfile& reference, const RadialProfile& editable, std::size_t shift,
                  double limit)
{
  double sum = 0.0;
  const std::size_t n = reference.size();
  for (std::size_t i = 0, j = shift; i < n && !(sum >= limit); ++i, ++j) {
    if (j == n) j = 0;
    sum += static_cast<double>(std::abs(reference[i] - editable[j]));
  }
  return sum;
}

} // namespace

int radialProfileLength(float step) { return mc::truncToInt(360.0f / step); }

RadialProfile measureRadialProfile(const kernels::ObjectImage& image, const kernels::ObjectTest& test,
                                   kernels::PixelPosition centre, int n, float step)
{
  RadialProfile profile(entry(n), 0.0f);
  const int radius = std::max(image.width, image.height) / 2;
  kernels::PixelPosition hit = centre;
  for (int k = 0; k < n / 4; ++k) {
    double sine = 0, cosine = 0;
    mc::sinCosDegrees(k * static_cast<double>(step), sine, cosine);
    const int c = mc::truncToInt(cosine * radius);
    const int s = mc::truncToInt(sine * radius);
    const kernels::PixelPosition rays[4] = {{c, s}, {-s, c}, {-c, -s}, {s, -c}};
    const int entries[4] = {k, k + n / 4, k + n / 2, k + static_cast<int>(3 * std::int64_t{n} / 4)};
    for (int quarter = 0; quarter < 4; ++quarter) {
      const kernels::PixelPosition start = {centre.x + rays[quarter].x, centre.y + rays[quarter].y};
      kernels::findEdge(image, test, start, centre, hit);
      profile[entry(entries[quarter])] = wholeDistance(centre, hit);
    }
  }
  return profile;
}

ProfileMatch matchProfiles(const RadialProfile& reference, const RadialProfile& editable,
                           MirroredToo mirroredToo)
{
  ProfileMatch best;
  double smallest = std::numeric_limits<double>::max();
  const auto compare = [&](const RadialProfile& profile, bool mirrored) {
    for (std::size_t shift = 0; shift < editable.size(); ++shift) {
      const double sum = difference(profile, editable, shift, smallest);
      if (!(sum < smallest)) continue;
      smallest = sum;
      best = {static_cast<int>(shift), mirrored};
    }
  };
  compare(reference, false);
  if (mirroredToo == MirroredToo::Yes) compare({reference.rbegin(), reference.rend()}, true);
  return best;
}
