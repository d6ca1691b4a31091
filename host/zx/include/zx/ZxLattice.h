#pragma once

#include "mc/McPrimType.h"
#include "zx/ZxBox3.h"
#include "zx/ZxVoxelSource.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

/// How the positions of the voxels are given.
enum class ZxCoordType {
  Uniform, ///< equally spaced along each axis
  Stacked  ///< equally spaced in x and y, slices at positions of their own
};

/// What a lattice holds.
struct ZxLatticeShape {
  ZxDims dims;
  int numDataVars = 1; ///< values per voxel: 1 for grey, 4 for colour
  McPrimType primType = McPrimType::UInt8;
  ZxCoordType coordType = ZxCoordType::Uniform;

  std::size_t voxelBytes() const noexcept;
  std::size_t sliceBytes() const noexcept { return dims.slicePixels() * voxelBytes(); }
  std::size_t bytes() const noexcept;
  friend bool operator==(const ZxLatticeShape&, const ZxLatticeShape&) = default;
};

/// A volume of voxels on a regular grid, with its bounding box. Slice 0 is the first, row 0 the top one.
///
/// Not thread-safe: who shares it between threads holds a lock around every read.
class ZxLattice {
public:
  ZxLattice(const ZxLatticeShape& shape, std::unique_ptr<ZxVoxelSource> source);
  virtual ~ZxLattice();
  ZxLattice(const ZxLattice&) = delete;
  ZxLattice& operator=(const ZxLattice&) = delete;

  /// Voxels in memory, all 0, for a lattice of the given shape. Null when it has no voxels, its size
  /// overflows or it does not fit into the memory that is free.
  static std::unique_ptr<ZxVoxelSource> createMemory(const ZxLatticeShape& shape);

  const ZxLatticeShape& shape() const noexcept { return m_shape; }
  const ZxDims& getDims() const noexcept { return m_shape.dims; }
  int getNumDataVars() const noexcept { return m_shape.numDataVars; }
  McPrimType primType() const noexcept { return m_shape.primType; }
  ZxCoordType getCoordType() const noexcept { return m_shape.coordType; }
  /// False for a lattice without voxels.
  bool isValid() const noexcept;
  /// Four values of 8 unsigned bits: red, green, blue, alpha.
  bool isColor() const noexcept { return m_shape.numDataVars == 4 && m_shape.primType == McPrimType::UInt8; }

  const ZxBox3f& getBoundingBox() const noexcept { return m_box; }
  void setBoundingBox(const ZxBox3f& box) noexcept { m_box = box; }

  bool readSlice(int k, void* dst) { return m_source->readSlice(k, dst); }
  bool readBox(const ZxBox3i& box, void* dst) { return m_source->readBox(box, dst); }
  const void* sliceInMemory(int k) const { return m_source->sliceInMemory(k); }
  /// Like that of the source; null while the voxels are locked.
  void* beginWrite(int k);
  bool endWrite(int k);

  /// Keeps everyone from writing to the voxels until unlock() was called as often, on any thread.
  void lock() noexcept { ++m_locks; }
  void unlock() noexcept { --m_locks; }

  /// Smallest and largest value over all voxels and data values that are finite. (0, 0) when there is
  /// none, when a slice could not be read, or when the work was interrupted while slices were read from a
  /// file. Kept until voxels are written: asking again costs nothing. While slices are read from a file
  /// progress is told the part of them that has been read, where it is given.
  void getRange(float& min, float& max, const std::function<void(float)>& progress = {});

private:
  ZxLatticeShape m_shape;
  ZxBox3f m_box;
  std::unique_ptr<ZxVoxelSource> m_source;
  std::optional<std::pair<float, float>> m_range;
  std::atomic<int> m_locks{0};
};

/// A lattice of grey or colour values.
class ZxLattice3 : public ZxLattice {
public:
  using ZxLattice::ZxLattice;
  /// A lattice in memory with all voxels 0 and the unit box (one unit per voxel), or null (createMemory()).
  static std::unique_ptr<ZxLattice3> create(const ZxLatticeShape& shape);
};

/// A lattice of labels: one integer of 8, 16 or 32 bits per voxel, 0 meaning no label.
class ZxLabelLattice : public ZxLattice {
public:
  using ZxLattice::ZxLattice;
  /// True for the types that a label can have.
  static bool isLabelType(McPrimType type) noexcept;
};

/// A three-dimensional label lattice.
class ZxLabelLattice3 : public ZxLabelLattice {
public:
  using ZxLabelLattice::ZxLabelLattice;
  /// Like ZxLattice3::create(); null also for a shape that is no label's.
  static std::unique_ptr<ZxLabelLattice3> create(const ZxLatticeShape& shape);
};
