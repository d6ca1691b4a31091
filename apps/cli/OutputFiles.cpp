#include "OutputFiles.h"

#include "Failure.h"
#include "Text.h"
#include "UniquePath.h"
#include "io/Volume.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <map>

namespace cli {
namespace fs = std::filesystem;
namespace {

bool isSequence(const std::string& path)
{
  return path.ends_with('/') || fs::path(path).filename().string().find('%') != std::string::npos;
}

/// The folder that a name like "out/a.tif", "out/a_%04d.tif" or "out/" is made in.
fs::path folderOf(const std::string& path)
{
  const fs::path target(path);
  const fs::path parent = target.has_filename() ? target.parent_path() : target.parent_path().parent_path();
  return parent.empty() ? fs::path(".") : parent;
}

/// The name below that folder: "a.tif", "a_%04d.tif" or "out/".
std::string nameOf(const std::string& path)
{
  const fs::path target(path);
  return target.has_filename() ? target.filename().string() : target.parent_path().filename().string() + "/";
}

/// True when a name may be one of those that a number pattern gives.
bool mayMatch(const std::string& pattern, const std::string& name)
{
  const std::size_t percent = pattern.find('%');
  const std::size_t end = pattern.find('d', percent);
  if (percent == std::string::npos || end == std::string::npos) return false;
  const std::string before = pattern.substr(0, percent), after = pattern.substr(end + 1);
  if (name.size() < before.size() + after.size()) return false;
  const std::string middle = name.substr(before.size(), name.size() - before.size() - after.size());
  return name.starts_with(before) && name.ends_with(after) &&
         middle.find_first_not_of(" 0123456789") == std::string::npos;
}

bool isSliceFile(const std::string& path)
{
  const std::initializer_list<std::string_view> endings = {".png", ".tif", ".tiff", ".jpg", ".jpeg", ".bmp"};
  return std::any_of(endings.begin(), endings.end(),
                     [&](std::string_view ending) { return hasEnding(path, ending); });
}

/// True when a path is the folder or lies below it, both as uniquePath() gives them.
bool liesIn(const fs::path& path, const fs::path& folder)
{
  return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first == folder.end();
}

std::string writeFailure(const std::string& path, const std::string& reason)
{
  return "Cannot write \"" + path + "\": " + reason + ".";
}

/// The file beside a header that its voxels go into; empty for formats of one file.
std::string dataFileOf(const std::string& path)
{
  if (!hasEnding(path, ".nhdr") && !hasEnding(path, ".mhd")) return {};
  return fs::path(path).replace_extension(".raw").string();
}

/// The file of the parameters, below the folder of the volume.
std::string parametersOf(const std::string& path)
{
  return nameOf(path) + (path.ends_with('/') ? "slice_%04d.tif" : "") + ".params.json";
}

/// A hidden folder of our own inside a folder.
fs::path makeStagingFolder(const fs::path& parent, const std::string& target)
{
  std::string name = (parent / (".zxalign-" + std::string(6, 'X'))).string(); // mkdtemp fills it in
  if (!mkdtemp(name.data())) throw Failure(writeFailure(target, std::strerror(errno)));
  return name;
}

/// Puts what has grown in a folder on the disk, so that nothing is replaced by what a power failure would
/// take away. A full disk may show here. Sentences name the files in the folder that they are to be moved to.
void flush(const fs::path& folder, const fs::path& target)
{
  // One call for the whole file system is much faster than one for each of hundreds of slices.
  constexpr std::ptrdiff_t few = 8;
  const auto entries = [&] { return fs::recursive_directory_iterator(folder); };
  const bool isFew = std::distance(entries(), {}) <= few;
  for (const fs::directory_entry& entry : entries()) {
    if (!entry.is_regular_file()) continue;
    const int file = open(entry.path().c_str(), O_RDONLY | O_CLOEXEC);
    const bool isDone = file >= 0 && (isFew ? fsync(file) : syncfs(file)) == 0;
    const std::string reason = isDone ? "" : std::strerror(errno);
    if (file >= 0) close(file);
    if (!isDone)
      throw Failure(writeFailure((target / fs::relative(entry.path(), folder)).lexically_normal(), reason));
    if (!isFew) return;
  }
}

/// All files and folders directly in a folder.
std::vector<fs::path> entriesOf(const fs::path& folder)
{
  std::vector<fs::path> entries;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) entries.push_back(entry.path());
  return entries;
}

/// Moves that belong together: all of them are done, or those that were done are taken back.
///
/// What is replaced or removed stays in hidden folders beside it until the end.
class Moves {
public:
  Moves() = default;
  ~Moves()
  {
    std::error_code ignored;
    for (const auto& [parent, folder] : m_folders)
      if (!m_isNeeded) fs::remove_all(folder, ignored);
  }
  Moves(const Moves&) = delete;
  Moves& operator=(const Moves&) = delete;

