#pragma once

#include "zx/ZxThread.h"

#include <atomic>

class QxOrthoViewManager;

/// Computes the stale columns of the orthogonal views, slice by slice, and has the views refreshed after
/// every few of them and at the end.
class UpdateOrthogonalViewsThread : public ZxThread {
public:
  /// To be created by the GUI thread; the manager outlives it.
  explicit UpdateOrthogonalViewsThread(QxOrthoViewManager* manager);
  /// Stops and waits.
  ~UpdateOrthogonalViewsThread() override;

  /// Slices of a pass, both included. Not while a pass runs.
  void setUpdateRange(int first, int last);
  /// Columns after which the views are refreshed.
  void setUpdateFreq(int columns);
  /// Makes the manager's views show their images.
  static void threadCallback(void* manager);

protected:
  void run() override;

private:
  QxOrthoViewManager* m_manager; // borrowed
  int m_first = 0;
  int m_last = 0;
  std::atomic<int> m_updateFrequency{2};
};
