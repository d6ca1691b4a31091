#pragma once

#include "zx/ZxWorkArea.h"

#include <functional>
#include <vector>

/// Work area for tests: records what is shown and interrupts where it is told to.
class ZxRecordingWorkArea : public ZxWorkArea {
public:
  /// Makes itself the current work area until it is destroyed.
  ZxRecordingWorkArea() { setTheWorkArea(this); }
  ~ZxRecordingWorkArea() override { setTheWorkArea(nullptr); }

  struct Step {
    std::string text;
    float fraction;
  };
  const std::vector<Step>& steps() const noexcept { return m_steps; }
  int getNumQueries() const noexcept { return m_queries; }
  /// Interrupts from the n-th query on, counted from 1; 0 never.
  void interruptAtQuery(int n) noexcept { m_interruptAt = n; }

protected:
  void show() override { m_steps.push_back({getProgressText(), getProgressFraction()}); }
  bool interruptRequested() override { return ++m_queries >= m_interruptAt && m_interruptAt > 0; }

private:
  std::vector<Step> m_steps;
  int m_queries = 0;
  int m_interruptAt = 0;
};
