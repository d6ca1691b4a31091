#pragma once

#include "RunState.h"
#include "io/Volume.h"

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace cli {

/// The volume that a command reads: one file, one folder of slices, or a list of slice files.
class InputOptions {
public:
  /// Adds the positional argument and the options about it.
  void declare(CLI::App& options);

  const std::vector<std::string>& paths() const noexcept { return m_paths; }
  /// How the input is named in sentences: its path, or the first of several.
  std::string name() const;

  io::VolumeInfo info() const;
  /// The volume with its voxels left in their files where that is possible.
  McHandle<ZxField3> open() const;
  /// Adds what decides about the volume that is read, of which info() has told.
  void addFacts(const io::VolumeInfo& info, RunFacts& facts) const;

private:
  std::vector<std::string> m_paths;
  bool m_pad = false;
  io::ReadOptions readOptions() const;
};

/// Names of types in sentences and tables: "uint8", "RGBA uint8", "3 x float".
std::string typeName(const ZxLatticeShape& shape);
/// "512 x 512 x 64"
std::string sizeName(const ZxDims& dims);

/// Refuses, naming both sizes, when a volume that belongs to the input has other dimensions.
void requireSameDims(const std::string& what, const std::string& path, const ZxDims& dims,
                     const InputOptions& input, const ZxDims& inputDims);

} // namespace cli
