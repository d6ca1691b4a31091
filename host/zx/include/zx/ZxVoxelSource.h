#pragma once

#include "zx/ZxBox3.h"

#include <cstddef>

/// Where the voxels of a lattice live. Gives and takes one slice at a time, so that a source in a file can
/// stand in for one in memory.
///
/// A slice is height rows of width voxels; a voxel is its data values side by side in native byte order.
class ZxVoxelSource {
public:
  virtual ~ZxVoxelSource() = default;

  /// Copies slice k to dst (one slice of bytes). False when it could not be read.
  virtual bool readSlice(int k, void* dst) = 0;
  /// Copies the voxels of a box, x fastest, then y, then z. The box lies inside the volume.
  virtual bool readBox(const ZxBox3i& box, void* dst) = 0;
  /// The bytes of slice k where they can be seen without a copy, else null. Valid until the source changes.
  virtual const void* sliceInMemory(int k) const = 0;
  /// Memory to write slice k into, or null for a source that cannot be written. Its contents are unspecified
  /// until they have been written; endWrite() hands them over. One slice at a time.
  virtual void* beginWrite(int k) = 0;
  /// Ends a beginWrite(). False when the slice could not be stored.
  virtual bool endWrite(int k) = 0;
};

/// A source whose voxels are made or fetched when they are asked for, and cannot be written.
class ZxReadOnlyVoxelSource : public ZxVoxelSource {
public:
  const void* sliceInMemory(int) const override { return nullptr; }
  void* beginWrite(int) override { return nullptr; }
  bool endWrite(int) override { return false; }
};
