#include "BatchRun.h"

#include "Session.h"
#include "zx/ZxInterpreter.h"
#include "zx/ZxMessage.h"
#include "zx/ZxTerminalWorkArea.h"

#include <QCoreApplication>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace orvel {
namespace {

enum ExitStatus { Success = 0, Failed = 1, Interrupted = 130 };

/// Progress in the terminal; the windows that nobody sees live on.
class BatchWorkArea : public ZxTerminalWorkArea {
public:
  void processPendingEvents() override { QCoreApplication::processEvents(); }
};

/// Messages go to standard error while this lives, beside the progress line and not into it.
class MessagesToTerminal {
public:
  explicit MessagesToTerminal(ZxTerminalWorkArea& area)
    : m_before(ZxMessage::getTheMsg()->setSink([&area](const std::string& line) {
        area.clearLine();
        std::fprintf(stderr, "%s\n", line.c_str());
      }))
  {
  }
  ~MessagesToTerminal() { ZxMessage::getTheMsg()->setSink(std::move(m_before)); }
  MessagesToTerminal(const MessagesToTerminal&) = delete;
  MessagesToTerminal& operator=(const MessagesToTerminal&) = delete;

private:
  ZxMessage::Sink m_before;
};

int reportEnd(const std::string& script, const ZxScriptResult& result)
{
  switch (result.state) {
  case ZxScriptResult::State::Done:
    return Success;
  case ZxScriptResult::State::Quit:
    return ZxInterpreter::getTheInterpreter().quitStatus().value_or(Success);
  case ZxScriptResult::State::Stopped:
    std::fprintf(stderr, "%s: stopped by the user\n", script.c_str());
    return Interrupted;
  case ZxScriptResult::State::Failed:
    break;
  }
  const std::string place = result.line > 0 ? script + ":" + std::to_string(result.line) : script;
  std::fprintf(stderr, "%s: %s\n", place.c_str(), result.text.c_str());
  if (!result.trace.empty()) std::fprintf(stderr, "%s\n", result.trace.c_str());
  return Failed;
}

} // namespace

int runBatch(const std::string& script, const std::vector<std::string>& arguments)
{
  Session session;
  BatchWorkArea workArea; // After the window, which has set its own.
  const MessagesToTerminal messages(workArea);
  for (const std::string& problem : session.problems()) std::fprintf(stderr, "orvel: %s\n", problem.c_str());
  if (!session.problems().empty()) return Failed;
  ZxInterpreter& interpreter = ZxInterpreter::getTheInterpreter();
  interpreter.setOutput({}); // Nobody sees the console of the window.
  interpreter.setArguments(script, arguments);
  const ZxScriptResult result = interpreter.runFile(script);
  workArea.clearLine();
  const int status = reportEnd(script, result);
  if (interpreter.flushOutput()) return status;
  std::fprintf(stderr, "orvel: Standard output could not be written: %s.\n", std::strerror(errno));
  return Failed;
}

} // namespace orvel
