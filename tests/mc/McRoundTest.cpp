#include "mc/McRound.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

} // namespace

TEST(McRound, EveryRuleHasItsHalves)
{
  struct Row {
    double v;
    int trunc, floor, halfUp, addHalf, halfEven;
  };
  for (const Row& r : {Row{2.5, 2, 2, 3, 3, 2},
                       {3.5, 3, 3, 4, 4, 4},
                       {-2.5, -2, -3, -2, -2, -2},
                       {-3.5, -3, -4, -3, -3, -4},
                       {-0.7, 0, -1, -1, 0, -1},
                       {-0.5, 0, -1, 0, 0, 0},
                       {0.49, 0, 0, 0, 0, 0},
                       {-1.2, -1, -2, -1, 0, -1},
                       {7.0, 7, 7, 7, 7, 7}}) {
    EXPECT_EQ(mc::truncToInt(r.v), r.trunc) << r.v;
    EXPECT_EQ(mc::floorToInt(r.v), r.floor) << r.v;
    EXPECT_EQ(mc::roundHalfUp(r.v), r.halfUp) << r.v;
    EXPECT_EQ(mc::addHalfAndTrunc(r.v), r.addHalf) << r.v;
    EXPECT_EQ(mc::roundHalfEven<int>(r.v), r.halfEven) << r.v;
    EXPECT_EQ(mc::roundHalfEven<std::int64_t>(r.v), r.halfEven) << r.v;
  }
}

TEST(McRound, NotANumberIsZero)
{
  EXPECT_EQ(mc::truncToInt(kNaN), 0);
  EXPECT_EQ(mc::floorToInt64(kNaN), 0);
  EXPECT_EQ(mc::roundHalfUp(kNaN), 0);
  EXPECT_EQ(mc::addHalfAndTrunc(kNaN), 0);
  EXPECT_EQ(mc::toFixed16(kNaN), 0);
  EXPECT_EQ(mc::roundHalfEven<std::int16_t>(kNaN), 0);
  EXPECT_EQ(mc::truncToByte(std::numeric_limits<float>::quiet_NaN()), 0);
}

TEST(McRound, ClampsToTheRangeOfTheResult)
{
  for (const double v : {kInf, 1e300, 9.3e18}) {
    EXPECT_EQ(mc::truncToInt(v), std::numeric_limits<int>::max());
    EXPECT_EQ(mc::truncToInt(-v), std::numeric_limits<int>::min());
    EXPECT_EQ(mc::floorToInt64(v), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(mc::floorToInt64(-v), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(mc::toFixed16(v), std::int64_t{1} << 45);
    EXPECT_EQ(mc::toFixed16(-v), -(std::int64_t{1} << 45));
    EXPECT_EQ(mc::roundHalfUp(-v), std::numeric_limits<int>::min());
    EXPECT_EQ(mc::roundHalfEven<std::uint8_t>(-v), 0);
    EXPECT_EQ(mc::roundHalfEven<std::int64_t>(v), std::numeric_limits<std::int64_t>::max());
  }
  EXPECT_EQ(mc::truncToInt(2147483647.5), 2147483647);
  EXPECT_EQ(mc::truncToInt(-2147483647.5), -2147483647);
}

TEST(McRound, StoresVoxelsToTheirLimits)
{
  EXPECT_EQ(mc::roundHalfEven<std::uint8_t>(254.5), 254);
  EXPECT_EQ(mc::roundHalfEven<std::uint8_t>(255.5), 255);
  EXPECT_EQ(mc::roundHalfEven<std::int16_t>(-32768.5), -32768);
  EXPECT_EQ(mc::roundHalfEven<std::int16_t>(32766.5), 32766);
  EXPECT_EQ(mc::roundHalfEven<std::uint16_t>(65534.5), 65534);
  EXPECT_EQ(mc::roundHalfEven<std::int32_t>(2147483646.5), 2147483646);
  EXPECT_EQ(mc::roundHalfEven<std::int32_t>(-2147483648.0), std::numeric_limits<std::int32_t>::min());
}

TEST(McRound, BytesAndIndicesAreCutOff)
{
  EXPECT_EQ(mc::truncToByte(-0.9f), 0);
  EXPECT_EQ(mc::truncToByte(1.99f), 1);
  EXPECT_EQ(mc::truncToByte(254.99f), 254);
  EXPECT_EQ(mc::truncToByte(1e30f), 255);
  EXPECT_EQ(mc::truncToIndex(-0.9), 0);
  EXPECT_EQ(mc::truncToIndex(65534.99), 65534);
  EXPECT_EQ(mc::truncToIndex(1e300), 2147483647);
  EXPECT_EQ(mc::truncToIndex(kNaN), 0);
}

TEST(McRound, FixedPointRoundsHalvesUpwards)
{
  EXPECT_EQ(mc::toFixed16(1.0), 65536);
  EXPECT_EQ(mc::toFixed16(1.5 / 65536), 2);
  EXPECT_EQ(mc::toFixed16(-1.5 / 65536), -1);
  EXPECT_EQ(mc::toFixed16(-1.6 / 65536), -2);
}
