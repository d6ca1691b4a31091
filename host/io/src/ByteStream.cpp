#include "ByteStream.h"

#include "FileError.h"
#include "SliceWriter.h"

#include <bzlib.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <system_error>
#include <vector>

namespace io {

namespace {

constexpr std::size_t chunkBytes = 1 << 16;
/// Headers with the parameters of some 100,000 slices stay well below.
constexpr std::uint64_t headerLimit = std::uint64_t{1} << 28;

class FileStream final : public ByteStream {
public:
  FileStream(const std::string& path, std::uint64_t offset)
    : m_path(path), m_file(std::fopen(path.c_str(), "rb"), &std::fclose)
  {
    if (!m_file) cannotRead(m_path, std::generic_category().message(errno));
    skip(offset);
  }
  std::size_t read(void* dst, std::size_t size) override
  {
    const std::size_t n = std::fread(dst, 1, size, m_file.get());
    if (n < size && std::ferror(m_file.get())) cannotRead(m_path, std::generic_category().message(errno));
    return n;
  }
  void skip(std::uint64_t size) override
  {
    constexpr auto step = static_cast<std::uint64_t>(std::numeric_limits<long>::max());
    for (; size > 0; size -= std::min(size, step))
      if (std::fseek(m_file.get(), static_cast<long>(std::min(size, step)), SEEK_CUR) != 0)
        cannotRead(m_path, std::generic_category().message(errno));
  }

private:
  std::string m_path;
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> m_file;
};

enum class UnpackState { More, StreamEnd, Damaged };

/// What the two unpackers share: packed bytes come in by chunks, and a stream may be followed by the next.
///
/// A codec unpacks one stream: step(in, out) moves both spans on and says how the stream stands; begins()
/// tells whether bytes after the end of a stream are the next one.
template <class Codec>
class UnpackStream final : public ByteStream {
public:
  UnpackStream(const std::string& path, std::uint64_t offset)
    : m_path(path), m_file(path, offset), m_chunk(chunkBytes)
  {
  }
  std::size_t read(void* dst, std::size_t size) override
  {
    std::span out(static_cast<std::byte*>(dst), size);
    while (!out.empty() && unpack(out)) {
    }
    return size - out.size();
  }
  void finish() override
  {
    std::vector<std::byte> rest(chunkBytes);
    while (read(rest.data(), rest.size()) > 0) throwIfInterrupted();
  }

private:
  /// Unpacks what is at hand. False when there is nothing left.
  bool unpack(std::span<std::byte>& out)
  {
    if (m_in.empty()) m_in = std::span(m_chunk.data(), m_file.read(m_chunk.data(), m_chunk.size()));
    if (!m_open) {
      // What follows the end of a stream and does not begin another one is padding.
      if (m_in.empty() || (m_ended && !Codec::begins(m_in))) return false;
      m_codec = std::make_unique<Codec>();
      m_open = true;
    }
    const bool atEnd = m_in.empty();
    const std::size_t before = out.size();
    const UnpackState state = m_codec->step(m_in, out);
    if (state == UnpackState::Damaged) cannotRead(m_path, "its compressed data are damaged");
    if (state == UnpackState::StreamEnd) {
      m_open = false;
      m_ended = true;
    } else if (atEnd && out.size() == before) {
      cannotRead(m_path, "its compressed data end too early");
    }
    return true;
  }

  std::string m_path;
  FileStream m_file;
  std::vector<std::byte> m_chunk;
  std::span<std::byte> m_in;
  std::unique_ptr<Codec> m_codec;
  bool m_open = false;
  bool m_ended = false;
};

/// Hands bytes to a library that counts them in fewer bits.
template <class Byte, class Size>
void handOver(std::span<std::byte> bytes, Byte*& next, Size& available)
{
  constexpr std::size_t most = std::numeric_limits<Size>::max();
  next = reinterpret_cast<Byte*>(bytes.data());
  available = static_cast<Size>(std::min(bytes.size(), most));
}

class Inflater {
public:
  Inflater()
  {
    constexpr int gzipOrZlib = MAX_WBITS + 32;
    if (inflateInit2(&m_stream, gzipOrZlib) != Z_OK) throw std::bad_alloc();
  }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;
  ~Inflater() { inflateEnd(&m_stream); }
  static bool begins(std::span<const std::byte> bytes) { return bytes[0] == std::byte{0x1f}; }

