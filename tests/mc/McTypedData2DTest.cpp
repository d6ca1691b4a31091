#include "mc/McTypedData2D.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

TEST(McTypedElement, LengthIsThatOfTheVectorOfItsValues)
{
  const std::int16_t negative[] = {-32768};
  EXPECT_EQ(McTypedElement(negative, McPrimType::Int16, 1).length(), 32768.0);
  const std::int32_t lowest[] = {std::numeric_limits<std::int32_t>::min()};
  EXPECT_EQ(McTypedElement(lowest, McPrimType::Int32, 1).length(), 2147483648.0);
  const std::uint8_t color[] = {2, 4, 5, 6};
  EXPECT_EQ(McTypedElement(color, McPrimType::UInt8, 4).length(), 9.0);
  const float pair[] = {-3.0f, 4.0f};
  EXPECT_EQ(McTypedElement(pair, McPrimType::Float, 2).length(), 5.0);
  const double nan[] = {1.0, std::nan("")};
  EXPECT_TRUE(std::isnan(McTypedElement(nan, McPrimType::Double, 2).length()));
}

TEST(McTypedData2D, ClearsAndMovesPixelsOfOneRow)
{
  McTypedData2D image(5, 3, McPrimType::UInt16, 2);
  ASSERT_NE(image.data(), nullptr);
  EXPECT_EQ(image.rowBytes(), 20u);
  std::uint16_t values[30];
  for (int i = 0; i < 30; ++i) values[i] = static_cast<std::uint16_t>(100 + i);
  std::memcpy(image.data(), values, sizeof values);
  image.movePixels(1, 1, 2, 3); // they overlap
  image.clear(1, 0, 1);
  const std::uint16_t expected[] = {0, 0, 112, 113, 112, 113, 114, 115, 116, 117};
  EXPECT_EQ(std::memcmp(image.row(1), expected, sizeof expected), 0);
  EXPECT_EQ(std::memcmp(image.row(0), values, 20), 0);
  EXPECT_EQ(std::memcmp(image.row(2), values + 20, 20), 0);
  EXPECT_EQ(image.at(4, 2).length(), std::hypot(128.0, 129.0));
}

TEST(McTypedData2D, HoldsNothingWhereThereIsNoMemoryForIt)
{
  EXPECT_EQ(McTypedData2D(2147483647, 2147483647, McPrimType::Double, 4).data(), nullptr);
  EXPECT_EQ(McTypedData2D(0, 4, McPrimType::UInt8, 1).data(), nullptr);
}
