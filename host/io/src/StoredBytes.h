#pragma once

#include "ByteStream.h"
#include "PlainFile.h"
#include "StoredVoxels.h"

#include <cstdint>
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

  /// True when the bytes of the voxels stand in the file as they are.
  bool isPlain() const noexcept { return packing == Packing::None && notation == Notation::Binary; }
};

/// The bytes of the voxels of a volume, one after the other over one or more data files.
///
/// Plain files are read at any place; of several, one is open at a time. Others are unpacked from the front:
/// going back begins anew.
class StoredBytes {
public:
  /// Each file holds so many bytes of voxels, from its place on. A single plain file is opened at once.
  /// Throws Error when it cannot be.
  StoredBytes(std::vector<DataFile> files, std::uint64_t shareBytes, StoredType type);

  /// True when going back costs nothing.
  bool inAnyOrder() const noexcept { return m_plain; }
  /// Reads the bytes from a position on. Throws Error when they are damaged or short.
  void read(std::uint64_t position, std::span<std::byte> bytes);
  /// Throws Error when the plain file that holds a position has changed since this object was made.
  void checkUnchanged(std::uint64_t position);

private:
  const PlainFile& plainFile(std::size_t file);
  /// Reads what lies in one file.
  void readPart(std::size_t file, std::uint64_t within, std::span<std::byte> bytes);
  void readForward(std::size_t file, std::uint64_t within, std::span<std::byte> bytes);

  std::vector<DataFile> m_files;
  std::uint64_t m_shareBytes;
  StoredType m_type;
  bool m_plain;
  std::vector<FileStamp> m_stamps; ///< of plain files
  std::unique_ptr<PlainFile> m_open;
  std::unique_ptr<ByteStream> m_stream;
  std::size_t m_file = 0;     ///< that is open
  std::uint64_t m_within = 0; ///< where the stream stands in the voxels of its file
};

} // namespace io
