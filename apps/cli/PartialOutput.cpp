#include "PartialOutput.h"

#include "Console.h"
#include "Failure.h"
#include "OutputFiles.h"
#include "io/Error.h"
#include "zx/ZxTerminalWorkArea.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <new>
#include <utility>

namespace cli {
namespace fs = std::filesystem;
namespace {

constexpr const char* kState = "state.json";
/// All that a run puts into its folder; the state comes last, so that what is removed has it to the end.
constexpr const char* kOurs[] = {PartialOutput::kVolume, PartialOutput::kLabels, "state.json.new", kState};

std::string withoutSlash(std::string path)
{
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

std::string contentsOf(const fs::path& path)
{
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

[[noreturn]] void cannotWrite(const fs::path& path)
{
  throw Failure("Cannot write \"" + path.string() + "\": " + std::strerror(errno) + ".");
}

/// Writes a file beside its target and renames it into place, on the disk before that. Sentences call
/// it by the name that the user knows.
void writeAtomically(const std::string& text, const fs::path& path, const fs::path& name)
{
  const std::string beside = path.string() + ".new";
  std::FILE* file = std::fopen(beside.c_str(), "wb");
  if (!file) cannotWrite(name);
  bool whole = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  whole = std::fflush(file) == 0 && whole;
  whole = fsync(fileno(file)) == 0 && whole;
  whole = std::fclose(file) == 0 && whole;
  if (whole && std::rename(beside.c_str(), path.c_str()) == 0) return;
  const int reason = errno;
  std::remove(beside.c_str());
  errno = reason;
  cannotWrite(name);
}

/// The name of something in a folder of ours that no run puts there; empty when there is none.
std::string foreignIn(const fs::path& folder)
{
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    const std::string name = entry.path().filename().string();
    // Network file systems keep removed files that are still open under such a name.
    if (std::find(std::begin(kOurs), std::end(kOurs), name) == std::end(kOurs) && !name.starts_with(".nfs"))
      return name;
  }
  return {};
}

/// Throws what names the thing.
template <class Refusal>
void refuseForeign(const fs::path& folder)
{
  const std::string foreign = foreignIn(folder);
  if (!foreign.empty())
    throw Refusal(folder.string() + " is removed when the work is done, and " + foreign +
                  " in it is from no run; move that away.");
}

dev_t diskOf(const fs::path& folder)
{
  struct stat about {};
  return stat(folder.empty() ? "." : folder.c_str(), &about) == 0 ? about.st_dev : 0;
}

} // namespace

/// Keeps other processes away from the folder; the system gives it back with the process.
class PartialOutput::Lock {
public:
  explicit Lock(const fs::path& folder) : m_file(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}
  ~Lock()
  {
    if (m_file >= 0) close(m_file);
  }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;
  /// False when another process has it; file systems without locks let everybody in.
  bool isOurs() const { return m_file < 0 || flock(m_file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK; }
  /// True when the folder of this lock is the one that stands there now.
  bool isOf(const fs::path& folder) const
  {
    struct stat mine {
    }, there{};
    return m_file >= 0 && fstat(m_file, &mine) == 0 && stat(folder.c_str(), &there) == 0 &&
           mine.st_dev == there.st_dev && mine.st_ino == there.st_ino;
  }
  /// True when the folder of this lock is gone from there; false when there was none to lock.
  bool isOfAnotherThan(const fs::path& folder) const { return m_file >= 0 && !isOf(folder); }

private:
  int m_file;
};

/// Another run, or the user, has put something where this run keeps its work.
class PartialOutput::Conflict : public Failure {
public:
  using Failure::Failure;
};

std::string PartialOutput::nameFor(const std::string& output) { return withoutSlash(output) + ".partial"; }

PartialOutput::PartialOutput(const std::string& output, Start start, Console& console)
  : m_console(console), m_folder(nameFor(output)), m_name(m_folder.string()),
    m_resumes(start == Start::Resume)
{
  lookAt(start);
}

PartialOutput::~PartialOutput() = default;

void PartialOutput::lookAt(Start start)
{
  std::error_code error;
  if (!fs::exists(fs::symlink_status(m_folder, error))) {
    if (start == Start::Resume) throw Failure("There is nothing to resume: " + m_name + " does not exist.");
    return;
  }
  auto lock = std::make_unique<Lock>(m_folder);
  // Whoever had the lock before may have removed or replaced the folder since it was opened.
  if (!lock->isOurs() || lock->isOfAnotherThan(m_folder))
    throw Failure("Another run is at work in " + m_name + ".");
  std::optional<RunState> state = stateOf(contentsOf(m_folder / kState));
  if (!state)
    throw Failure(m_name + " is there and not what a stopped run has left; move it away or choose another "
                           "output.");
  refuseForeign<Failure>(m_folder);
  // The lock stays until the end also where the folder is to be replaced: nobody takes it up meanwhile.
  m_lock = std::move(lock);
  if (start == Start::Anew) {
    m_console.remark(m_name + " of a stopped run, which --resume would take up, is replaced.");
    return;
  }
  m_state = std::move(*state);
  m_pairsOnDisk = m_state.pairs.size();
  m_isOurs = m_isWritten = true;
}

void PartialOutput::describe(RunFacts facts)
{
  // What has been through a file may have lost bytes that no text can hold.
  RunState asRead;
  asRead.facts = facts;
  const std::string difference =
      m_resumes ? differenceOf(m_state.facts, stateOf(stateText(asRead)).value_or(asRead).facts) : "";
  if (!difference.empty())
    throw Failure(m_name + " is of another run: " + difference +
                  "; give what it was made with, or leave out --resume to start anew.");
  m_state.facts = std::move(facts);
}

void PartialOutput::forgetPairs()
{
  m_state.pairs.clear();
  m_state.transforms.clear();
  m_state.parameters.removeAll();
  m_state.changesParameters = false;
  m_state.pairsAlone = true;
}

void PartialOutput::pairDone(const ZxAlignPairResult& pair, std::vector<ZxAlignTransform> transforms,
                             const ZxData& data)
{
  for (const ZxAlignPairResult& before : m_state.pairs) {
    const auto k = static_cast<std::size_t>(before.pair.editable);
    if (!(transforms[k] == m_state.transforms[k])) m_state.pairsAlone = false;
  }
  m_state.pairs.push_back(pair);
  m_state.transforms = std::move(transforms);
  m_data = &data;
  m_isWritten = false;
  m_hasProgress = true;
  using Clock = std::chrono::steady_clock;
  const Clock::time_point start = Clock::now();
  if (start < m_nextWrite) return;
  writeQuietly();
  // Of a long stack writing takes a while: it shall not take a noticeable part of the time.
  const Clock::duration taken = Clock::now() - start;
  m_nextWrite = Clock::now() + std::max<Clock::duration>(std::chrono::seconds(1), 20 * taken);
}

void PartialOutput::alignmentDone()
{
  if (!m_isWritten) writeQuietly();
  m_data = nullptr;
  if (!m_conflict.empty()) throw Conflict(m_conflict);
}

fs::path PartialOutput::growingFolder(const char* name, const std::string& path)
{
  // Slices without the state that they belong to would be of no use.
  const bool isKept = m_isWritten || writeQuietly();
  if (!m_conflict.empty()) throw Conflict(m_conflict);
  if (!isKept || diskOf(m_folder) != diskOf(OutputFiles::stagingParentOf(path))) return {};
  const fs::path folder = m_folder / name;
  std::error_code error;
  fs::create_directory(folder, error);
  return error ? fs::path() : folder;
}

void PartialOutput::hold()
{
  if (m_isOurs) return;
  // It appears with its state in it, so that nobody ever finds it without.
  const fs::path parent = m_folder.parent_path();
  std::string hidden = (parent / (".zxalign-" + std::string(6, 'X'))).string(); // mkdtemp fills it in
  if (!mkdtemp(hidden.data())) cannotWrite(m_folder);
  std::error_code error;
  try {
    writeAtomically(stateText(m_state), fs::path(hidden) / kState, m_folder / kState);
    auto lock = std::make_unique<Lock>(hidden);
    lock->isOurs();
    publish(hidden);
    m_lock = std::move(lock);
  } catch (...) {
    fs::remove_all(hidden, error);
    throw;
  }
  // mkdtemp makes folders for the owner alone; this one is as open as others of the user.
  const mode_t mask = umask(0);
  umask(mask);
  chmod(m_folder.c_str(), 0777 & ~mask);
  m_isOurs = true;
}

void PartialOutput::publish(const std::string& hidden)
{
  // What an earlier stopped run has left gives way as long as it is what lookAt() has seen; nothing else
  // does.
  const bool replaces = m_lock && m_lock->isOf(m_folder);
  if (replaces) refuseForeign<Conflict>(m_folder);
  const auto move = [&](unsigned int how) {
    return renameat2(AT_FDCWD, hidden.c_str(), AT_FDCWD, m_folder.c_str(), how) == 0;
  };
  std::error_code ignored;
  if (move(replaces ? RENAME_EXCHANGE : RENAME_NOREPLACE)) {
    if (replaces) fs::remove_all(hidden, ignored);
    return;
  }
  if (errno == EINVAL || errno == ENOSYS) {
    // The file system knows plain renaming only, which replaces no folder that holds anything.
    if (replaces) fs::remove_all(m_folder);
    if (move(0)) return;
  }
  if (errno != EEXIST && errno != ENOTEMPTY && errno != ENOTDIR) cannotWrite(m_folder);
  throw Conflict(Lock(m_folder).isOurs() ? m_name + " has come into being since this run began; move it away "
                                                    "or choose another output."
                                         : "Another run is at work in " + m_name + ".");
}

void PartialOutput::write()
{
  if (!m_conflict.empty()) throw Conflict(m_conflict);
  if (m_data) {
    m_state.parameters = m_data->parameters();
    m_state.changesParameters = m_data->isUnsaved();
  }
  if (m_isOurs)
    writeAtomically(stateText(m_state), m_folder / kState, m_folder / kState);
  else
    hold();
  m_isWritten = true;
  m_pairsOnDisk = m_state.pairs.size();
}

bool PartialOutput::writeQuietly() noexcept
{
  try {
    write();
    return true;
  } catch (const Conflict& conflict) {
    m_conflict = conflict.what();
    ZxTerminalWorkArea::interrupt();
  } catch (const std::exception& error) {
    m_problem = error.what(); // What is on the disk from before stays; the next attempt may have more luck.
  }
  return false;
}

std::string PartialOutput::tail(End end) noexcept
{
  const bool stopped = end == End::Stopped;
  // Without pairs and slices there is nothing that would not come again at once.
  const bool hasWork = !m_state.pairs.empty() || m_hasSlices || m_resumes;
  const bool isWhole = !hasWork || m_isWritten || writeQuietly();
  if (!isWhole && !m_isOurs) return "; what is done could not be kept: " + (m_problem + m_conflict);
  if (!isWhole)
    return "; " + std::to_string(m_pairsOnDisk) + " of " + std::to_string(m_state.pairs.size()) +
           " finished pairs are kept in " + m_name + ", and --resume takes them up: " + m_problem;
  if (hasWork && m_isOurs && (stopped || m_hasProgress))
    return "; what is done is kept in " + m_name +
           (end == End::InputUnreadable
                ? ": --resume takes it up once the same files can be read; mended ones are aligned anew."
                : ", and --resume takes it up.");
  if (m_isOurs && !hasWork) remove();
  return stopped ? "; nothing was written." : ".";
}

void PartialOutput::guard(const std::function<void()>& work)
{
  std::string sentence;
  bool stopped = false;
  const auto interrupted = [] { return ZxWorkArea::getTheWorkArea()->wasInterrupted(); };
  const auto doing = [] {
    const std::string text = ZxWorkArea::getTheWorkArea()->getProgressText();
    return text.empty() ? std::string("Stopped") : "Stopped (" + text + ")";
  };
  try {
    return work();
  } catch (const Conflict&) {
    throw;
  } catch (const Stopped& reason) {
    sentence = reason.what();
    stopped = true;
  } catch (const std::bad_alloc&) {
    sentence = "There is not enough memory";
  } catch (const std::exception& error) {
    // A slice whose making was stopped is a failure to those who asked for it.
    stopped = interrupted();
    sentence = stopped ? doing() : error.what();
  }
  if (sentence.ends_with('.')) sentence.pop_back();
  const bool isUnreadable = sentence.starts_with("Cannot read ");
  sentence += tail(stopped ? End::Stopped : isUnreadable ? End::InputUnreadable : End::Failed);
  if (stopped) throw Stopped(sentence);
  throw Failure(sentence);
}

void PartialOutput::removeFolder() noexcept
{
  const std::string foreign = foreignIn(m_folder);
  std::error_code error;
  if (!foreign.empty()) {
    for (const char* name : kOurs) fs::remove_all(m_folder / name, error);
    m_console.remark(m_name + " stays, since " + foreign + " in it is from no run.");
    return;
  }
  // It goes at once: nobody finds it without its state, should the program be killed meanwhile.
  std::string hidden = (m_folder.parent_path() / (".zxalign-" + std::string(6, 'X'))).string();
  if (mkdtemp(hidden.data())) fs::rename(m_folder, hidden, error);
  fs::remove_all(error ? m_folder : fs::path(hidden), error);
}

void PartialOutput::remove() noexcept
{
  // Also what this run was to replace and had no need to.
  if (m_lock && m_lock->isOf(m_folder)) removeFolder();
  m_isOurs = m_isWritten = false;
  m_lock.reset();
}

} // namespace cli
