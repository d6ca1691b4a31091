#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace io {

/// Bytes read from front to back. Throws Error when the file cannot be read or its contents are damaged.
class ByteStream {
public:
  virtual ~ByteStream() = default;
  /// Reads up to size bytes and returns how many: fewer only at the end.
  virtual std::size_t read(void* dst, std::size_t size) = 0;
  /// Passes over size bytes, or to the end when there are fewer.
  virtual void skip(std::uint64_t size);
  /// Unpacks what is left, without keeping it: the checksum stands at the end. Nothing where nothing is
  /// packed. Polls the work area. Throws Error, and Interrupted.
  virtual void finish() {}
};

/// How the bytes of a file are packed.
enum class Packing {
  None,
  Deflate, ///< gzip (several members are one stream) or zlib
  Bzip2
};

/// Bytes of a regular file. Throws Error, also for what is no regular file: a pipe or a device never ends.
std::uint64_t fileSize(const std::string& path);

/// Deflate for a regular file that begins like gzip, else None.
Packing detectPacking(const std::string& path);

/// Bytes that a file of so many bytes can hold at most when it is unpacked.
std::uint64_t unpackedLimit(std::uint64_t fileBytes, Packing packing) noexcept;

/// The bytes of a file from an offset on, unpacked. Needs a fixed amount of memory.
std::unique_ptr<ByteStream> openBytes(const std::string& path, std::uint64_t offset, Packing packing);

/// Reads a stream line by line, with lines that end in LF or CR LF, up to a limit over all lines.
class LineReader {
public:
  LineReader(ByteStream& stream, std::string path) : m_stream(stream), m_path(std::move(path)) {}
  /// Reads the next line without its end. False at the end of the stream.
  bool next(std::string& line);
  /// Bytes up to the end of the last line, its line end included.
  std::uint64_t position() const noexcept { return m_position; }

private:
  bool fill();

  ByteStream& m_stream;
  std::string m_path;
  std::string m_buffer;
  std::size_t m_used = 0;
  std::uint64_t m_position = 0;
};

} // namespace io
