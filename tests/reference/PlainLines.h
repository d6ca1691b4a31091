#pragma once

#include "kernels/CutLine.h"
#include "kernels/LineProjection.h"
#include "mc/McTypedElement.h"

#include <cmath>
#include <cstddef>
#include <cstring>

/// The plain loops that the kernels of the orthogonal views must equal.
namespace reference {

/// A slice of voxels of any type.
struct PlainSlice {
  const void* data;
  McPrimType type;
  int channels, width, height;

  std::size_t voxelBytes() const { return mcSizeOf(type) * static_cast<std::size_t>(channels); }
  const void* at(double x, double y) const
  {
    return static_cast<const unsigned char*>(data) +
           (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) *
               voxelBytes();
  }
  bool holds(double x, double y) const { return x >= 0 && x < width && y >= 0 && y < height; }
};

/// out receives the voxel at the nearest position of each pixel of the line, or zeros.
inline void plainCut(const PlainSlice& slice, const kernels::Affine& m, const kernels::FrameLine& line,
                     unsigned char* out)
{
  for (int i = 0; i < line.count; ++i, out += slice.voxelBytes()) {
    const double x = line.alongX ? i : line.position, y = line.alongX ? line.position : i;
    const double ix = std::trunc(m.m11 * x + m.m21 * y + m.dx + 0.5);
    const double iy = std::trunc(m.m12 * x + m.m22 * y + m.dy + 0.5);
    std::memset(out, 0, slice.voxelBytes());
    if (slice.holds(ix, iy)) std::memcpy(out, slice.at(ix, iy), slice.voxelBytes());
  }
}

/// out receives the longest voxel on the line, the first of equal ones; zeros where none is longer than 0.
inline void plainProjection(const PlainSlice& slice, const kernels::SampleLine& line, unsigned char* out)
{
  std::memset(out, 0, slice.voxelBytes());
  for (int k = 0; k <= line.steps; ++k) {
    const double x = std::trunc(line.x + k * line.stepX + 0.5);
    const double y = std::trunc(line.y + k * line.stepY + 0.5);
    if (!slice.holds(x, y)) continue;
    const McTypedElement voxel(slice.at(x, y), slice.type, slice.channels);
    if (voxel.length() > McTypedElement(out, slice.type, slice.channels).length())
      std::memcpy(out, slice.at(x, y), slice.voxelBytes());
  }
}

} // namespace reference
