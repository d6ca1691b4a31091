#pragma once

#include "zx/ZxFileAccess.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

/// Reading or writing on a thread of its own, while the window stays usable.
///
/// Made, asked and deleted by the thread of the objects. Who has made a job looks at progress() now and then,
/// and calls finish() when it is not running any more. A job that is deleted while it runs is stopped; what
/// it has read is given back.
///
/// While data are written their voxels cannot be written to (ZxLattice::beginWrite() gives null) and the pool
/// refuses to remove them. Label and parameters are those of the moment at which the job was made: they may
/// change meanwhile, and count as unsaved then.
class ZxFileJob {
public:
  enum class State { Running, Done, Failed, Stopped };
  struct Progress {
    std::string text;
    float fraction = 0.0f; ///< 0 to 1
  };

  static std::unique_ptr<ZxFileJob> read(ZxReadRequest request);
  static std::unique_ptr<ZxFileJob> write(McHandle<ZxSpatialData> data, std::string path);
  ~ZxFileJob();
  ZxFileJob(const ZxFileJob&) = delete;
  ZxFileJob& operator=(const ZxFileJob&) = delete;

  State state() const;
  bool isRunning() const { return state() == State::Running; }
  Progress progress() const;
  /// "Reading stack.tif", "Writing aligned.nrrd".
  const std::string& title() const noexcept { return m_title; }

  /// Asks the job to stop. It is stopped at once, whatever its thread is still doing, unless a file was
  /// being renamed into place just then.
  void stop();
  /// Waits until the job does not run any more; false when it still does after that time.
  bool wait(std::chrono::milliseconds longest) const;

  /// Calls a function once in the event loop of the thread that made the job, after the job has ended and as
  /// long as the job exists.
  void whenEnded(std::function<void()> ended);

  /// Ends a job that does not run any more: prints its remarks, and its sentence when it failed, on the
  /// message console, marks written data as saved. Returns what was read (to be put into the pool) or
  /// written, null when the job failed or was stopped.
  McHandle<ZxSpatialData> finish();
  /// The sentence of a job that failed or was stopped.
  std::string problem() const;

  /// Stops all jobs and waits for their threads, those of deleted jobs too: for those that write until they
  /// have cleaned up, for those that read for that time. False when one still reads then: the program must
  /// end without destroying what the thread uses (std::_Exit).
  static bool stopAll(std::chrono::milliseconds longest);

private:
  struct Shared;
  ZxFileJob(std::string title, std::shared_ptr<Shared> shared);

  std::string m_title;
  std::shared_ptr<Shared> m_shared; // with the thread
};
