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

bool isSet(const char* variable)
{
  const char* const value = std::getenv(variable);
  return value && *value;
}

/// The toolkit would end the program with a core dump.
bool lacksDisplay(Arguments::Mode mode)
{
  return mode == Arguments::Mode::Window && !isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY") &&
         !isSet("QT_QPA_PLATFORM");
}

int runApplication(char* programName, const Arguments& arguments)
{
  if (arguments.mode == Arguments::Mode::Batch) prepareBatch();
  // Options are our own: none of the toolkit's is looked for among the arguments of a script.
  int argc = 1;
  char* argv[] = {programName, nullptr};
  QApplication application(argc, argv);
  QCoreApplication::setApplicationName("orvel");
  QCoreApplication::setApplicationVersion(ORVEL_VERSION);
  QGuiApplication::setDesktopFileName("orvel");
  const int status = arguments.mode == Arguments::Mode::Batch ? runBatch(arguments.script, arguments.words)
                                                              : runWindow(arguments.script, arguments.words);
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
  if (!arguments.problem.empty()) {
    std::fprintf(stderr, "orvel: %s\n", arguments.problem.c_str());
    return EXIT_FAILURE;
  }
  if (arguments.mode == Arguments::Mode::Help) return print(Arguments::usage());
  if (arguments.mode == Arguments::Mode::Version) return print("orvel " ORVEL_VERSION "\n");
  if (lacksDisplay(arguments.mode)) {
    std::fprintf(stderr, "orvel: There is no display for the window; orvel -b SCRIPT needs none.\n");
    return EXIT_FAILURE;
  }
  return runApplication(argv[0], arguments);
}

} // namespace orvel
