#include "RadialProfile.h"

#include <gtest/gtest.h>

namespace {

/// A square of 9 x 9 object pixels around a place in an image of 60 x 44.
std::vector<std::uint8_t> squareAt(int left, int top)
{
  std::vector<std::uint8_t> pixels;
  for (int y = 0; y < 44; ++y)
    for (int x = 0; x < 60; ++x) pixels.push_back(std::abs(x - left) < 5 && std::abs(y - top) < 5 ? 255 : 0);
  return pixels;
}

RadialProfile measured(const std::vector<std::uint8_t>& pixels, int n, float step)
{
  return measureRadialProfile({pixels.data(), 60, 44, 1}, {100, false}, {30, 22}, n, step);
}

} // namespace

TEST(RadialProfile, HasTheEntriesOfTheDirections)
{
  // Of the four rays of a step of 90 degrees the second one, downwards, meets the square. The first starts in
  // the centre, which is its hit where it meets nothing; the third and fourth keep the hit of the second.
  const auto below = squareAt(30, 36);
  for (int again = 0; again < 2; ++again) {
    const RadialProfile profile = measured(below, radialProfileLength(90), 90);
    ASSERT_EQ(profile.size(), 4U);
    EXPECT_EQ(profile[0], 0.0f);
    EXPECT_GT(profile[1], 17.0f); // the far side, from outside
    EXPECT_EQ(profile[2], profile[1]);
    EXPECT_EQ(profile[3], profile[1]);
  }
  const RadialProfile right = measured(squareAt(46, 22), 360, 1);
  EXPECT_GT(right[0], 19.0f);
  EXPECT_EQ(right[180], right[0]); // measured right after it
}

TEST(RadialProfile, LengthIsCutOff)
{
  EXPECT_EQ(radialProfileLength(1), 360);
  EXPECT_EQ(radialProfileLength(0.1f), 3600);
  EXPECT_EQ(radialProfileLength(7), 51);
}

TEST(RadialProfile, MatchesByTheSmallestDifference)
{
  const RadialProfile profile = {5, 9, 1, 4, 7, 2};
  const RadialProfile shifted = {7, 2, 5, 9, 1, 4}, reversed = {1, 9, 5, 2, 7, 4};
  EXPECT_EQ(matchProfiles(profile, shifted, MirroredToo::Yes).shift, 2);
  EXPECT_FALSE(matchProfiles(profile, shifted, MirroredToo::Yes).mirrored);
  EXPECT_FALSE(matchProfiles(profile, reversed, MirroredToo::No).mirrored);
  const ProfileMatch mirrored = matchProfiles(profile, reversed, MirroredToo::Yes);
  EXPECT_TRUE(mirrored.mirrored);
  for (int i = 0; i < 6; ++i)
    EXPECT_EQ(reversed[static_cast<std::size_t>((i + mirrored.shift) % 6)],
              profile[static_cast<std::size_t>(5 - i)]);
  // Equal fits: the first shift, and no mirroring.
  const RadialProfile even = {3, 8, 3, 8, 3, 8};
  EXPECT_EQ(matchProfiles(even, even, MirroredToo::Yes).shift, 0);
  EXPECT_FALSE(matchProfiles(even, even, MirroredToo::Yes).mirrored);
}
