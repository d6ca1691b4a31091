#pragma once

#include "RunState.h"
#include "zx/ZxData.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>

namespace cli {

class Console;

/// The folder OUTPUT.partial: what a run has finished, kept when it is stopped, and taken up by --resume.
///
/// It holds state.json (RunState) and the volumes as far as they have been written. It comes into being when
/// something is finished, takes the place of what an earlier stopped run has left, and is gone when the run
/// is at its end. One process at a time holds it; who finds at that moment that another one has come first
/// ends with a failure.
class PartialOutput {
public:
  enum class Start { Anew, Resume };

  /// Names of the folders that volumes grow in.
  static constexpr const char* kVolume = "volume";
  static constexpr const char* kLabels = "labels";

  /// Looks at what stands there and changes nothing. Throws Failure: nothing to resume, a file or folder that
  /// is none of ours, or has one in it, another process at work.
  PartialOutput(const std::string& output, Start start, Console& console);
  ~PartialOutput();
  PartialOutput(const PartialOutput&) = delete;
  PartialOutput& operator=(const PartialOutput&) = delete;

  /// The name of the folder for an output, as the user knows it.
  static std::string nameFor(const std::string& output);

  /// Says what this run is. Throws Failure, naming what differs, when another one is to be resumed.
  void describe(RunFacts facts);
  /// What has been finished before; empty for a new run.
  const RunState& state() const noexcept { return m_state; }
  /// Forgets the finished pairs.
  void forgetPairs();
  /// A pair is finished, with the transforms of all slices after it. The data's parameters are kept with it;
  /// they are borrowed until the alignment ends. Written to the disk about once a second. Stops the work
  /// when the place turns out to be another run's: alignmentDone() then throws.
  void pairDone(const ZxAlignPairResult& pair, std::vector<ZxAlignTransform> transforms, const ZxData& data);
  /// The alignment has ended, however: writes the state to the disk. Throws Failure when that is another
  /// run's by now.
  void alignmentDone();

  /// A folder of this one for a volume to grow in that is to lie under the path. Empty when it could not be
  /// moved there from here, or nothing can be kept here. Throws Failure when the place is another run's.
  std::filesystem::path growingFolder(const char* name, const std::string& path);
  /// A slice of a volume has been written.
  void sliceDone() noexcept { m_hasSlices = m_hasProgress = true; }

  /// Does work that can be taken up later. Whatever ends it too early (thrown: Stopped, io::Interrupted,
  /// anything of the standard library) leaves as Stopped or Failure with a sentence that says what is kept; a
  /// failure before anything was done says no more than its reason.
  void guard(const std::function<void()>& work);
  /// The run is at its end, or has nothing to keep.
  /// What somebody else has put into the folder stays, with a remark.
  void remove() noexcept;

private:
  class Lock;
  class Conflict;
  void lookAt(Start start);
  void hold();
  void publish(const std::string& hidden);
  void write();
  bool writeQuietly() noexcept;
  void removeFolder() noexcept;
  enum class End { Stopped, Failed, InputUnreadable };
  /// What becomes of the work, to follow the reason of an end.
  std::string tail(End end) noexcept;

  Console& m_console;
  std::filesystem::path m_folder;
  std::string m_name; ///< of the folder, for sentences
  RunState m_state;
  const ZxData* m_data = nullptr;
  std::unique_ptr<Lock> m_lock; ///< of the folder of this run, or of the one that it is going to replace
  bool m_resumes = false;
  bool m_isOurs = false;    ///< the folder on the disk is that of this run
  bool m_isWritten = false; ///< its state is the present one
  std::size_t m_pairsOnDisk = 0;
  std::string m_problem;  ///< why the last writing failed
  std::string m_conflict; ///< why the place is not ours; empty when it is
  bool m_hasSlices = false;
  bool m_hasProgress = false; ///< this run has finished something
  std::chrono::steady_clock::time_point m_nextWrite{};
};

} // namespace cli
