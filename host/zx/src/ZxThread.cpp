#include "zx/ZxThread.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

class ZxThread::Private {
public:
  /// Lives in the creator's thread; what is posted to it goes with it.
  class Receiver : public QObject {
  public:
    explicit Receiver(Private& owner) : m_owner(owner) {}
    bool event(QEvent* event) override
    {
      if (event->type() != QEvent::User) return QObject::event(event);
      m_owner.deliver();
      return true;
    }

  private:
    Private& m_owner;
  };

  Private(ZxThread* owner, Callback function) : callback(function), thread([this, owner] { loop(owner); }) {}
  ~Private()
  {
    {
      const std::lock_guard lock(mutex);
      ending = true;
      requested = false;
      stopping = true;
    }
    changed.notify_all();
    thread.join();
  }

  /// Passes, one after the other, until the end.
  void loop(ZxThread* owner)
  {
    std::unique_lock lock(mutex);
    while (true) {
      changed.wait(lock, [this] { return requested || ending; });
      if (ending) return;
      requested = stopping = false;
      running = true;
      lock.unlock();
      owner->run();
      lock.lock();
      running = false;
      changed.notify_all();
    }
  }

  /// On the creator's thread.
  void deliver()
  {
    void* data = nullptr;
    {
      const std::lock_guard lock(mutex);
      data = callbackData;
      callbackPending = false;
    }
    callback(data);
  }

  const Callback callback;
  Receiver receiver{*this};
  std::mutex mutex;
  std::condition_variable changed;
  bool requested = false;
  bool running = false;
  bool stopping = false;
  bool ending = false;
  bool callbackPending = false;
  void* callbackData = nullptr;
  std::thread thread; // last: begins when all others are there
};

ZxThread::ZxThread(Callback callback) : m_private(std::make_unique<Private>(this, callback)) {}

ZxThread::~ZxThread() = default;

void ZxThread::start()
{
  {
    const std::lock_guard lock(m_private->mutex);
    m_private->requested = true;
  }
  m_private->changed.notify_all();
}

void ZxThread::stop()
{
  {
    const std::lock_guard lock(m_private->mutex);
    m_private->requested = false;
    m_private->stopping = true;
  }
  m_private->changed.notify_all(); // a cancelled pass may be what someone waits for
}

bool ZxThread::wait(unsigned long milliseconds)
{
  Private& p = *m_private;
  const auto atRest = [&p] { return !p.running && !p.requested; };
  std::unique_lock lock(p.mutex);
  if (milliseconds != ULONG_MAX)
    return p.changed.wait_for(lock, std::chrono::milliseconds(milliseconds), atRest);
  p.changed.wait(lock, atRest);
  return true;
}

bool ZxThread::isRunning() const
{
  const std::lock_guard lock(m_private->mutex);
  return m_private->running || m_private->requested;
}

bool ZxThread::isStopRequested() const
{
  const std::lock_guard lock(m_private->mutex);
  return m_private->stopping;
}

void ZxThread::callThreadCallback(void* data)
{
  Private& p = *m_private;
  // Made before the mutex is taken, so that it is complete for whoever takes it after.
  auto event = std::make_unique<QEvent>(QEvent::User);
  {
    const std::lock_guard lock(p.mutex);
    p.callbackData = data;
    if (p.callbackPending) return;
    p.callbackPending = true;
  }
  QCoreApplication::postEvent(&p.receiver, event.release());
}
