#include "kernels/CutLine.h"

#include "mc/McRound.h"

#include <cstring>
#include <limits>

namespace kernels {

namespace {

// Index within the box of trunc(position + 0.5), or -1.
std::int64_t indexWithin(double position, int first, int size)
{
  const double moved = position + 0.5;
  if (!(moved > -1.0 && moved < std::numeric_limits<int>::max())) return -1;
  const std::int64_t index = mc::truncToInt64(moved) - first;
  return index >= 0 && index < size ? index : -1;
}

// copy(to, from) copies one voxel.
template <class Copy>
void gather(const VoxelBox& box, const Affine& inverse, const FrameLine& line, unsigned char* out,
            const Copy& copy)
{
  for (int i = 0; i < line.count; ++i, out += box.voxelBytes) {
    const double x = line.alongX ? i : line.position;
    const double y = line.alongX ? line.position : i;
    const std::int64_t ix = indexWithin(inverse.mapX(x, y), box.x, box.width);
    const std::int64_t iy = indexWithin(inverse.mapY(x, y), box.y, box.height);
    if (ix >= 0 && iy >= 0)
      copy(out, box.voxels + static_cast<std::size_t>(iy) * box.rowBytes +
                    static_cast<std::size_t>(ix) * box.voxelBytes);
    else
      std::memset(out, 0, box.voxelBytes);
  }
}

// A size that the compiler knows makes the copy one instruction.
template <std::size_t Bytes>
void gatherSized(const VoxelBox& box, const Affine& inverse, const FrameLine& line, unsigned char* out)
{
  gather(box, inverse, line, out,
         [](unsigned char* to, const unsigned char* from) { std::memcpy(to, from, Bytes); });
}

} // namespace

void cutLine(const VoxelBox& box, const Affine& inverse, const FrameLine& line, unsigned char* out)
{
  switch (box.voxelBytes) {
  case 1:
    return gatherSized<1>(box, inverse, line, out);
  case 2:
    return gatherSized<2>(box, inverse, line, out);
  case 4:
    return gatherSized<4>(box, inverse, line, out);
  case 8:
    return gatherSized<8>(box, inverse, line, out);
  default:
    gather(box, inverse, line, out,
           [&box](unsigned char* to, const unsigned char* from) { std::memcpy(to, from, box.voxelBytes); });
  }
}

} // namespace kernels
