#include "zx/ZxRecordingWorkArea.h"
#include "zx/ZxTerminalWorkArea.h"

#include <gtest/gtest.h>

#include <csignal>

TEST(ZxWorkArea, IsAlwaysThere)
{
  ZxWorkArea* const silent = ZxWorkArea::getTheWorkArea();
  ASSERT_NE(silent, nullptr);
  EXPECT_FALSE(silent->wasInterrupted(1));
  {
    ZxRecordingWorkArea work;
    EXPECT_EQ(ZxWorkArea::getTheWorkArea(), &work);
  }
  EXPECT_EQ(ZxWorkArea::getTheWorkArea(), silent);
}

TEST(ZxWorkArea, ShowsTextAndFraction)
{
  ZxRecordingWorkArea work;
  work.setProgressText("slice %d of %d\n", 2, 9);
  for (const float fraction : {0.25f, 7.0f, -1.0f}) work.setProgressFraction(fraction);
  ASSERT_EQ(work.steps().size(), 4U);
  EXPECT_EQ(work.steps()[0].text, "slice 2 of 9");
  EXPECT_EQ(work.steps()[1].fraction, 0.25f);
  EXPECT_EQ(work.steps()[2].fraction, 1.0f);
  EXPECT_EQ(work.steps()[3].fraction, 0.0f);
}

TEST(ZxWorkArea, CountsBusyAndHasOnePhase)
{
  ZxRecordingWorkArea work;
  work.setBusy(true);
  work.setBusy(true);
  work.setBusy(false);
  EXPECT_TRUE(work.isBusy());
  work.setBusy(false);
  work.setBusy(false); // one too many
  EXPECT_FALSE(work.isBusy());
  work.setBusy(true);
  EXPECT_TRUE(work.isBusy());
  work.setBusy(false);
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

TEST(ZxWorkArea, InterruptsAtTheQueryAskedFor)
{
  ZxRecordingWorkArea work;
  work.interruptAtQuery(3);
  std::vector<bool> answers;
  for (int i = 0; i < 4; ++i) answers.push_back(work.wasInterrupted());
  EXPECT_EQ(answers, (std::vector<bool>{false, false, true, true}));
  EXPECT_EQ(work.getNumQueries(), 4);
}

TEST(ZxTerminalWorkArea, TakesTheFirstInterruptAndLeavesTheSecond)
{
  testing::internal::CaptureStderr();
  {
    ZxTerminalWorkArea work(ZxTerminalWorkArea::Display::Never);
    const ZxWorkingPhase phase("work");
    work.setProgressFraction(0.5f);
    EXPECT_FALSE(work.wasInterrupted(1));
    std::raise(SIGINT);
    EXPECT_TRUE(work.wasInterrupted(1));
    EXPECT_TRUE(ZxTerminalWorkArea::wasInterruptedEver());
    EXPECT_EQ(std::signal(SIGINT, SIG_DFL), SIG_DFL);
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
