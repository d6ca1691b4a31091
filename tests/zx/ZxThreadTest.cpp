#include "zx/ZxThread.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTest>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

int delivered = 0;
std::thread::id deliveredOn;

void deliver(void* data)
{
  delivered += *static_cast<int*>(data);
  deliveredOn = std::this_thread::get_id();
}

/// A pass of so many steps; each waits until it is let go.
class Steps : public ZxThread {
public:
  explicit Steps(int steps) : ZxThread(&deliver), m_steps(steps) { delivered = 0; }
  ~Steps() override
  {
    release(1 << 20);
    stop();
    wait();
  }
  void release(int steps)
  {
    {
      const std::lock_guard lock(m_mutex);
      m_released += steps;
    }
    m_changed.notify_all();
  }
  int passes() const { return m_passes; }
  int done() const { return m_done; }

protected:
  void run() override
  {
    ++m_passes;
    for (int i = 0; i < m_steps && !isStopRequested(); ++i) {
      std::unique_lock lock(m_mutex);
      m_changed.wait(lock, [this] { return m_released > 0; });
      --m_released;
      ++m_done;
      m_written = m_done;
      lock.unlock();
      callThreadCallback(&m_value);
    }
  }

private:
  const int m_steps;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  int m_released = 0;
  int m_written = 0; // not atomic: seen by who has waited for the pass
  int m_value = 1;
  std::atomic<int> m_passes{0};
  std::atomic<int> m_done{0};
};

} // namespace

TEST(ZxThread, ManyStartsDuringAPassMakeOneMore)
{
  Steps thread(3);
  EXPECT_TRUE(thread.wait());
  thread.start();
  ASSERT_TRUE(waitFor([&] { return thread.passes() == 1; }));
  for (int i = 0; i < 5; ++i) thread.start();
  EXPECT_FALSE(thread.wait(1));
  thread.release(6);
  EXPECT_TRUE(thread.wait());
  EXPECT_EQ(thread.passes(), 2);
  EXPECT_EQ(thread.done(), 6);
  EXPECT_FALSE(thread.isRunning());
}

TEST(ZxThread, StopEndsAPassAndCancelsTheNextAndAStartAfterItCounts)
{
  Steps thread(3);
  thread.start();
  ASSERT_TRUE(waitFor([&] { return thread.passes() == 1; }));
  thread.start();
  thread.stop();
  thread.release(1);
  EXPECT_TRUE(thread.wait());
  EXPECT_EQ(thread.passes(), 1);
  EXPECT_EQ(thread.done(), 1);

  thread.start();
  ASSERT_TRUE(waitFor([&] { return thread.passes() == 2; }));
  thread.stop();
  thread.start(); // a whole pass after the one that was stopped
  thread.release(4);
  EXPECT_TRUE(thread.wait());
  EXPECT_EQ(thread.passes(), 3);
  EXPECT_EQ(thread.done(), 5);
}

TEST(ZxThread, DeliversPendingCallbacksAsOneToTheThreadThatMadeIt)
{
  {
    Steps thread(4);
    thread.start();
    thread.release(4);
    EXPECT_TRUE(thread.wait());
    EXPECT_EQ(delivered, 0); // queued until the events are processed
    QCoreApplication::processEvents();
    EXPECT_EQ(delivered, 1);
    EXPECT_EQ(deliveredOn, std::this_thread::get_id());
    thread.start();
    thread.release(4);
    EXPECT_TRUE(thread.wait());
  }
  QCoreApplication::processEvents();
  EXPECT_EQ(delivered, 1); // what was on its way went with the thread
}
