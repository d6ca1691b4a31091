#include "zx/ZxThreadReports.h"

#include <utility>

namespace {
thread_local ZxThreadReports* reportsOfThisThread = nullptr;
}

ZxThreadReports::ZxThreadReports(ZxWorkArea& workArea, ZxMessage::Sink sink)
  : m_workArea(workArea), m_sink(std::move(sink)), m_before(std::exchange(reportsOfThisThread, this))
{
}

ZxThreadReports::~ZxThreadReports() { reportsOfThisThread = m_before; }

ZxThreadReports* ZxThreadReports::ofThisThread() noexcept { return reportsOfThisThread; }
