#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

struct Tcl_Interp;
class ZxObjectCommands;
class ZxScriptChannels;

/// How a script has ended.
struct ZxScriptResult {
  enum class State {
    Done,
    Failed,
    Stopped, ///< by the user, through the work area
    Quit     ///< by the command quit
  };
  State state = State::Done;
  std::string text;  ///< the result, or why it failed
  int line = 0;      ///< of the failure, counted from 1
  std::string trace; ///< of a failure inside procedures: where each was called
  bool succeeded() const noexcept { return state == State::Done; }
};

/// The Tcl interpreter of the process: holds the variables through which scripts and programs steer the host
/// and its packages, and evaluates scripts. Every object of the pool is a command by its label.
///
/// Made when it is first asked for, and used by the thread that asked: that of the objects. Text is UTF-8.
/// The number format of the process stays that of the locale "C".
///
/// A script that runs can be stopped through the work area, which is asked about twenty times a second
/// whatever the script does; what the script catches does not hold the stop up.
class ZxInterpreter {
public:
  static ZxInterpreter& getTheInterpreter();

  /// The text of a global variable, valid until it is changed; null when it is not set.
  const char* getVar(const char* name) const;
  /// Sets a global variable. False where Tcl refuses it, as for a name in a namespace that does not exist.
  bool setVar(const char* name, const char* value);

  /// Evaluates a text at global level. What it had done before a failure stays done.
  ZxScriptResult eval(const std::string& script);
  /// Evaluates a script file at global level.
  ZxScriptResult runFile(const std::string& fileName);
  /// The same; empty, or one sentence that names the file, the line and what is wrong.
  std::string evalFile(const std::string& fileName);
  /// Sets argv0, argv and argc, as for a program of its own.
  void setArguments(const std::string& program, std::span<const std::string> arguments);
  /// True while a script runs.
  bool isEvaluating() const noexcept { return m_depth > 0; }
  /// Lets what scripts have asked for later (after, fileevent) happen if it is due and no work goes on.
  void handleEvents();

  /// False for a text with an open brace, bracket or quote: a prompt asks for more lines.
  static bool isComplete(const std::string& script);
  /// What the last word of a line can be completed to: object names and commands for the first word of a
  /// command, then the commands and ports of the object. Sorted, quoted where a list element is.
  std::vector<std::string> completions(const std::string& line) const;

  /// Sends what scripts print (puts, echo) line by line to a function instead of to standard output and
  /// standard error; an empty one restores these.
  void setOutput(std::function<void(const std::string& line)> output);
  /// Writes out what scripts have printed to standard output so far; false when that fails.
  bool flushOutput();
  /// Called after a script that asked to quit has ended.
  void setQuitHandler(std::function<void(int status)> handler) { m_quitHandler = std::move(handler); }
  /// The status that a script asked to quit with.
  std::optional<int> quitStatus() const noexcept { return m_quitStatus; }
  /// Makes the running script end, whatever it catches.
  void quit(int status);

  /// The elements of a list; none for a text that is no well-formed list.
  static std::optional<std::vector<std::string>> splitList(const char* list);
  /// A list of these elements, quoted where they need it.
  static std::string makeList(std::span<const std::string> elements);

private:
  ZxInterpreter();
  ~ZxInterpreter();
  ZxInterpreter(const ZxInterpreter&) = delete;
  ZxInterpreter& operator=(const ZxInterpreter&) = delete;
  template <class Evaluate>
  ZxScriptResult run(Evaluate evaluate);
  ZxScriptResult failure() const;

  struct Delete {
    void operator()(Tcl_Interp* interp) const;
  };
  std::unique_ptr<Tcl_Interp, Delete> m_interp;
  std::unique_ptr<ZxObjectCommands> m_objectCommands;
  std::unique_ptr<ZxScriptChannels> m_channels;
  std::function<void(int)> m_quitHandler;
  std::optional<int> m_quitStatus;
  int m_depth = 0;
};
