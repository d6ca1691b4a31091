#include "RawVolumeReader.h"

#include "DataFileName.h"
#include "FileError.h"
#include "SliceWriter.h"

#include <algorithm>
#include <limits>

namespace io {

namespace {

std::uint64_t product(const std::string& path, std::initializer_list<std::uint64_t> factors)
{
  std::uint64_t result = 1;
  for (const std::uint64_t factor : factors)
    if (__builtin_mul_overflow(result, factor, &result)) cannotRead(path, "its sizes are impossibly large");
  return result;
}

/// Bytes of voxels that a data file holds at most.
std::uint64_t capacity(const DataFile& file, std::size_t valueBytes)
{
  const std::uint64_t size = fileSize(file.path);
  const std::uint64_t packed = size - std::min(size, file.offset);
  const std::uint64_t unpacked = unpackedLimit(packed, file.packing);
  const std::uint64_t rest = unpacked - std::min(unpacked, file.skip);
  switch (file.notation) {
  case Notation::Hex:
    return rest / 2;
  case Notation::Text:
    return (rest / 2 + 1) * valueBytes; // one digit and one space each
  default:
    return rest;
  }
}

} // namespace

ZxDims checkedDims(const std::string& path, std::int64_t width, std::int64_t height, std::int64_t slices)
{
  const auto size = [&](std::int64_t n) {
    if (n < 1) cannotRead(path, "its size " + std::to_string(n) + " is not positive");
    if (n > std::numeric_limits<int>::max())
      cannotRead(path, "its size " + std::to_string(n) + " is too large");
    return static_cast<int>(n);
  };
  return {size(width), size(height), size(slices)};
}

RawVolumeReader::RawVolumeReader(RawVolume volume, VolumeInfo info) : m_volume(std::move(volume))
{
  m_info = std::move(info);
  listFiles();
  checkFiles();
  m_bytes.emplace(m_volume.files, m_shareBytes, m_volume.voxels.type);
  m_info.shape.dims = m_volume.dims;
  m_info.shape.numDataVars = m_volume.voxels.channels == 1 ? 1 : 4;
  m_info.shape.primType = findType();
  m_info.storedType = m_volume.voxels.describe();
  if (m_volume.volumes > 1)
    m_info.remarks.push_back("\"" + fileName(m_volume.path) + "\" holds " + std::to_string(m_volume.volumes) +
                             " volumes, the first one is read.");
}

void RawVolumeReader::listFiles()
{
  std::vector<std::string>& files = m_info.files;
  if (files.empty() || files.front() != m_volume.path) files.push_back(m_volume.path);
  const std::string header = files.front();
  for (const DataFile& file : m_volume.files)
    if (file.path != m_volume.path && file.path != header) files.push_back(file.path);
}

void RawVolumeReader::checkFiles()
{
  const ZxDims& dims = m_volume.dims;
  const auto width = static_cast<std::uint64_t>(dims.width), height = static_cast<std::uint64_t>(dims.height);
  m_sliceBytes = product(m_volume.path, {width, height, m_volume.voxels.bytes()});
  const std::uint64_t all =
      product(m_volume.path, {m_sliceBytes, static_cast<std::uint64_t>(dims.slices), m_volume.volumes});
  const std::uint64_t files = m_volume.files.size();
  if (files == 0 || all % files != 0)
    cannotRead(m_volume.path, "its voxels cannot be spread over " + std::to_string(files) + " files evenly");
  m_shareBytes = all / files;
  if (m_shareBytes % m_volume.voxels.bytes() != 0) cannotRead(m_volume.path, "its data files split voxels");
  for (DataFile& file : m_volume.files) {
    if (file.place == Place::AtEnd) file.offset = std::max(fileSize(file.path), m_shareBytes) - m_shareBytes;
    const std::uint64_t held = capacity(file, sizeOf(m_volume.voxels.type));
    const bool own = file.path == m_volume.path;
    if (held < m_shareBytes)
      cannotRead(m_volume.path, (own ? "the file" : "its data file \"" + fileName(file.path) + "\"") +
                                    " is truncated: it must hold " + std::to_string(m_shareBytes) +
                                    " bytes of voxels and has room for " + std::to_string(held) + " at most");
  }
}

McPrimType RawVolumeReader::findType()
{
  const std::optional<McPrimType> type = m_volume.voxels.typeInMemory();
  if (type && m_volume.narrowing == Narrowing::None) return *type;
  IntegerRange range;
  for (int k = 0; k < m_volume.dims.slices; ++k) {
    throwIfInterrupted();
    forEachPart(positionOf(k), m_volume.dims.slicePixels(),
                [&](std::byte* voxels, std::size_t, std::size_t count) {
                  m_volume.voxels.extendRange(voxels, count, range);
                });
  }
  const std::optional<McPrimType> found = smallestTypeFor(range);
  if (!found)
    cannotRead(m_volume.path, "its values of type " + m_volume.voxels.describe() +
                                  " lie beyond 2^53, where no supported type holds them");
  return *found;
}

void RawVolumeReader::forEachPart(std::uint64_t position, std::size_t all,
                                  const std::function<void(std::byte*, std::size_t, std::size_t)>& f)
{
  constexpr std::size_t partBytes = 1 << 20;
  const std::size_t voxelBytes = m_volume.voxels.bytes();
  const std::size_t most = partBytes / voxelBytes;
  m_part.resize(std::min(all, most) * voxelBytes);
  for (std::size_t first = 0; first < all; first += most) {
    const std::size_t count = std::min(most, all - first);
    m_bytes->read(position + first * voxelBytes, {m_part.data(), count * voxelBytes});
    f(m_part.data(), first, count);
  }
}

void RawVolumeReader::readVoxels(std::uint64_t position, std::size_t count, void* dst)
{
  const McPrimType type = m_info.shape.primType;
  const StoredVoxels& voxels = m_volume.voxels;
  auto* out = static_cast<std::byte*>(dst);
  if (voxels.isPlain(type)) return m_bytes->read(position, {out, count * voxels.bytes()});
  const std::size_t voxelBytes = m_info.shape.voxelBytes();
  forEachPart(position, count, [&](std::byte* stored, std::size_t first, std::size_t n) {
    voxels.convert(stored, n, type, out + first * voxelBytes);
  });
}

void RawVolumeReader::readSlice(int k, void* dst)
{
  readVoxels(positionOf(k), m_volume.dims.slicePixels(), dst);
}

bool RawVolumeReader::readRows(int k, int y, int rows, void* dst)
{
  if (!m_bytes->inAnyOrder()) return false;
  const auto width = static_cast<std::size_t>(m_volume.dims.width);
  const std::uint64_t first = static_cast<std::uint64_t>(y) * width * m_volume.voxels.bytes();
  readVoxels(positionOf(k) + first, static_cast<std::size_t>(rows) * width, dst);
  return true;
}

void RawVolumeReader::checkUnchanged(int k) { m_bytes->checkUnchanged(positionOf(k)); }

} // namespace io
