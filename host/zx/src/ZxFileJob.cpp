#include "zx/ZxFileJob.h"

#include "zx/ZxMessage.h"
#include "zx/ZxThreadReports.h"
#include "zx/ZxWorkArea.h"

#include <QCoreApplication>
#include <algorithm>
#include <condition_variable>
#include <filesystem>
#include <list>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

/// What a job and its thread share. The thread may outlive the job.
struct ZxFileJob::Shared {
  mutable std::mutex mutex;
  mutable std::condition_variable ended;
  State state = State::Running;
  bool isInLastStep = false;
  Progress progress;
  ZxFileOutcome outcome;
  std::vector<std::string> remarks;
  std::function<void()> callback;

  // Of a writing job.
  McHandle<ZxSpatialData> data;
  std::string path;
  std::uint64_t changeCount = 0;

  bool isStopped() const
  {
    const std::lock_guard lock(mutex);
    return state == State::Stopped;
  }
};

namespace {

/// The current work area of a job's thread.
template <class Shared>
class JobWorkArea : public ZxWorkArea {
public:
  explicit JobWorkArea(Shared& shared) : m_shared(shared) {}
  bool beginLastStep() override
  {
    const std::lock_guard lock(m_shared.mutex);
    m_shared.isInLastStep = m_shared.state == ZxFileJob::State::Running;
    return m_shared.isInLastStep;
  }

protected:
  void show() override
  {
    const std::lock_guard lock(m_shared.mutex);
    m_shared.progress = {getProgressText(), getProgressFraction()};
  }
  void workingChanged() override { show(); }
  bool interruptRequested() override { return m_shared.isStopped(); }

private:
  Shared& m_shared;
};

/// The voxels of a lattice, seen through another one.
class SameVoxels final : public ZxVoxelSource {
public:
  explicit SameVoxels(ZxLattice& lattice) : m_lattice(lattice) {}
  bool readSlice(int k, void* dst) override { return m_lattice.readSlice(k, dst); }
  bool readBox(const ZxBox3i& box, void* dst) override { return m_lattice.readBox(box, dst); }
  const void* sliceInMemory(int k) const override { return m_lattice.sliceInMemory(k); }
  void* beginWrite(int) override { return nullptr; }
  bool endWrite(int) override { return false; }

private:
  ZxLattice& m_lattice;
};

/// Data as they are at this moment: label, parameters and box are copies, the voxels are the same and locked.
class Snapshot final : public ZxSpatialData {
public:
  explicit Snapshot(McHandle<ZxSpatialData> data) : m_use(std::move(data))
  {
    setLabel(m_use.data().getLabel());
    parameters() = m_use.data().parameters();
    if (ZxLattice* lattice = m_use.data().getLattice()) {
      m_lattice.emplace(lattice->shape(), std::make_unique<SameVoxels>(*lattice));
      m_lattice->setBoundingBox(lattice->getBoundingBox());
    }
  }
  ZxLattice* getLattice() noexcept override { return m_lattice ? &*m_lattice : nullptr; }

private:
  ZxDataUse m_use;
  std::optional<ZxLattice> m_lattice;
};

/// The threads of all jobs. Never destroyed: a thread may still work when the program ends.
class Workers {
public:
  static Workers& all()
  {
    static Workers& instance = *new Workers;
    return instance;
  }

  /// What is left behind by a thread that the program does not wait for.
  enum class Leaves { Nothing, Files };

  /// Runs work on a new thread; stop makes it end.
  void start(Leaves leaves, std::function<void()> work, std::function<void()> stop)
  {
    const std::lock_guard lock(m_mutex);
    joinEnded();
    Worker& worker = m_workers.emplace_back();
    worker.leaves = leaves;
    worker.stop = std::move(stop);
    worker.thread = std::thread([this, &worker, work = std::move(work)]() mutable {
      work();
      work = nullptr; // Whatever it holds is given back before the worker counts as ended.
      const std::lock_guard endLock(m_mutex);
      worker.hasEnded = true;
      m_ended.notify_all();
    });
  }

  bool stopAll(std::chrono::milliseconds longest)
  {
    std::unique_lock lock(m_mutex);
    for (Worker& worker : m_workers) worker.stop();
    m_ended.wait(lock, [&] { return !isWorking(Leaves::Files); });
    const bool allEnded = m_ended.wait_for(lock, longest, [&] { return !isWorking(Leaves::Nothing); });
    joinEnded();
    return allEnded;
  }

private:
  struct Worker {
    Leaves leaves = Leaves::Nothing;
    std::thread thread;
    std::function<void()> stop;
    bool hasEnded = false;
  };

  bool isWorking(Leaves leaves) const
  {
    return std::any_of(m_workers.begin(), m_workers.end(),
                       [&](const Worker& worker) { return worker.leaves == leaves && !worker.hasEnded; });
  }

  void joinEnded()
  {
    m_workers.remove_if([](Worker& worker) {
      if (worker.hasEnded) worker.thread.join();
      return worker.hasEnded;
    });
  }