  /// Moves a file or folder into a folder; a folder that is there already receives the files. Throws
  /// fs::filesystem_error.
  void moveInto(const fs::path& from, const fs::path& folder)
  {
    const fs::path to = folder / from.filename();
    if (!fs::is_directory(from) || !fs::exists(to)) return move(from, to);
    for (const fs::path& entry : entriesOf(from)) moveInto(entry, to);
  }
  /// Removes a file, if it is there. Throws fs::filesystem_error.
  void remove(const fs::path& path)
  {
    if (!isFile(path)) return;
    const fs::path kept = placeFor(path);
    fs::rename(path, kept);
    m_done.push_back({{}, path, kept});
  }

  /// Takes back what was done, the last first. Gives what could not be, as the end of a sentence.
  std::string takeBack() noexcept
  {
    std::string rest;
    for (; !m_done.empty(); m_done.pop_back()) {
      const auto& [from, to, replaced] = m_done.back();
      std::error_code error;
      if (!from.empty()) fs::rename(to, from, error);
      if (!error && !replaced.empty()) fs::rename(replaced, to, error);
      if (!error) continue;
      rest += "; new is " + to.string();
      if (!replaced.empty()) rest += ", what it was is " + replaced.string();
      m_isNeeded = m_isNeeded || !replaced.empty();
    }
    return rest;
  }

private:
  struct Done {
    fs::path from, to;
    fs::path replaced; ///< what stood there; empty for nothing
  };
  static bool isFile(const fs::path& path)
  {
    const fs::file_status status = fs::symlink_status(path);
    return fs::is_regular_file(status) || fs::is_symlink(status);
  }
  /// Where a file is kept that is to be replaced: of the same disk.
  fs::path placeFor(const fs::path& path)
  {
    const fs::path parent = path.has_parent_path() ? path.parent_path() : fs::path(".");
    fs::path& folder = m_folders[parent];
    if (folder.empty()) {
      std::string name = (parent / (".zxalign-" + std::string(6, 'X'))).string(); // mkdtemp fills it in
      if (!mkdtemp(name.data())) throw fs::filesystem_error("no folder", {errno, std::generic_category()});
      folder = name;
    }
    return folder / path.filename();
  }
  void move(const fs::path& from, const fs::path& to)
  {
    fs::path replaced;
    if (isFile(to)) {
      // With a second name for it there is no moment without a file of that name.
      replaced = placeFor(to);
      if (link(to.c_str(), replaced.c_str()) != 0) fs::rename(to, replaced);
      m_done.push_back({{}, to, replaced});
    }
    fs::rename(from, to);
    if (!replaced.empty()) m_done.pop_back();
    m_done.push_back({from, to, replaced});
  }

  std::map<fs::path, fs::path> m_folders; ///< the hidden one of each folder
  std::vector<Done> m_done;
  bool m_isNeeded = false; ///< something is kept that could not be put back
};

} // namespace

OutputFiles::~OutputFiles() { removeStaged(); }

void OutputFiles::removeStaged() noexcept
{
  std::error_code ignored;
  for (const Staged& s : m_staged)
    if (s.isOurs) fs::remove_all(s.folder, ignored);
  m_staged.clear();
}

void OutputFiles::protect(const std::vector<std::string>& inputs, Input kind)
{
  for (const std::string& input : inputs)
    m_inputs.push_back({uniquePath(input), inputs.size() == 1 ? kind : Input::Protected});
}

void OutputFiles::refuseTwice(const std::string& path)
{
  const fs::path name = uniquePath(path);
  if (std::find(m_announced.begin(), m_announced.end(), name) != m_announced.end())
    throw Failure(writeFailure(path, "two outputs have this name"));
  for (const fs::path& folder : m_kept)
    if (liesIn(name, folder))
      throw Failure(writeFailure(path, folder.filename().string() + " is removed when the work is done"));
  m_announced.push_back(name);
}

void OutputFiles::announceFolder(const std::string& path)
{
  refuseTwice(path);
  const fs::path folder = uniquePath(path);
  for (const ProtectedInput& input : m_inputs)
    if (liesIn(input.path, folder)) throw Failure(writeFailure(path, "an input is in it"));
  m_kept.push_back(folder);
}

fs::path OutputFiles::stagingParentOf(const std::string& path)
{
  // A folder of slices that is there may be another disk than the one above it.
  std::error_code ignored;
  return path.ends_with('/') && fs::is_directory(path, ignored) ? fs::path(path) : folderOf(path);
}

void OutputFiles::refuseForeignData(const std::string& path)
{
  const std::string data = dataFileOf(path);
  if (data.empty()) return;
  refuseTwice(data);
  std::error_code ignored;
  if (!fs::exists(data, ignored)) return;
  const fs::path header = uniquePath(path);
  for (const ProtectedInput& input : m_inputs)
    if (input.path != header && fs::path(input.path).replace_extension(".raw") == uniquePath(data))
      throw Failure(writeFailure(path, data + " holds the data of an input"));
  if (!fs::exists(path, ignored))
    throw Failure(writeFailure(path, data + " is there and belongs to another volume"));
}

