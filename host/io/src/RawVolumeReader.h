#pragma once

#include "ByteStream.h"
#include "Format.h"
#include "StoredVoxels.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace io {

/// How the voxels of a data file are written down.
enum class Notation {
  Binary,
  Text, ///< decimal numbers between white space
  Hex   ///< two digits a byte, white space passed over
};

/// Where the voxels stand in a data file.
enum class Place {
  AtOffset,
  AtEnd ///< the last voxel ends the file; what stands before is passed over
};

/// Where voxels are stored: a file from an offset on.
struct DataFile {
  std::string path;
  std::uint64_t offset = 0;
  Place place = Place::AtOffset;
  Packing packing = Packing::None;
  Notation notation = Notation::Binary;
  std::uint64_t skip = 0; ///< unpacked bytes before the first voxel
};

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
  /// Takes format, geometry, parameters and remarks from info and fills in the rest. Throws Error when the
  /// files are too short, as far as that shows without unpacking them.
  RawVolumeReader(RawVolume volume, VolumeInfo info);
  void readSlice(int k, void* dst) override;

private:
  void checkFiles();
  McPrimType findType();
  void restart();
  void readStored(std::span<std::byte> bytes);
  /// Reads one slice by parts that need little memory and calls f(stored voxels, index of the first, count).
  void forEachPart(const std::function<void(std::byte*, std::size_t, std::size_t)>& f);

  RawVolume m_volume;
  std::uint64_t m_sliceBytes = 0;
  std::uint64_t m_shareBytes = 0; ///< of one file
  std::vector<std::byte> m_part;
  std::unique_ptr<ByteStream> m_stream;
  std::size_t m_file = 0;        ///< the next one to be opened
  std::uint64_t m_shareLeft = 0; ///< bytes of the open file
  int m_next = 0;                ///< slice that the stream stands at
};

} // namespace io
