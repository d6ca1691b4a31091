#pragma once

#include "zx/ZxMessage.h"
#include "zx/ZxTerminalWorkArea.h"

#include <string>
#include <vector>

namespace cli {

/// What the program says. Results go to standard output; remarks, the progress line and the one sentence of
/// a failure go to standard error.
///
/// Lines of the message console are held back until remarks() shows them, since the last one may turn out to
/// be the reason of a failure.
class Console {
public:
  enum class Verbosity { Normal, Quiet };
  explicit Console(Verbosity verbosity);
  ~Console();
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  /// Adds a line of our own to those held back.
  void remark(const std::string& line) { m_held.push_back(line); }
  /// Shows the lines held back, unless quiet. What is said again and again is said once, with the number.
  void remarks();
  /// True when one of the lines held back says what cannot be done.
  bool holdsCause() const;
  /// Forgets the lines held back and gives the last of them, or the other text where there is none.
  std::string reason(const std::string& otherwise);

  /// A line of the result, shown in any case.
  void result(const std::string& line);
  /// A line about what has been done, not shown when quiet.
  void summary(const std::string& line);

private:
  Verbosity m_verbosity;
  ZxTerminalWorkArea m_workArea;
  ZxMessage::Sink m_sinkBefore;
  std::vector<std::string> m_held;
};

/// A working phase of the work area: begins here, ends with the object.
class WorkingPhase {
public:
  explicit WorkingPhase(const std::string& text) { ZxWorkArea::getTheWorkArea()->startWorking(text.c_str()); }
  ~WorkingPhase() { ZxWorkArea::getTheWorkArea()->stopWorking(); }
  WorkingPhase(const WorkingPhase&) = delete;
  WorkingPhase& operator=(const WorkingPhase&) = delete;
};

} // namespace cli
