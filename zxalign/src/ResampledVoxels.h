#pragma once

#include "SliceResampling.h"
#include "zx/ZxData.h"
#include "zx/ZxVoxelSource.h"

#include <vector>

/// The voxels of an aligned volume, computed when they are asked for: takes the memory of two slices whatever
/// the number of slices.
///
/// Holds the input and a copy of the module's transforms and settings. Not thread-safe; the input is read
/// without the module's lock. Polls the work area; a stop gives false.
class ResampledVoxels : public ZxReadOnlyVoxelSource {
public:
  enum class Kind { Image, Labels };
  /// A volume of this many slices; those that the input lacks are 0.
  ResampledVoxels(McHandle<ZxSpatialData> input, SliceResampling how, Kind kind, int slices);

  bool readSlice(int k, void* dst) override;
  bool readBox(const ZxBox3i& box, void* dst) override;

private:
  /// The bytes of a slice of the input; null, after a message, when it cannot be read.
  const void* source(int k);
  bool resample(int k, const kernels::ResampleFrame& frame, SliceResampling::Tell tell, void* dst);

  McHandle<ZxSpatialData> m_data;
  ZxLattice& m_input;
  SliceResampling m_how;
  Kind m_kind;
  int m_slices;
  std::vector<unsigned char> m_slice; ///< the one that was read last, where it is not in memory
  int m_read = -1;
};
