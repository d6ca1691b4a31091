#pragma once

#include "zx/ZxMessage.h"
#include "zx/ZxWorkArea.h"

/// Where progress and messages of the calling thread go for the time that this object lives, instead of to
/// the program's work area and console, which belong to the thread of the objects.
class ZxThreadReports {
public:
  ZxThreadReports(ZxWorkArea& workArea, ZxMessage::Sink sink);
  ~ZxThreadReports();
  ZxThreadReports(const ZxThreadReports&) = delete;
  ZxThreadReports& operator=(const ZxThreadReports&) = delete;

  /// That of the calling thread, or null.
  static ZxThreadReports* ofThisThread() noexcept;
  ZxWorkArea& workArea() const noexcept { return m_workArea; }
  const ZxMessage::Sink& sink() const noexcept { return m_sink; }

private:
  ZxWorkArea& m_workArea;
  ZxMessage::Sink m_sink;
  ZxThreadReports* m_before;
};
