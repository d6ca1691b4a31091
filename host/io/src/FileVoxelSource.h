#pragma once

#include "SliceCache.h"
#include "zx/ZxVoxelSource.h"

namespace io {

/// The voxels of a volume that stay in its files (see openVolume()). Cannot be written to.
class FileVoxelSource final : public ZxReadOnlyVoxelSource {
public:
  /// The reader gives slices of one size and in any order. The name of the volume is for messages.
  FileVoxelSource(std::unique_ptr<VolumeReader> reader, std::string name)
    : m_slices(std::move(reader)), m_name(std::move(name))
  {
  }

  bool readSlice(int k, void* dst) override;
  bool readBox(const ZxBox3i& box, void* dst) override;

private:
  /// Runs f for slice k. A failure becomes a sentence that names the slice and the file, and false.
  template <class F>
  bool reported(int k, F f) const;
  /// The part of a box in one slice.
  void readPart(const ZxBox3i& box, int k, std::byte* dst);

  SliceCache m_slices;
  std::string m_name;
};

} // namespace io
