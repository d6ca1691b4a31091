#include "mc/McMath.h"

#include <gtest/gtest.h>

#include <limits>

TEST(McMath, SineAndCosineOfDegreesAreExactAtQuarterTurns)
{
  const double sines[] = {0, 1, 0, -1};
  for (int quarter = -9; quarter <= 9; ++quarter) {
    double s = 9, c = 9;
    mc::sinCosDegrees(90.0 * quarter, s, c);
    EXPECT_EQ(s, sines[(quarter + 12) % 4]) << quarter;
    EXPECT_EQ(c, sines[(quarter + 13) % 4]) << quarter;
  }
}

TEST(McMath, SineAndCosineOfDegreesFollowTheAngle)
{
  for (int k = -73; k < 73; ++k) {
    const double angle = 13.7 * k - 0.3;
    double s = 9, c = 9;
    mc::sinCosDegrees(angle, s, c);
    EXPECT_NEAR(s, std::sin(angle * mc::kPi / 180), 1e-13) << angle;
    EXPECT_NEAR(c, std::cos(angle * mc::kPi / 180), 1e-13) << angle;
    double oppositeSine = 9, sameCosine = 9;
    mc::sinCosDegrees(-angle, oppositeSine, sameCosine);
    EXPECT_EQ(oppositeSine, -s);
    EXPECT_EQ(sameCosine, c);
  }
}

TEST(McMath, AnAngleThatIsNotFiniteIsNone)
{
  for (const double angle :
       {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    double s = 9, c = 9;
    mc::sinCosDegrees(angle, s, c);
    EXPECT_EQ(s, 0.0);
    EXPECT_EQ(c, 1.0);
  }
}
