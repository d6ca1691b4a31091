#pragma once

#include <cstddef>

/// Size of a volume in voxels: width (x), height (y), number of slices (z).
struct ZxDims {
  int width = 0;
  int height = 0;
  int slices = 0;

  std::size_t slicePixels() const noexcept
  {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  }
  std::size_t voxels() const noexcept { return slicePixels() * static_cast<std::size_t>(slices); }
  friend bool operator==(const ZxDims&, const ZxDims&) = default;
};

/// A box of voxels: first index and number of voxels along x, y and z.
struct ZxBox3i {
  int x = 0, y = 0, z = 0;
  ZxDims size;
};

/// Bounding box of a volume in physical units: the minimum is the centre of the first voxel, the maximum the
/// centre of the last.
struct ZxBox3f {
  float xmin = 0, xmax = 0, ymin = 0, ymax = 0, zmin = 0, zmax = 0;
  friend bool operator==(const ZxBox3f&, const ZxBox3f&) = default;
};
