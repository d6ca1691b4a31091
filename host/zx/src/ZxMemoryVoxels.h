#pragma once

#include "zx/ZxLattice.h"

#include <memory>

/// Voxels in one block of memory, slice after slice.
class ZxMemoryVoxels : public ZxVoxelSource {
public:
  /// Takes over a block of shape.bytes() bytes.
  ZxMemoryVoxels(const ZxLatticeShape& shape, std::unique_ptr<std::byte[], void (*)(void*)> bytes);

  bool readSlice(int k, void* dst) override;
  bool readBox(const ZxBox3i& box, void* dst) override;
  const void* sliceInMemory(int k) const override { return slice(k); }
  void* beginWrite(int k) override { return slice(k); }
  bool endWrite(int) override { return true; }

private:
  std::byte* slice(int k) const noexcept
  {
    return m_bytes.get() + static_cast<std::size_t>(k) * m_sliceBytes;
  }

  std::size_t m_width;
  std::size_t m_voxelBytes;
  std::size_t m_sliceBytes;
  std::unique_ptr<std::byte[], void (*)(void*)> m_bytes;
};
