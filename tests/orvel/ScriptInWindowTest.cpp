// Scripts inside a window that is alive.
#include "qx/QxMainWindow.h"
#include "support/Volumes.h"
#include "zx/ZxInterpreter.h"
#include "zx/ZxModule.h"
#include "zx/ZxObjectPool.h"
#include "zx/ZxWorkArea.h"

#include <gtest/gtest.h>

#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>

namespace {

class ScriptInWindowTest : public testing::Test {
protected:
  ScriptInWindowTest()
  {
    window.show();
    timer.callOnTimeout([this] {
      if (auto* stop = window.findChild<QPushButton*>("stopButton"); stop && stop->isVisible()) {
        timer.stop();
        stop->click();
      }
    });
    timer.start(1);
  }
  ~ScriptInWindowTest() override { ZxObjectPool::getThePool().clear(); }

  QxMainWindow window;
  QTimer timer;
};

/// Works in its pass until it is stopped.
class Endless : public ZxModule {
public:
  Endless() : ZxModule({&ZxLatticeInterface::getClassTypeId()}), action(this, "action", "", {"Work"}) {}
  void compute() override
  {
    if (action.getHit() != 0) return;
    const ZxWorkingPhase phase("Working");
    while (!ZxWorkArea::getTheWorkArea()->wasInterrupted(1)) {
    }
  }
  ZxPortButtonList action;
};

} // namespace

TEST_F(ScriptInWindowTest, TheStopButtonEndsAScriptThatNeverEnds)
{
  ZxInterpreter& interpreter = ZxInterpreter::getTheInterpreter();
  EXPECT_EQ(interpreter.eval("while 1 {catch {error x}}").state, ZxScriptResult::State::Stopped);
  EXPECT_FALSE(window.findChild<QPushButton*>("stopButton")->isVisible());
}

TEST_F(ScriptInWindowTest, StoppingAModuleEndsTheScriptThatRanIt)
{
  const auto module = mcMake<Endless>();
  module->setLabel("m");
  ZxObjectPool::getThePool().add(module.get());
  ZxInterpreter& interpreter = ZxInterpreter::getTheInterpreter();
  const ZxScriptResult result = interpreter.eval("m action hit 0; set ::reached 1");
  EXPECT_EQ(result.state, ZxScriptResult::State::Failed);
  EXPECT_EQ(result.text, "stopped by the user");
  EXPECT_EQ(interpreter.getVar("reached"), nullptr);
}

// A command of the console, or the script of the command line, may come while what another one has asked for
// later is at work.
TEST_F(ScriptInWindowTest, AnotherScriptRunsWhileOneLooksForEvents)
{
  timer.stop();
  ZxInterpreter& interpreter = ZxInterpreter::getTheInterpreter();
  ZxScriptResult inner;
  QTimer::singleShot(0, &window, [&] {
    inner = interpreter.eval("catch {error x} message; set message");
    interpreter.setVar("isOver", "1");
  });
  EXPECT_EQ(interpreter.eval("while {![info exists ::isOver]} {}").state, ZxScriptResult::State::Done);
  EXPECT_EQ(inner.state, ZxScriptResult::State::Done);
  EXPECT_EQ(inner.text, "x");
}

TEST_F(ScriptInWindowTest, WhatScriptsPrintIsOnTheConsole)
{
  ZxInterpreter::getTheInterpreter().eval("puts one; echo two");
  EXPECT_EQ(window.findChild<QPlainTextEdit*>("messages")->toPlainText(), "one\ntwo");
}
