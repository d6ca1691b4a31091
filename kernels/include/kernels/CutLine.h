#pragma once

#include "kernels/Affine.h"

#include <cstddef>

namespace kernels {

/// A box of voxels of one slice, as it lies in memory.
struct VoxelBox {
  const unsigned char* voxels = nullptr; ///< the one at (x, y)
  std::size_t rowBytes = 0;              ///< from one row to the next
  std::size_t voxelBytes = 1;
  int x = 0, y = 0, width = 0, height = 0; ///< in pixels of the slice
};

/// A line of pixels of the aligned frame along one axis: (position, i), or (i, position) along x, for
/// i = 0 ... count - 1.
struct FrameLine {
  bool alongX = false;
  int position = 0;
  int count = 0;
};

/// Samples a slice along a line: pixel i is mapped through the inverse of the slice's transform to (sx, sy);
/// out receives the voxel (trunc(sx + 0.5), trunc(sy + 0.5)) when it lies in the box, else zeros.
///
/// Truncation is towards zero on purpose, so positions down to just above -1.5 still count as row or column
/// 0. Positions that are not finite are outside. out holds count voxels.
void cutLine(const VoxelBox& box, const Affine& inverse, const FrameLine& line, unsigned char* out);

} // namespace kernels
