#include "support/Console.h"

#include <gtest/gtest.h>

TEST(ZxMessage, HandsOverOneLineAMessage)
{
  Console console;
  ZxMessage* msg = ZxMessage::getTheMsg();
  msg->printf("slice %d of %s: %.2f", 3, "100% x", 0.5);
  msg->printf("with an end\n");
  msg->printf("%s", std::string(100000, 'x').c_str());
  msg->memError(123456789012);
  const Lines lines = console.take();
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(lines[0], "slice 3 of 100% x: 0.50");
  EXPECT_EQ(lines[1], "with an end");
  EXPECT_EQ(lines[2].size(), 100000U);
  EXPECT_EQ(lines[3], "Not enough memory: 123456789012 bytes could not be allocated.");
}

TEST(ZxMessage, GoesToStandardErrorWithoutASink)
{
  testing::internal::CaptureStderr();
  ZxMessage::getTheMsg()->printf("to whom it may concern");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "to whom it may concern\n");
}
