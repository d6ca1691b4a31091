#include "FileVoxelSource.h"

#include "zx/ZxMessage.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <string>

namespace io {

template <class F>
bool FileVoxelSource::reported(int k, F f) const
{
  std::string reason;
  try {
    f();
    return true;
  } catch (const std::bad_alloc&) {
    reason = "there is not enough memory.";
  } catch (const std::exception& error) {
    reason = error.what();
  }
  const std::string slice = "slice " + std::to_string(k) + " from ", beginning = "Cannot read ";
  if (reason.starts_with(beginning + '"')) // The file that is meant may be one of several.
    reason.insert(beginning.size(), slice);
  else
    reason = beginning + slice + '"' + m_name + "\": " + reason;
  ZxMessage::getTheMsg()->printf("%s", reason.c_str());
  return false;
}

bool FileVoxelSource::readSlice(int k, void* dst)
{
  return reported(k, [&] { m_slices.readSlice(k, dst); });
}

bool FileVoxelSource::readBox(const ZxBox3i& box, void* dst)
{
  const std::size_t voxelBytes = m_slices.info().shape.voxelBytes();
  const std::size_t partBytes = box.size.slicePixels() * voxelBytes;
  auto* out = static_cast<std::byte*>(dst);
  for (int k = box.z; k < box.z + box.size.slices; ++k, out += partBytes)
    if (!reported(k, [&] { readPart(box, k, out); })) return false;
  return true;
}

void FileVoxelSource::readPart(const ZxBox3i& box, int k, std::byte* dst)
{
  const ZxLatticeShape& shape = m_slices.info().shape;
  if (box.size.width == shape.dims.width) return m_slices.readRows(k, box.y, box.size.height, dst);
  constexpr std::size_t chunkBytes = 1 << 20;
  const std::size_t voxelBytes = shape.voxelBytes();
  const std::size_t fullBytes = static_cast<std::size_t>(shape.dims.width) * voxelBytes;
  const std::size_t rowBytes = static_cast<std::size_t>(box.size.width) * voxelBytes;
  const std::size_t left = static_cast<std::size_t>(box.x) * voxelBytes;
  const auto most = static_cast<int>(std::clamp<std::size_t>(
      chunkBytes / fullBytes, 1, static_cast<std::size_t>(std::max(box.size.height, 1))));
  std::vector<std::byte> rows(static_cast<std::size_t>(most) * fullBytes);
  for (int y = box.y, n = 0; y < box.y + box.size.height; y += n) {
    n = std::min(most, box.y + box.size.height - y);
    m_slices.readRows(k, y, n, rows.data());
    for (int r = 0; r < n; ++r, dst += rowBytes)
      std::memcpy(dst, rows.data() + static_cast<std::size_t>(r) * fullBytes + left, rowBytes);
  }
}

} // namespace io
