#pragma once

#include "Format.h"
#include "StoredBytes.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace io {

/// Which integer types of a file are given the smallest type in memory that holds their values. For types
/// that have none of their own the values decide anyway.
enum class Narrowing { None, ToValues };

/// What the header of a file says of its voxels: x fastest, then y, then slices, then further volumes.
struct RawVolume {
  std::string path; ///< of the header, for messages
  ZxDims dims;
  std::uint64_t volumes = 1; ///< the first one is read
  StoredVoxels voxels;
  std::vector<DataFile> files; ///< each holds an equal share of all bytes
  Narrowing narrowing = Narrowing::None;
};

/// The sizes of a header as those of a volume in memory. Throws Error unless all are between 1 and 2^31 - 1.
ZxDims checkedDims(const std::string& path, std::int64_t width, std::int64_t height, std::int64_t slices);

/// Reads voxels that lie in files one after the other, packed or not. Needs a fixed amount of memory.
class RawVolumeReader final : public VolumeReader {
public:
  /// Takes format, geometry, parameters, remarks and the file of the header from info and fills in the rest;
  /// without that file the header is the one of the volume. Throws Error when the
  /// files are too short, as far as that shows without unpacking them.
  RawVolumeReader(RawVolume volume, VolumeInfo info);
  void readSlice(int k, void* dst) override;
  bool readsInAnyOrder() const override { return m_bytes->inAnyOrder(); }
  bool readRows(int k, int y, int rows, void* dst) override;
  void checkUnchanged(int k) override;

private:
  void listFiles();
  void checkFiles();
  McPrimType findType();
  std::uint64_t positionOf(int k) const noexcept { return static_cast<std::uint64_t>(k) * m_sliceBytes; }
  /// Reads voxels that follow one another, from the first one's position on, in the type of the shape.
  void readVoxels(std::uint64_t position, std::size_t count, void* dst);
  /// Reads them as they are stored by parts that need little memory and calls f(stored voxels, index of the
  /// first, count).
  void forEachPart(std::uint64_t position, std::size_t count,
                   const std::function<void(std::byte*, std::size_t, std::size_t)>& f);

  RawVolume m_volume;
  std::uint64_t m_sliceBytes = 0;
  std::uint64_t m_shareBytes = 0; ///< of one file
  std::vector<std::byte> m_part;
  std::optional<StoredBytes> m_bytes; ///< there from the checks in the constructor on
};

} // namespace io
