#pragma once

#include <cstdint>
#include <string>

/// Progress of long work: text, fraction, busy indicator and the user's wish to stop.
///
/// There is one current work area, set by the program; a thread that does work of its own has its own instead
/// (ZxThreadReports). Working phases do not nest: startWorking() inside a
/// phase goes on with that phase, and stopWorking() ends it.
class ZxWorkArea {
public:
  virtual ~ZxWorkArea();

  /// The current work area, never null: one that shows nothing until the program sets its own.
  static ZxWorkArea* getTheWorkArea();
  /// Makes a work area the current one (null: the silent one). It is not owned and must outlive its use.
  static void setTheWorkArea(ZxWorkArea* area);

  /// Starts a working phase with its text and the fraction 0.
  void startWorking(const char* message);
  void stopWorking();
  bool isWorking() const noexcept { return m_working; }
  /// Switches the busy indicator; calls nest.
  void setBusy(bool busy);
  /// True while a working phase or the busy indicator is on.
  bool isBusy() const noexcept { return m_working || m_busy > 0; }

  [[gnu::format(printf, 2, 3)]] void setProgressText(const char* format, ...);
  /// Progress from 0 to 1.
  void setProgressFraction(float fraction);
  const std::string& getProgressText() const noexcept { return m_text; }
  float getProgressFraction() const noexcept { return m_fraction; }

  /// True when the user wants the current work to stop. With an argument other than 0 pending events are
  /// handled first, so that a Stop button can be pressed at all.
  bool wasInterrupted(int processEvents = 0);
  /// How often wasInterrupted() has said yes: who has called work knows by this whether it was stopped.
  std::int64_t numInterruptions() const noexcept { return m_interruptions; }
  /// Asked once before the step that cannot be undone, such as renaming a file into place. False when the
  /// user wants to stop; after true it is too late for that.
  virtual bool beginLastStep() { return !wasInterrupted(); }
  /// Lets the program handle what has come in (input, repaints).
  virtual void processPendingEvents() {}

protected:
  /// The state has changed and may be shown.
  virtual void show() {}
  /// A working phase has begun or ended.
  virtual void workingChanged() {}
  /// The busy indicator has been switched on or off.
  virtual void busyChanged() {}
  virtual bool interruptRequested() { return false; }

private:
  std::string m_text;
  float m_fraction = 0.0f;
  int m_busy = 0;
  bool m_working = false;
  std::int64_t m_interruptions = 0;
};

/// A working phase for the time that this object lives. Inside a phase that someone else has started it
/// changes nothing, so that work can be part of larger work.
class ZxWorkingPhase {
public:
  explicit ZxWorkingPhase(const char* message);
  ~ZxWorkingPhase();
  ZxWorkingPhase(const ZxWorkingPhase&) = delete;
  ZxWorkingPhase& operator=(const ZxWorkingPhase&) = delete;

private:
  bool m_started;
};
