#include "Program.h"

#include "Arguments.h"
#include "BatchRun.h"
#include "WindowRun.h"
#include "zx/ZxFileJob.h"

#include <QApplication>

#include <cstdio>
#include <cstdlib>

namespace orvel {
namespace {

/// Remarks of the toolkit about its surroundings help no script; what ends the program is shown.
void showFatalOnly(QtMsgType type, const QMessageLogContext&, const QString& text)
{
  if (type == QtFatalMsg) std::fprintf(stderr, "%s\n", qPrintable(text));
}

/// A script needs no display, and shows nothing where there is one. Who says otherwise is obeyed.
void prepareBatch()
{
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  qInstallMessageHandler(showFatalOnly);
}

constexpr const char* noDisplay = "There is no display for the window; orvel -b SCRIPT needs none.";

int fail(const std::string& problem)
{
  std::fprintf(stderr, "orvel: %s\n", problem.c_str());
  return EXIT_FAILURE;
}

/// The toolkit ends the program with a core dump when it cannot reach the display that it was told of.
void failWithoutDisplay(QtMsgType type, const QMessageLogContext&, const QString&)
{
  if (type == QtFatalMsg) std::_Exit(fail(noDisplay));
}

bool isSet(const char* variable)
{
  const char* const value = std::getenv(variable);
  return value && *value;
}

bool lacksDisplay(Arguments::Mode mode)
{
  return mode == Arguments::Mode::Window && !isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY") &&
         !isSet("QT_QPA_PLATFORM");
}

int runApplication(char* programName, const Arguments& arguments)
{
  const bool isBatch = arguments.mode == Arguments::Mode::Batch;
  if (isBatch)
    prepareBatch();
  else
    qInstallMessageHandler(failWithoutDisplay);
  // Options are our own: none of the toolkit's is looked for among the arguments of a script.
  int argc = 1;
  char* argv[] = {programName, nullptr};
  QApplication application(argc, argv);
  if (!isBatch) qInstallMessageHandler(nullptr);
  QCoreApplication::setApplicationName("orvel");
  QCoreApplication::setApplicationVersion(ORVEL_VERSION);
  QGuiApplication::setDesktopFileName("orvel");
  const int status =
      isBatch ? runBatch(arguments.script, arguments.words) : runWindow(arguments.script, arguments.words);
  // A read that was dropped may go on until its file gives it the chance to stop; nobody waits for it.
  if (!ZxFileJob::stopAll(std::chrono::milliseconds(500))) std::_Exit(status);
  return status;
}

int print(const std::string& text)
{
  return std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int runProgram(int argc, char** argv)
{
  const std::span<char* const> words(argv, static_cast<std::size_t>(argc));
  const Arguments arguments = Arguments::parse(words.subspan(1));
  if (!arguments.problem.empty()) return fail(arguments.problem);
  if (arguments.mode == Arguments::Mode::Help) return print(Arguments::usage());
  if (arguments.mode == Arguments::Mode::Version) return print("orvel " ORVEL_VERSION "\n");
  if (lacksDisplay(arguments.mode)) return fail(noDisplay);
  return runApplication(argv[0], arguments);
}

} // namespace orvel