void OutputFiles::refuseInputs(const std::string& path, bool volume) const
{
  const fs::path name = uniquePath(path);
  for (const ProtectedInput& input : m_inputs) {
    if (name == input.path && !(volume && input.kind == Input::Replaceable))
      throw Failure(writeFailure(path, "it is an input"));
    std::error_code ignored;
    if (fs::is_directory(input.path, ignored) && name.parent_path() == input.path && isSliceFile(path))
      throw Failure(writeFailure(path, "it would become one of the slices of the input"));
  }
}

void OutputFiles::refuseInputSlices(const std::string& path) const
{
  const bool wholeFolder = path.ends_with('/');
  const fs::path folder = wholeFolder ? uniquePath(path) : uniquePath(folderOf(path));
  for (const ProtectedInput& input : m_inputs) {
    const bool isSlice = input.path.parent_path() == folder &&
                         (wholeFolder || mayMatch(nameOf(path), input.path.filename().string()));
    if (input.path == folder || isSlice)
      throw Failure(writeFailure(path, "the slices would be mixed with those of the input"));
  }
}

void OutputFiles::announceVolume(const std::string& path, const ZxLatticeShape& shape)
{
  const std::string refusal = io::checkWritable(shape, path);
  if (!refusal.empty()) throw Failure(refusal);
  refuseTwice(path);
  if (isSequence(path)) return refuseInputSlices(path);
  refuseTwice(path + ".params.json");
  refuseInputs(path, true);
  refuseForeignData(path);
}

void OutputFiles::announceFile(const std::string& path)
{
  std::error_code error;
  const fs::path folder = folderOf(path);
  const fs::file_status status = fs::status(folder, error);
  if (!fs::exists(status))
    throw Failure(writeFailure(path, "the folder " + folder.string() + " does not exist"));
  if (!fs::is_directory(status)) throw Failure(writeFailure(path, folder.string() + " is not a folder"));
  if (access(folder.c_str(), W_OK) != 0) throw Failure(writeFailure(path, std::strerror(errno)));
  if (fs::exists(path, error) && !fs::is_regular_file(path, error))
    throw Failure(writeFailure(path, "it is there and not a regular file"));
  refuseTwice(path);
  const fs::path inside = uniquePath(path).parent_path();
  if (isSliceFile(path) && std::find(m_announced.begin(), m_announced.end(), inside) != m_announced.end())
    throw Failure(writeFailure(path, "it would become one of the slices of another output"));
  refuseInputs(path, false);
}

void OutputFiles::write(const std::string& path, const std::function<void(const std::string&)>& writer)
{
  m_staged.push_back({makeStagingFolder(stagingParentOf(path), path), folderOf(path), parametersOf(path)});
  writeStaged(path, writer);
}

void OutputFiles::grow(const std::string& path, const fs::path& folder,
                       const std::function<void(const std::string&)>& writer)
{
  m_staged.push_back({folder, folderOf(path), parametersOf(path), false});
  writeStaged(path, writer);
}

void OutputFiles::writeStaged(const std::string& path, const std::function<void(const std::string&)>& writer)
{
  const std::string staged = (m_staged.back().folder / nameOf(path)).string();
  try {
    writer(staged);
  } catch (const io::Interrupted&) {
    throw;
  } catch (const io::Error& error) {
    // The user knows the target, not the hidden folder.
    std::string sentence = error.what();
    const std::size_t at = sentence.find(staged);
    throw Failure(at == std::string::npos ? sentence : sentence.replace(at, staged.size(), path));
  }
}

void OutputFiles::commit()
{
  // What was written whole is on the disk already.
  for (const Staged& s : m_staged)
    if (!s.isOurs) flush(s.folder, s.target);
  // What replaces an input comes last: when something else cannot be moved the work can be done once more.
  const auto keepsInputs = [&](const Staged& s) {
    return std::none_of(m_inputs.begin(), m_inputs.end(), [&](const ProtectedInput& input) {
      return uniquePath(s.target) == input.path.parent_path() && fs::exists(s.folder / input.path.filename());
    });
  };
  std::stable_partition(m_staged.begin(), m_staged.end(), keepsInputs);
  Moves moves;
  for (const Staged& s : m_staged) {
    fs::path entry = s.parameters;
    try {
      // Parameters of what is replaced do not belong to what replaces it.
      if (!fs::exists(s.folder / s.parameters)) moves.remove(s.target / s.parameters);
      for (const fs::path& staged : entriesOf(s.folder)) moves.moveInto(entry = staged, s.target);
    } catch (const fs::filesystem_error& error) {
      const std::string target = (s.target / entry.filename()).lexically_normal().string();
      throw Failure(writeFailure(target, error.code().message() + moves.takeBack()));
    }
  }
  removeStaged();
}

} // namespace cli
