#include "ZxMemoryVoxels.h"

#include <cstring>

ZxMemoryVoxels::ZxMemoryVoxels(const ZxLatticeShape& shape,
                               std::unique_ptr<std::byte[], void (*)(void*)> bytes)
  : m_width(static_cast<std::size_t>(shape.dims.width)), m_voxelBytes(shape.voxelBytes()),
    m_sliceBytes(shape.sliceBytes()), m_bytes(std::move(bytes))
{
}

bool ZxMemoryVoxels::readSlice(int k, void* dst)
{
  std::memcpy(dst, slice(k), m_sliceBytes);
  return true;
}

bool ZxMemoryVoxels::readBox(const ZxBox3i& box, void* dst)
{
  const std::size_t rowBytes = static_cast<std::size_t>(box.size.width) * m_voxelBytes;
  auto* out = static_cast<std::byte*>(dst);
  for (int z = box.z; z < box.z + box.size.slices; ++z)
    for (int y = box.y; y < box.y + box.size.height; ++y, out += rowBytes) {
      const std::size_t first = static_cast<std::size_t>(y) * m_width + static_cast<std::size_t>(box.x);
      std::memcpy(out, slice(z) + first * m_voxelBytes, rowBytes);
    }
  return true;
}
