#include "PngWriter.h"

#include "FileError.h"
#include "SliceWriter.h"

#include <zlib.h>

#include <algorithm>
#include <bit>
#include <vector>

namespace io {
namespace {

void appendBigEndian(std::string& out, std::uint32_t value)
{
  for (const int shift : {24, 16, 8, 0}) out += static_cast<char>(value >> shift & 255);
}

void writeChunk(OutputFile& file, std::string typeAndData)
{
  std::string chunk;
  appendBigEndian(chunk, static_cast<std::uint32_t>(typeAndData.size() - 4));
  const auto* bytes = reinterpret_cast<const Bytef*>(typeAndData.data());
  const auto sum = static_cast<std::uint32_t>(crc32_z(0, bytes, typeAndData.size()));
  chunk += typeAndData;
  appendBigEndian(chunk, sum);
  file.write(chunk);
}

std::string headerChunk(const ZxLatticeShape& shape)
{
  constexpr char grey = 0;
  constexpr char rgba = 6;
  std::string chunk = "IHDR";
  appendBigEndian(chunk, static_cast<std::uint32_t>(shape.dims.width));
  appendBigEndian(chunk, static_cast<std::uint32_t>(shape.dims.height));
  chunk += static_cast<char>(8 * mcSizeOf(shape.primType));
  chunk += shape.numDataVars == 4 ? rgba : grey;
  return chunk + std::string(3, '\0'); // Compression, filter and interlace as usual.
}

/// Packs the rows of a picture into chunks of data.
class Packer {
public:
  Packer(OutputFile& file, const std::string& target) : m_file(file), m_buffer(1 << 16)
  {
    constexpr int quick = 4;
    if (deflateInit(&m_stream, quick) != Z_OK) cannotWrite(target, "there is not enough memory");
  }
  ~Packer() { deflateEnd(&m_stream); }
  Packer(const Packer&) = delete;
  Packer& operator=(const Packer&) = delete;

  void add(std::vector<Bytef>& bytes, int flush)
  {
    m_stream.next_in = bytes.data();
    m_stream.avail_in = static_cast<uInt>(bytes.size());
    do {
      m_stream.next_out = m_buffer.data();
      m_stream.avail_out = static_cast<uInt>(m_buffer.size());
      deflate(&m_stream, flush);
      const std::size_t n = m_buffer.size() - m_stream.avail_out;
      if (n > 0) writeChunk(m_file, "IDAT" + std::string(reinterpret_cast<const char*>(m_buffer.data()), n));
    } while (m_stream.avail_out == 0);
  }

private:
  OutputFile& m_file;
  z_stream m_stream{};
  std::vector<Bytef> m_buffer;
};

/// A row with the higher byte of 16 bits first.
std::vector<Bytef> storedRow(std::span<const std::byte> row, std::size_t valueBytes)
{
  std::vector<Bytef> stored(row.size());
  std::transform(row.begin(), row.end(), stored.begin(),
                 [](std::byte b) { return std::to_integer<Bytef>(b); });
  if (valueBytes == 2 && std::endian::native == std::endian::little) {
    for (std::size_t i = 0; i + 1 < stored.size(); i += 2) std::swap(stored[i], stored[i + 1]);
  }
  return stored;
}

} // namespace

void writePng(const ZxLatticeShape& shape, std::span<const std::byte> slice, const std::string& target,
              const std::string& path)
{
  OutputFile file(path, target);
  file.write(std::string("\x89PNG\r\n\x1A\n"));
  writeChunk(file, headerChunk(shape));
  const std::size_t rowBytes = static_cast<std::size_t>(shape.dims.width) * shape.voxelBytes();
  Packer packer(file, target);
  std::vector<Bytef> above(rowBytes);
  for (; !slice.empty(); slice = slice.subspan(rowBytes)) {
    // Differences to the row above pack better than the values.
    constexpr Bytef toAbove = 2;
    std::vector<Bytef> row = storedRow(slice.first(rowBytes), mcSizeOf(shape.primType));
    std::vector<Bytef> filtered(1 + rowBytes, toAbove);
    std::transform(row.begin(), row.end(), above.begin(), filtered.begin() + 1,
                   [](Bytef a, Bytef b) { return static_cast<Bytef>(a - b); });
    packer.add(filtered, slice.size() > rowBytes ? Z_NO_FLUSH : Z_FINISH);
    above = std::move(row);
  }
  writeChunk(file, "IEND");
  file.close();
}

} // namespace io