  UnpackState step(std::span<std::byte>& in, std::span<std::byte>& out)
  {
    handOver(in, m_stream.next_in, m_stream.avail_in);
    handOver(out, m_stream.next_out, m_stream.avail_out);
    const auto inBefore = m_stream.avail_in, outBefore = m_stream.avail_out;
    const int result = inflate(&m_stream, Z_NO_FLUSH);
    in = in.subspan(inBefore - m_stream.avail_in);
    out = out.subspan(outBefore - m_stream.avail_out);
    if (result == Z_STREAM_END) return UnpackState::StreamEnd;
    return result == Z_OK || result == Z_BUF_ERROR ? UnpackState::More : UnpackState::Damaged;
  }

private:
  z_stream m_stream{};
};

class Bunzipper {
public:
  Bunzipper()
  {
    if (BZ2_bzDecompressInit(&m_stream, 0, 0) != BZ_OK) throw std::bad_alloc();
  }
  Bunzipper(const Bunzipper&) = delete;
  Bunzipper& operator=(const Bunzipper&) = delete;
  ~Bunzipper() { BZ2_bzDecompressEnd(&m_stream); }
  static bool begins(std::span<const std::byte> bytes) { return bytes[0] == std::byte{'B'}; }

  UnpackState step(std::span<std::byte>& in, std::span<std::byte>& out)
  {
    handOver(in, m_stream.next_in, m_stream.avail_in);
    handOver(out, m_stream.next_out, m_stream.avail_out);
    const auto inBefore = m_stream.avail_in, outBefore = m_stream.avail_out;
    const int result = BZ2_bzDecompress(&m_stream);
    in = in.subspan(inBefore - m_stream.avail_in);
    out = out.subspan(outBefore - m_stream.avail_out);
    if (result == BZ_STREAM_END) return UnpackState::StreamEnd;
    return result == BZ_OK ? UnpackState::More : UnpackState::Damaged;
  }

private:
  bz_stream m_stream{};
};

} // namespace

void ByteStream::skip(std::uint64_t size)
{
  std::vector<std::byte> chunk(std::min<std::uint64_t>(size, chunkBytes));
  while (size > 0) {
    const std::size_t n = read(chunk.data(), std::min<std::uint64_t>(size, chunk.size()));
    if (n == 0) return;
    size -= n;
  }
}

std::uint64_t fileSize(const std::string& path)
{
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (!std::filesystem::exists(status)) cannotRead(path, "there is no such file");
  if (!std::filesystem::is_regular_file(status)) cannotRead(path, "it is no regular file");
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  if (error) cannotRead(path, error.message());
  return size;
}

Packing detectPacking(const std::string& path)
{
  fileSize(path); // refuses what is no regular file
  std::array<std::byte, 2> magic{};
  FileStream(path, 0).read(magic.data(), magic.size());
  return magic == std::array{std::byte{0x1f}, std::byte{0x8b}} ? Packing::Deflate : Packing::None;
}

std::uint64_t unpackedLimit(std::uint64_t fileBytes, Packing packing) noexcept
{
  // deflate: 258 bytes in 2 bits. bzip2: a block of 900,000 runs of at most 259 / 5 bytes in some 37 bytes.
  const std::uint64_t ratio = packing == Packing::None ? 1 : packing == Packing::Deflate ? 1032 : 1'300'000;
  std::uint64_t limit = 0;
  return __builtin_mul_overflow(fileBytes, ratio, &limit) ? std::numeric_limits<std::uint64_t>::max() : limit;
}

std::unique_ptr<ByteStream> openBytes(const std::string& path, std::uint64_t offset, Packing packing)
{
  switch (packing) {
  case Packing::Deflate:
    return std::make_unique<UnpackStream<Inflater>>(path, offset);
  case Packing::Bzip2:
    return std::make_unique<UnpackStream<Bunzipper>>(path, offset);
  default:
    return std::make_unique<FileStream>(path, offset);
  }
}

bool LineReader::fill()
{
  m_buffer.erase(0, m_used);
  m_used = 0;
  const std::size_t before = m_buffer.size();
  m_buffer.resize(before + chunkBytes);
  m_buffer.resize(before + m_stream.read(m_buffer.data() + before, chunkBytes));
  if (m_position + m_buffer.size() > headerLimit) cannotRead(m_path, "its header does not end");
  return m_buffer.size() > before;
}

bool LineReader::next(std::string& line)
{
  std::size_t end = m_buffer.find('\n', m_used);
  while (end == std::string::npos) {
    const std::size_t searched = m_buffer.size() - m_used;
    if (!fill()) break;
    end = m_buffer.find('\n', searched);
  }
  if (end == std::string::npos && m_used == m_buffer.size()) return false;
  const std::size_t lineEnd = std::min(end, m_buffer.size());
  line.assign(m_buffer, m_used, lineEnd - m_used);
  const std::size_t after = std::min(lineEnd + 1, m_buffer.size());
  m_position += after - m_used;
  m_used = after;
  if (line.ends_with('\r')) line.pop_back();
  return true;
}

} // namespace io
