#pragma once

#include "zx/ZxWorkArea.h"

#include <chrono>

/// Work area of a program in a terminal: one line on standard error with percentage, elapsed and remaining
/// time and the text; nothing when standard error is not a terminal or quiet is asked for.
///
/// Ctrl+C is the interruption, and so are the signals TERM and HUP, but for those that the program was
/// started to ignore (nohup). The first one asks the work to stop, and is without effect after the work; a
/// second one ends the program at once, as it would without this object. One such object at a time.
class ZxTerminalWorkArea : public ZxWorkArea {
public:
  enum class Display { WhenTerminal, Never };
  explicit ZxTerminalWorkArea(Display display = Display::WhenTerminal);
  ~ZxTerminalWorkArea() override;

  /// True when Ctrl+C was pressed since the program started, in whatever phase.
  static bool wasInterruptedEver() noexcept;
  /// Asks the work to stop, as Ctrl+C does: for a program that finds out on the way that it goes on in vain.
  static void interrupt() noexcept;
  /// Removes the progress line, so that something else can be printed.
  void clearLine();

protected:
  void show() override;
  void workingChanged() override;
  bool interruptRequested() override;

private:
  using Clock = std::chrono::steady_clock;
  bool m_visible;
  bool m_lineShown = false;
  Clock::time_point m_start;
  Clock::time_point m_lastShown;
};
