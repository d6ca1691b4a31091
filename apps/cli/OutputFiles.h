#pragma once

#include "zx/ZxLattice.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace cli {

/// The files that a command leaves behind: all of them or none.
///
/// They are announced and checked before any work is done, written into a hidden folder beside their target,
/// and moved into place together by commit(). What has not been committed is removed again.
class OutputFiles {
public:
  /// What a file that the command reads may be to its outputs.
  enum class Input {
    Replaceable, ///< a volume may be written over it: it has been read by then
    Protected    ///< nothing may be written over it
  };

  OutputFiles() = default;
  ~OutputFiles();
  OutputFiles(const OutputFiles&) = delete;
  OutputFiles& operator=(const OutputFiles&) = delete;

  /// Says what the command reads: files or folders of slices. To be called before the outputs are announced.
  void protect(const std::vector<std::string>& inputs, Input kind);

  /// Announces a volume, its name as io::writeVolume() takes it. Throws Failure when it cannot be written.
  void announceVolume(const std::string& path, const ZxLatticeShape& shape);
  /// Announces the folder of what is kept of a volume when the command is stopped, which is removed in the
  /// end: no input and no output may be that folder or lie in it. Throws Failure.
  void announceFolder(const std::string& path);
  /// The folder that an output is written in before it is moved into place: one of the same disk.
  static std::filesystem::path stagingParentOf(const std::string& path);
  /// Announces a plain file. Throws Failure.
  void announceFile(const std::string& path);

  /// Writes an announced output: calls the function with the name to write to. Sentences of io::Error name
  /// the target instead of that name.
  void write(const std::string& path, const std::function<void(const std::string&)>& writer);
  /// The same for a volume that grows in a folder of the caller's, on the disk of its target: the function
  /// finds there what it has written before, and what has not been committed stays.
  void grow(const std::string& path, const std::filesystem::path& folder,
            const std::function<void(const std::string&)>& writer);
  /// Moves everything into place, or nothing. Throws Failure, which says what could not be put back then.
  void commit();

private:
  struct ProtectedInput {
    std::filesystem::path path;
    Input kind;
  };
  struct Staged {
    std::filesystem::path folder; ///< hidden, beside the target
    std::filesystem::path target; ///< the folder of the target
    std::string parameters; ///< below both: where the parameters of a volume go when its file holds none
    bool isOurs = true;     ///< the folder goes with this object
  };
  void writeStaged(const std::string& path, const std::function<void(const std::string&)>& writer);
  void refuseTwice(const std::string& path);
  void refuseForeignData(const std::string& path);
  void refuseInputs(const std::string& path, bool volume) const;
  void refuseInputSlices(const std::string& path) const;
  void removeStaged() noexcept;

  std::vector<ProtectedInput> m_inputs;
  std::vector<std::filesystem::path> m_announced;
  std::vector<std::filesystem::path> m_kept; ///< announced folders, out of bounds for other outputs
  std::vector<Staged> m_staged;
};

} // namespace cli
