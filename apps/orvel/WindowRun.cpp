#include "WindowRun.h"

#include "Session.h"
#include "qx/QxMainWindow.h"
#include "zx/ZxInterpreter.h"
#include "zx/ZxMessage.h"

#include <QApplication>
#include <QTimer>

namespace orvel {
namespace {

constexpr int scriptEventMilliseconds = 50;

void print(const std::string& line) { ZxMessage::getTheMsg()->printf("%s", line.c_str()); }

void runScript(const std::string& script)
{
  const ZxScriptResult result = ZxInterpreter::getTheInterpreter().runFile(script);
  if (result.state != ZxScriptResult::State::Failed && result.state != ZxScriptResult::State::Stopped) return;
  const std::string place = result.line > 0 ? script + ":" + std::to_string(result.line) : script;
  print(place + ": " + result.text);
  if (!result.trace.empty()) print(result.trace);
}

/// A script that wants to quit closes the window, which asks about unsaved changes; it may stay open.
void quit(QxMainWindow& window, int status, int milliseconds = 0)
{
  QTimer::singleShot(milliseconds, &window, [&window, status] {
    // It is no work to ask about when what scripts have asked for later is looked at just now.
    if (ZxInterpreter::getTheInterpreter().isEvaluating())
      return quit(window, status, scriptEventMilliseconds);
    if (window.close()) QCoreApplication::exit(status);
  });
}

} // namespace

int runWindow(const std::string& script, const std::vector<std::string>& files)
{
  Session session;
  QxMainWindow& window = session.window();
  ZxInterpreter& interpreter = ZxInterpreter::getTheInterpreter();
  interpreter.setArguments("orvel", files);
  interpreter.setQuitHandler([&window](int status) { quit(window, status); });
  for (const std::string& problem : session.problems()) print(problem);
  window.show();
  QStringList names;
  for (const std::string& file : files) names << QString::fromStdString(file);
  if (!names.isEmpty()) window.open(names);
  QTimer scriptEvents;
  QObject::connect(&scriptEvents, &QTimer::timeout, [&interpreter] { interpreter.handleEvents(); });
  scriptEvents.start(scriptEventMilliseconds);
  // The script finds what was opened with the window.
  QTimer whenOpened;
  QObject::connect(&whenOpened, &QTimer::timeout, [&] {
    if (window.isReadingOrWriting() || interpreter.isEvaluating()) return;
    whenOpened.stop();
    runScript(script);
  });
  if (!script.empty()) whenOpened.start(scriptEventMilliseconds);
  const int status = QApplication::exec();
  interpreter.setQuitHandler({});
  return status;
}

} // namespace orvel