  std::mutex m_mutex;
  std::condition_variable m_ended;
  std::list<Worker> m_workers;
};

std::string nameOf(const std::string& path)
{
  const std::filesystem::path p(path);
  const std::string name = p.filename().string();
  return name.empty() ? p.parent_path().filename().string() : name;
}

/// Calls the callback of a job in the event loop, if the job is still there then.
template <class Shared>
void postEnd(const std::shared_ptr<Shared>& shared)
{
  QCoreApplication* application = QCoreApplication::instance();
  if (!application) return;
  QMetaObject::invokeMethod(
      application,
      [weak = std::weak_ptr<Shared>(shared)] {
        const std::shared_ptr<Shared> alive = weak.lock();
        std::function<void()> callback;
        if (alive) {
          const std::lock_guard lock(alive->mutex);
          callback.swap(alive->callback);
        }
        if (callback) callback();
      },
      Qt::QueuedConnection);
}

/// Gives the job its end, unless it has one already: then the outcome is dropped.
template <class Shared>
void endWith(const std::shared_ptr<Shared>& shared, ZxFileOutcome outcome)
{
  using State = ZxFileJob::State;
  const std::lock_guard lock(shared->mutex);
  if (shared->state != State::Running) return;
  shared->state = outcome.state == ZxFileOutcome::State::Done     ? State::Done
                  : outcome.state == ZxFileOutcome::State::Failed ? State::Failed
                                                                  : State::Stopped;
  std::swap(shared->outcome, outcome);
  shared->ended.notify_all();
  if (shared->callback) postEnd(shared);
}

template <class Shared>
void stopJob(const std::shared_ptr<Shared>& shared)
{
  {
    const std::lock_guard lock(shared->mutex);
    if (shared->isInLastStep) return;
  }
  endWith(shared, {ZxFileOutcome::State::Stopped, {}, {}});
}

/// Runs the work of a job with its own work area and remarks.
template <class Shared>
void startJob(const std::shared_ptr<Shared>& shared, const std::string& title,
              std::function<ZxFileOutcome()> work)
{
  shared->progress.text = title;
  Workers::all().start(
      shared->data ? Workers::Leaves::Files : Workers::Leaves::Nothing,
      [shared, title, work = std::move(work)]() mutable {
        JobWorkArea<Shared> area(*shared);
        const ZxThreadReports reports(area, [&](const std::string& line) {
          const std::lock_guard lock(shared->mutex);
          shared->remarks.push_back(line);
        });
        area.startWorking(title.c_str());
        ZxFileOutcome outcome = work();
        work = nullptr; // Data that were written may be changed and removed as soon as the job has ended.
        endWith(shared, std::move(outcome));
      },
      [shared] { stopJob(shared); });
}

} // namespace

ZxFileJob::ZxFileJob(std::string title, std::shared_ptr<Shared> shared)
  : m_title(std::move(title)), m_shared(std::move(shared))
{
}

std::unique_ptr<ZxFileJob> ZxFileJob::read(ZxReadRequest request)
{
  const std::string title =
      "Reading " + (request.inputs.empty() ? std::string("nothing") : nameOf(request.inputs.front()));
  auto shared = std::make_shared<Shared>();
  std::unique_ptr<ZxFileJob> job(new ZxFileJob(title, shared));
  startJob(shared, title,
           [request = std::move(request)] { return ZxFileAccess::getTheFileAccess()->read(request); });
  return job;
}

std::unique_ptr<ZxFileJob> ZxFileJob::write(McHandle<ZxSpatialData> data, std::string path)
{
  const std::string title = "Writing " + nameOf(path);
  auto shared = std::make_shared<Shared>();
  std::unique_ptr<ZxFileJob> job(new ZxFileJob(title, shared));
  ZxFileAccess::noteContent(*data);
  shared->data = data;
  shared->path = path;
  shared->changeCount = data->changeCount();
  startJob(shared, title, [snapshot = mcMake<Snapshot>(data), path] {
    ZxFileAccess* const access = ZxFileAccess::getTheFileAccess();
    try {
      return access->writeVolume(*snapshot, path);
    } catch (const std::exception& error) {
      return ZxFileOutcome{ZxFileOutcome::State::Failed, {}, error.what()};
    }
  });
  return job;
}

ZxFileJob::~ZxFileJob()
{
  {
    const std::lock_guard lock(m_shared->mutex);
    m_shared->callback = nullptr;
  }
  stop();
}

ZxFileJob::State ZxFileJob::state() const
{
  const std::lock_guard lock(m_shared->mutex);
  return m_shared->state;
}

ZxFileJob::Progress ZxFileJob::progress() const
{
  const std::lock_guard lock(m_shared->mutex);
  return m_shared->progress;
}

void ZxFileJob::stop() { stopJob(m_shared); }

bool ZxFileJob::wait(std::chrono::milliseconds longest) const
{
  std::unique_lock lock(m_shared->mutex);
  return m_shared->ended.wait_for(lock, longest, [&] { return m_shared->state != State::Running; });
}

void ZxFileJob::whenEnded(std::function<void()> ended)
{
  const std::lock_guard lock(m_shared->mutex);
  m_shared->callback = std::move(ended);
  if (m_shared->state != State::Running) postEnd(m_shared);
}

std::string ZxFileJob::problem() const
{
  const std::lock_guard lock(m_shared->mutex);
  if (m_shared->state == State::Stopped) return m_title + " was stopped.";
  return m_shared->outcome.problem;
}

McHandle<ZxSpatialData> ZxFileJob::finish()
{
  const State end = state();
  if (end == State::Running) return {};
  std::vector<std::string> lines;
  {
    const std::lock_guard lock(m_shared->mutex);
    lines.swap(m_shared->remarks);
  }
  if (end != State::Done) lines.push_back(problem());
  for (const std::string& line : lines) ZxMessage::getTheMsg()->printf("%s", line.c_str());
  if (end != State::Done) return {};
  if (!m_shared->data) return std::exchange(m_shared->outcome.data, {});
  m_shared->data->setSaved(m_shared->changeCount);
  m_shared->data->setFileName(m_shared->path);
  return m_shared->data;
}

bool ZxFileJob::stopAll(std::chrono::milliseconds longest) { return Workers::all().stopAll(longest); }
