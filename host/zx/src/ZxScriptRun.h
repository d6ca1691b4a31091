#pragma once

class ZxWorkArea;
struct Tcl_Interp;

/// Keeps a running script stoppable: asks the work area now and then, in a working phase of its own when the
/// script does nothing that has one, and unwinds the script when the user wants to stop.
class ZxScriptRun {
public:
  explicit ZxScriptRun(Tcl_Interp* interp);
  ~ZxScriptRun();
  ZxScriptRun(const ZxScriptRun&) = delete;
  ZxScriptRun& operator=(const ZxScriptRun&) = delete;

  bool wasStopped() const noexcept { return m_stopped; }

private:
  static void onTick(void* clientData, Tcl_Interp* interp);
  void tick();
  bool wasInterrupted(ZxWorkArea& area);
  void setNextTick();

  Tcl_Interp* m_interp;
  int m_ticks = 0;
  bool m_startedPhase = false;
  bool m_stopped = false;
};
