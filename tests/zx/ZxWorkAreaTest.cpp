#include "support/Console.h"
#include "zx/ZxRecordingWorkArea.h"
#include "zx/ZxTerminalWorkArea.h"

#include <gtest/gtest.h>

#include <csignal>

TEST(ZxWorkArea, CountsBusyAndHasOnePhase)
{
  ZxWorkArea* const silent = ZxWorkArea::getTheWorkArea();
  {
    ZxRecordingWorkArea work;
    for (const bool busy : {true, true, false}) work.setBusy(busy);
    EXPECT_TRUE(work.isBusy());
    for (int i = 0; i < 2; ++i) work.setBusy(false); // one too many
    EXPECT_FALSE(work.isBusy());
    work.setProgressFraction(7);
    EXPECT_EQ(work.getProgressFraction(), 1.0f);
    {
      const ZxWorkingPhase outer("outer");
      work.setProgressFraction(0.5f);
      {
        const ZxWorkingPhase inner("inner"); // part of the outer work
        EXPECT_EQ(work.getProgressText(), "outer");
        EXPECT_EQ(work.getProgressFraction(), 0.5f);
      }
      EXPECT_TRUE(work.isBusy());
    }
    EXPECT_FALSE(work.isBusy());
  }
  EXPECT_EQ(ZxWorkArea::getTheWorkArea(), silent);
}

/// Signals as a program gets them from a terminal, whatever the tests run under.
class ZxTerminalWorkAreaTest : public testing::Test {
protected:
  ZxTerminalWorkAreaTest()
  {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, SIG_DFL);
  }
};

TEST_F(ZxTerminalWorkAreaTest, TakesTheFirstInterruptAndLeavesTheSecond)
{
  ZxTerminalWorkArea work(ZxTerminalWorkArea::Display::Never);
  EXPECT_FALSE(work.wasInterrupted(1));
  std::raise(SIGINT);
  EXPECT_TRUE(work.wasInterrupted(1));
  EXPECT_EQ(std::signal(SIGINT, SIG_DFL), SIG_DFL);
}

TEST_F(ZxTerminalWorkAreaTest, SurvivesTheSignalsThatAreNoneOfIt)
{
  std::signal(SIGHUP, SIG_IGN); // as under nohup
  {
    const ZxTerminalWorkArea work(ZxTerminalWorkArea::Display::Never);
    EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
  }
  std::raise(SIGTERM); // when everything is done
  EXPECT_EQ(std::signal(SIGTERM, SIG_DFL), SIG_DFL);
}

TEST(ZxMessage, HandsOverOneLineAMessage)
{
  Console console;
  ZxMessage::getTheMsg()->printf("slice %d of %s: %.2f\n", 3, std::string(5000, '%').c_str(), 0.5);
  ZxMessage::getTheMsg()->memError(123456789012);
  EXPECT_EQ(console.take(), (Lines{"slice 3 of " + std::string(5000, '%') + ": 0.50",
                                   "Not enough memory: 123456789012 bytes could not be allocated."}));
}
