#include "BmpReader.h"

#include "ByteStream.h"
#include "FileError.h"

#include <algorithm>

namespace io {
namespace {

std::uint32_t littleEndian(const unsigned char* b) noexcept
{
  return std::uint32_t{b[3]} << 24 | std::uint32_t{b[2]} << 16 | std::uint32_t{b[1]} << 8 | b[0];
}

} // namespace

BmpReader::BmpReader(const std::string& path) : m_path(path), m_in(path, std::ios::binary)
{
  m_info.format = "BMP";
  readHeader(fileSize(path));
}

void BmpReader::fail(const std::string& reason) const { cannotRead(m_path, reason); }

void BmpReader::read(std::uint64_t offset, void* dst, std::size_t n)
{
  m_in.seekg(static_cast<std::streamoff>(offset));
  if (!m_in.read(static_cast<char*>(dst), static_cast<std::streamsize>(n))) fail("it is cut off");
}

void BmpReader::readHeader(std::uint64_t fileBytes)
{
  std::array<unsigned char, 54> header;
  read(0, header.data(), header.size());
  m_offset = littleEndian(&header[10]);
  const std::uint32_t headerBytes = littleEndian(&header[14]);
  const std::int64_t width = static_cast<std::int32_t>(littleEndian(&header[18]));
  const std::int64_t height = static_cast<std::int32_t>(littleEndian(&header[22]));
  m_bits = header[28] | static_cast<unsigned>(header[29]) << 8;
  m_fromTop = height < 0;
  if (headerBytes < 40) fail("BMP pictures of OS/2 are not supported");
  if (width < 1 || height == 0 || height <= INT32_MIN) fail("its size is impossible");
  if ((m_bits != 8 && m_bits != 24 && m_bits != 32) || littleEndian(&header[30]) != 0) {
    fail("BMP pictures that are packed or of " + std::to_string(m_bits) + " bits a pixel are not supported");
  }
  m_info.shape.dims = {static_cast<int>(width), static_cast<int>(std::abs(height)), 1};
  m_rowBytes = (static_cast<std::uint64_t>(width) * m_bits + 31) / 32 * 4;
  const auto rows = static_cast<std::uint64_t>(m_info.shape.dims.height);
  if (m_offset < 54 || m_offset > fileBytes || (fileBytes - m_offset) / m_rowBytes < rows)
    fail("it is cut off");
  if (m_bits == 8)
    readTable(14 + std::uint64_t{headerBytes}, littleEndian(&header[46]));
  else
    m_info.shape.numDataVars = 4;
  m_info.storedType = m_bits != 8 ? "RGB uint8" : m_info.shape.numDataVars == 4 ? "palette uint8" : "uint8";
}

void BmpReader::readTable(std::uint64_t offset, std::uint32_t colours)
{
  const std::uint32_t count = colours == 0 ? 256 : colours;
  if (count > 256 || offset + count * 4 > m_offset) fail("its table of colours is damaged");
  read(offset, m_table.data(), count * 4);
  const auto isGrey = [](const auto& c) { return c[0] == c[1] && c[1] == c[2]; };
  m_info.shape.numDataVars = std::all_of(m_table.begin(), m_table.end(), isGrey) ? 1 : 4;
}

void BmpReader::placeRow(const unsigned char* row, std::byte* dst) const
{
  const auto width = static_cast<std::size_t>(m_info.shape.dims.width);
  for (std::size_t x = 0; x < width; ++x) {
    const unsigned char* bgr = m_bits == 8 ? m_table[row[x]].data() : row + x * m_bits / 8;
    if (m_info.shape.numDataVars == 1) {
      dst[x] = static_cast<std::byte>(bgr[0]);
      continue;
    }
    for (int c = 0; c < 3; ++c) dst[4 * x + static_cast<std::size_t>(c)] = static_cast<std::byte>(bgr[2 - c]);
    dst[4 * x + 3] = std::byte{255};
  }
}

void BmpReader::readSlice(int, void* dst)
{
  const auto height = static_cast<std::size_t>(m_info.shape.dims.height);
  const std::size_t outBytes = m_info.shape.sliceBytes() / height;
  std::vector<unsigned char> row(m_rowBytes);
  for (std::size_t i = 0; i < height; ++i) {
    read(m_offset + i * m_rowBytes, row.data(), row.size());
    const std::size_t y = m_fromTop ? i : height - 1 - i;
    placeRow(row.data(), static_cast<std::byte*>(dst) + y * outBytes);
  }
}

} // namespace io
