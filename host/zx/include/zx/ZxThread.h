#pragma once

#include <climits>
#include <memory>

/// A thread of its own that makes passes over some work.
///
/// Used from the thread that created it, the one of the user interface. Its event loop delivers the callback.
class ZxThread {
public:
  /// What callThreadCallback() runs.
  using Callback = void (*)(void*);
  explicit ZxThread(Callback callback);
  /// A derived class stops and waits in its own destructor: run() is gone when this one begins. Callbacks
  /// that are still on their way are dropped.
  virtual ~ZxThread();
  ZxThread(const ZxThread&) = delete;
  ZxThread& operator=(const ZxThread&) = delete;

  /// Has run() called once. While a pass is under way another one is made after it, one however often this is
  /// called.
  void start();
  /// Asks the pass that is under way to end, and cancels one that has not begun.
  void stop();
  /// Waits until no pass is under way or to come. False when that takes longer than so many milliseconds.
  bool wait(unsigned long milliseconds = ULONG_MAX);
  bool isRunning() const;

protected:
  /// One pass, on this thread.
  virtual void run() = 0;
  /// True when stop() was called since the pass began. For run().
  bool isStopRequested() const;
  /// Has the callback run with this argument by the event loop of the thread that created this object, as
  /// soon as it comes to it. Calls that it has not come to yet become one, with the last argument. For run().
  void callThreadCallback(void* data);

private:
  class Private;
  std::unique_ptr<Private> m_private;
};
