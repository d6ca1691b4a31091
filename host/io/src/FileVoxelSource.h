#pragma once

#include "SliceCache.h"
#include "zx/ZxVoxelSource.h"

namespace io {

/// The voxels of a volume that stay in its files (see openVolume()). Cannot be written to.
class FileVoxelSource final : public ZxVoxelSource {
public:
  /// The reader gives slices of one size and in any order.
  explicit FileVoxelSource(std::unique_ptr<VolumeReader> reader) : m_slices(std::move(reader)) {}

  bool readSlice(int k, void* dst) override;
  bool readBox(const ZxBox3i& box, void* dst) override;
  const void* sliceInMemory(int) const override { return nullptr; }
  void* beginWrite(int) override { return nullptr; }
  bool endWrite(int) override { return false; }

private:
  /// The part of a box in one slice.
  void readPart(const ZxBox3i& box, int k, std::byte* dst);

  SliceCache m_slices;
};

} // namespace io
