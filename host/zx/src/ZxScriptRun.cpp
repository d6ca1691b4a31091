#include "ZxScriptRun.h"

#include "zx/ZxWorkArea.h"

#include <tcl.h>

namespace {

constexpr long microsecondsOfTick = 50000;
/// Scripts that are shorter show no progress bar.
constexpr int ticksBeforePhase = 6;

} // namespace

ZxScriptRun::ZxScriptRun(Tcl_Interp* interp) : m_interp(interp)
{
  // A limit of time that is moved on each time it is reached.
  Tcl_LimitAddHandler(m_interp, TCL_LIMIT_TIME, onTick, this, nullptr);
  Tcl_LimitSetGranularity(m_interp, TCL_LIMIT_TIME, 10);
  setNextTick();
  Tcl_LimitTypeSet(m_interp, TCL_LIMIT_TIME);
}

ZxScriptRun::~ZxScriptRun()
{
  Tcl_LimitTypeReset(m_interp, TCL_LIMIT_TIME);
  Tcl_LimitRemoveHandler(m_interp, TCL_LIMIT_TIME, onTick, this);
  if (m_startedPhase) ZxWorkArea::getTheWorkArea()->stopWorking();
}

void ZxScriptRun::setNextTick()
{
  Tcl_Time time;
  Tcl_GetTime(&time);
  time.usec += microsecondsOfTick;
  if (time.usec >= 1000000) {
    time.usec -= 1000000;
    ++time.sec;
  }
  Tcl_LimitSetTime(m_interp, &time);
}

void ZxScriptRun::onTick(void* clientData, Tcl_Interp*) { static_cast<ZxScriptRun*>(clientData)->tick(); }

void ZxScriptRun::tick()
{
  ZxWorkArea* const area = ZxWorkArea::getTheWorkArea();
  if (++m_ticks >= ticksBeforePhase && !area->isWorking()) {
    area->startWorking("Running a script");
    m_startedPhase = true;
  }
  if (!m_stopped && wasInterrupted(*area)) {
    m_stopped = true;
    Tcl_CancelEval(m_interp, Tcl_NewStringObj("stopped by the user", -1), nullptr, TCL_CANCEL_UNWIND);
  }
  setNextTick();
}

bool ZxScriptRun::wasInterrupted(ZxWorkArea& area)
{
  // Events may run scripts of their own, to which a limit that has been reached would be a failure.
  setNextTick();
  Tcl_LimitTypeReset(m_interp, TCL_LIMIT_TIME);
  const bool wasInterrupted = area.wasInterrupted(1);
  Tcl_LimitTypeSet(m_interp, TCL_LIMIT_TIME);
  return wasInterrupted;
}
