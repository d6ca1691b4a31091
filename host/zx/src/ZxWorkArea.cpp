#include "zx/ZxWorkArea.h"

#include "ZxFormat.h"
#include "zx/ZxThreadReports.h"

#include <algorithm>
#include <utility>

namespace {

ZxWorkArea& silent()
{
  static ZxWorkArea instance;
  return instance;
}

ZxWorkArea*& current()
{
  static ZxWorkArea* area = &silent();
  return area;
}

} // namespace

ZxWorkArea::~ZxWorkArea() = default;

ZxWorkArea* ZxWorkArea::getTheWorkArea()
{
  const ZxThreadReports* own = ZxThreadReports::ofThisThread();
  return own ? &own->workArea() : current();
}

void ZxWorkArea::setTheWorkArea(ZxWorkArea* area) { current() = area ? area : &silent(); }

void ZxWorkArea::startWorking(const char* message)
{
  if (m_working) return;
  m_working = true;
  m_text = message;
  m_fraction = 0.0f;
  workingChanged();
}

void ZxWorkArea::stopWorking()
{
  if (!m_working) return;
  m_working = false;
  workingChanged();
}

void ZxWorkArea::setBusy(bool busy)
{
  const int before = std::exchange(m_busy, std::max(0, m_busy + (busy ? 1 : -1)));
  if ((before > 0) != (m_busy > 0)) busyChanged();
}

void ZxWorkArea::setProgressText(const char* format, ...)
{
  std::va_list arguments;
  va_start(arguments, format);
  m_text = zxFormat(format, arguments);
  va_end(arguments);
  while (!m_text.empty() && m_text.back() == '\n') m_text.pop_back();
  show();
}

void ZxWorkArea::setProgressFraction(float fraction)
{
  m_fraction = std::clamp(fraction, 0.0f, 1.0f);
  show();
}

bool ZxWorkArea::wasInterrupted(int processEvents)
{
  if (processEvents) processPendingEvents();
  const bool stops = interruptRequested();
  if (stops) ++m_interruptions;
  return stops;
}

ZxWorkingPhase::ZxWorkingPhase(const char* message) : m_started(!ZxWorkArea::getTheWorkArea()->isWorking())
{
  if (m_started) ZxWorkArea::getTheWorkArea()->startWorking(message);
}

ZxWorkingPhase::~ZxWorkingPhase()
{
  if (m_started) ZxWorkArea::getTheWorkArea()->stopWorking();
}
