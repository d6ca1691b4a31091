#pragma once

#include "zx/ZxData.h"
#include "zx/ZxVoxelSource.h"

#include <array>
#include <vector>

/// The voxels of a volume reduced by whole blocks of its slices, made when they are read. The slices read
/// last are kept, for those who read a pair of them again and again.
class ReducedVoxels : public ZxReadOnlyVoxelSource {
public:
  ReducedVoxels(McHandle<ZxSpatialData> data, int factor);

  /// The shape of a lattice reduced by whole blocks; without pixels when the factor is too large.
  static ZxLatticeShape shapeOf(ZxLatticeShape shape, int factor);
  /// The data with its slices reduced. Empty when nothing would be left of them, or for a factor below 1.
  static McHandle<ZxSpatialData> reduce(const McHandle<ZxSpatialData>& data, int factor);

  bool readSlice(int k, void* dst) override;
  bool readBox(const ZxBox3i& box, void* dst) override;

private:
  struct Kept {
    int slice = -1;
    std::vector<unsigned char> voxels;
  };
  const Kept* slice(int k);
  bool reduceSlice(int k, void* dst);

  McHandle<ZxSpatialData> m_data;
  ZxLattice& m_input;
  ZxLatticeShape m_shape;
  int m_factor;
  std::vector<unsigned char> m_whole; ///< a slice of the input, where it is not in memory
  std::array<Kept, 3> m_kept;
  std::size_t m_next = 0; ///< of the kept ones, to be replaced
};
