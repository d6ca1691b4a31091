// How long events wait while the window opens a large stack, and what stopping half way takes and gives back.
//
//   open_latency [MEGABYTES [FOLDER]]    default: 2048, in the temporary folder
//
// A thread posts an event every few milliseconds; what is measured is how long each waits for the event loop.
// The file is written first and removed at the end. Run it where a window can be shown (xvfb-run).
#include "io/FileAccess.h"
#include "qx/QxMainWindow.h"
#include "zx/ZxFileJob.h"
#include "zx/ZxModule.h"
#include "zx/ZxObjectPool.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>

#include <atomic>
#include <chrono>
#include <clocale>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

double milliseconds(Clock::duration d) { return std::chrono::duration<double, std::milli>(d).count(); }

/// Measures how long events wait, from its construction to its end.
class LatencyProbe : public QObject {
public:
  LatencyProbe() : m_thread([this] { postEvents(); }) {}
  ~LatencyProbe() override
  {
    m_ends = true;
    m_thread.join();
  }
  double longest() const noexcept { return m_longest; }
  int count() const noexcept { return m_count; }

private:
  void postEvents()
  {
    while (!m_ends) {
      QMetaObject::invokeMethod(
          this,
          [this, posted = Clock::now()] {
            m_longest = std::max(m_longest, milliseconds(Clock::now() - posted));
            ++m_count;
          },
          Qt::QueuedConnection);
      std::this_thread::sleep_for(std::chrono::milliseconds(3));
    }
  }

  std::atomic<bool> m_ends{false};
  double m_longest = 0.0;
  int m_count = 0;
  std::thread m_thread;
};

/// Memory in use, in megabytes.
long residentMegabytes()
{
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with("VmRSS:")) return std::atol(line.c_str() + 6) / 1024;
  return 0;
}

/// A stack of noise in 16 bits, 2048 x 2048 voxels a slice.
std::string writeStack(const QTemporaryDir& folder, int megabytes)
{
  const int edge = 2048;
  const int slices = std::max(2, megabytes / 8);
  const std::string name = folder.filePath("large.nrrd").toStdString();
  std::ofstream file(name, std::ios::binary);
  file << "NRRD0004\ntype: uint16\ndimension: 3\nsizes: " << edge << ' ' << edge << ' ' << slices
       << "\nencoding: raw\nendian: little\n\n";
  std::vector<std::uint32_t> slice(std::size_t{edge} * edge / 2);
  std::uint32_t state = 1;
  for (std::uint32_t& pair : slice) pair = state = state * 1664525u + 1013904223u;
  for (int k = 0; k < slices; ++k)
    file.write(reinterpret_cast<const char*>(slice.data()), static_cast<std::streamsize>(slice.size() * 4));
  return file.flush() ? name : std::string();
}

template <class Done>
bool processUntil(Done done, int longestSeconds)
{
  for (const QDeadlineTimer end(longestSeconds * 1000); !done();) {
    if (end.hasExpired()) return false;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
  }
  return true;
}

void linger(int ms)
{
  const QDeadlineTimer end(ms);
  processUntil([&] { return end.hasExpired(); }, 60);
}

bool measureOpening(QxMainWindow& window, const std::string& file)
{
  ZxObjectPool& pool = ZxObjectPool::getThePool();
  const LatencyProbe probe;
  const Clock::time_point begin = Clock::now();
  window.open({QString::fromStdString(file)});
  if (!processUntil([&] { return !pool.objects().empty(); }, 600)) return false;
  const double seconds = milliseconds(Clock::now() - begin) / 1000.0;
  linger(1000); // The first pictures of it.
  std::printf("opened in %.1f s; %d events, the longest wait was %.0f ms\n", seconds, probe.count(),
              probe.longest());
  return true;
}

bool measureStop(QxMainWindow& window, const std::string& file)
{
  const auto* bar = window.findChild<QProgressBar*>("fileBar");
  auto* stop = window.findChild<QPushButton*>("fileStop");
  if (!bar || !stop) return false;
  const long before = residentMegabytes();
  const LatencyProbe probe;
  window.open({QString::fromStdString(file)});
  if (!processUntil([&] { return bar->isVisible() && 2 * bar->value() >= bar->maximum(); }, 600))
    return false;
  const long atStop = residentMegabytes();
  const Clock::time_point begin = Clock::now();
  stop->click();
  if (!processUntil([&] { return !stop->isVisible(); }, 10)) return false;
  const double stopped = milliseconds(Clock::now() - begin);
  linger(1000);
  std::printf("stopped half way after %.0f ms; memory %ld MB, %ld MB at the stop, %ld MB a second later; "
              "the longest wait was %.0f ms\n",
              stopped, before, atStop, residentMegabytes(), probe.longest());
  return ZxObjectPool::getThePool().objects().empty();
}

} // namespace

int main(int argc, char** argv)
{
  QApplication application(argc, argv);
  std::setlocale(LC_NUMERIC, "C");
  const int megabytes = argc > 1 ? std::atoi(argv[1]) : 2048;
  const QTemporaryDir folder((argc > 2 ? QString::fromLocal8Bit(argv[2]) : QDir::tempPath()) +
                             "/open_latency-XXXXXX");
  io::installFileAccess();
  const std::string file = writeStack(folder, megabytes);
  if (file.empty()) {
    std::fprintf(stderr, "The stack could not be written.\n");
    return 1;
  }
  QxMainWindow window;
  window.show();
  linger(500);
  const bool works = measureStop(window, file) && measureOpening(window, file);
  ZxObjectPool::getThePool().clear();
  if (!works) std::fprintf(stderr, "The stack was not opened, or not stopped.\n");
  return ZxFileJob::stopAll(std::chrono::seconds(5)) && works ? 0 : 1;
}
