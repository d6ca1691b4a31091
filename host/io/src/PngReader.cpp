#include "PngReader.h"

#include "ByteStream.h"
#include "FileError.h"

#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace io {
namespace {

std::uint32_t bigEndian(const unsigned char* b) noexcept
{
  return std::uint32_t{b[0]} << 24 | std::uint32_t{b[1]} << 16 | std::uint32_t{b[2]} << 8 | b[3];
}

/// Of left, above and left above the one nearest to left + above - leftAbove.
int paeth(int left, int above, int leftAbove) noexcept
{
  const int guess = left + above - leftAbove;
  const int a = std::abs(guess - left);
  const int b = std::abs(guess - above);
  const int c = std::abs(guess - leftAbove);
  if (a <= b && a <= c) return left;
  return b <= c ? above : leftAbove;
}

/// Turns the differences of a row back into its bytes. False for an unknown kind of difference.
bool unfilter(unsigned kind, std::vector<unsigned char>& row, const std::vector<unsigned char>& above,
              std::size_t pixelBytes) noexcept
{
  for (std::size_t i = 0; i < row.size(); ++i) {
    const int left = i >= pixelBytes ? row[i - pixelBytes] : 0;
    const int leftAbove = i >= pixelBytes ? above[i - pixelBytes] : 0;
    int guess = 0;
    switch (kind) {
    case 0:
      return true;
    case 1:
      guess = left;
      break;
    case 2:
      guess = above[i];
      break;
    case 3:
      guess = (left + above[i]) / 2;
      break;
    case 4:
      guess = paeth(left, above[i], leftAbove);
      break;
    default:
      return false;
    }
    row[i] = static_cast<unsigned char>(row[i] + guess);
  }
  return true;
}

} // namespace

/// The packed pixels of a picture as one stream.
class PngInflater {
public:
  explicit PngInflater(PngReader& reader) : m_reader(reader)
  {
    if (inflateInit(&m_stream) != Z_OK) reader.fail("there is not enough memory");
  }
  ~PngInflater() { inflateEnd(&m_stream); }
  PngInflater(const PngInflater&) = delete;
  PngInflater& operator=(const PngInflater&) = delete;

  void read(unsigned char* dst, std::size_t n)
  {
    constexpr std::size_t step = 1 << 24; // zlib counts in 32 bits
    for (; n > 0; n -= std::min(n, step), dst += step) readSome(dst, std::min(n, step));
  }

private:
  void readSome(unsigned char* dst, std::size_t n)
  {
    m_stream.next_out = dst;
    m_stream.avail_out = static_cast<uInt>(n);
    while (m_stream.avail_out > 0) {
      if (m_stream.avail_in == 0) nextChunk();
      const int result = inflate(&m_stream, Z_NO_FLUSH);
      const bool ended = result == Z_STREAM_END && m_stream.avail_out > 0;
      if (ended || (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR)) {
        m_reader.fail("its data are damaged");
      }
    }
  }
  void nextChunk()
  {
    if (m_next == m_reader.m_pixels.size()) m_reader.fail("it holds fewer data than its size needs");
    m_data = m_reader.data(m_reader.m_pixels[m_next++]);
    m_stream.next_in = m_data.data();
    m_stream.avail_in = static_cast<uInt>(m_data.size());
  }

  PngReader& m_reader;
  z_stream m_stream{};
  std::vector<unsigned char> m_data;
  std::size_t m_next = 0;
};

PngReader::PngReader(const std::string& path)
  : m_path(path), m_fileBytes(fileSize(path)), m_in(path, std::ios::binary)
{
  m_info.format = "PNG";
  m_info.shape.dims.slices = 1;
  readHeader(chunkAt(8));
  readChunks();
  checkSize();
  findType();
}

void PngReader::fail(const std::string& reason) const { cannotRead(m_path, reason); }

PngReader::Chunk PngReader::chunkAt(std::uint64_t offset)
{
  unsigned char head[8];
  m_in.seekg(static_cast<std::streamoff>(offset));
  if (!m_in.read(reinterpret_cast<char*>(head), sizeof head)) fail("it is cut off");
  Chunk chunk{.offset = offset + 8, .length = bigEndian(head)};
  std::memcpy(chunk.type.data(), head + 4, 4);
  if (chunk.offset + chunk.length + 4 > m_fileBytes) fail("it is cut off");
  return chunk;
}

std::vector<unsigned char> PngReader::data(const Chunk& chunk)
{
  std::vector<unsigned char> bytes(std::size_t{chunk.length} + 4);
  m_in.seekg(static_cast<std::streamoff>(chunk.offset));
  if (!m_in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()))) {
    fail("it is cut off");
  }
  const uLong ofType = crc32_z(0, reinterpret_cast<const Bytef*>(chunk.type.data()), 4);
  if (crc32_z(ofType, bytes.data(), chunk.length) != bigEndian(bytes.data() + chunk.length)) {
    fail("its data are damaged");
  }
  bytes.resize(chunk.length);
  return bytes;
}

void PngReader::readHeader(const Chunk& chunk)
{
  if (!chunk.is("IHDR") || chunk.length != 13) fail("its header is damaged");
  const std::vector<unsigned char> header = data(chunk);
  const std::uint32_t width = bigEndian(header.data());
  const std::uint32_t height = bigEndian(header.data() + 4);
  constexpr auto largest = static_cast<std::uint32_t>(std::numeric_limits<int>::max());
  if (width == 0 || height == 0 || width > largest || height > largest) fail("its size is impossible");
  m_info.shape.dims.width = static_cast<int>(width);
  m_info.shape.dims.height = static_cast<int>(height);
  m_bits = header[8];
  m_colour = static_cast<Colour>(header[9]);
  m_interlaced = header[12] == 1;
  const bool bitsAllowed =
      m_bits == 8 || (m_bits == 16 && m_colour != Palette) ||
      ((m_bits == 1 || m_bits == 2 || m_bits == 4) && (m_colour == Grey || m_colour == Palette));
  const bool colourAllowed = header[9] <= 6 && header[9] != 1 && header[9] != 5;
  if (!bitsAllowed || !colourAllowed || header[10] != 0 || header[11] != 0 || header[12] > 1) {
    fail("its header is damaged");
  }
}

void PngReader::readChunks()
{
  std::vector<unsigned char> alpha;
  for (std::uint64_t at = 8;;) {
    const Chunk chunk = chunkAt(at);
    at = chunk.offset + chunk.length + 4;
    if (chunk.is("IEND")) {
      data(chunk);
      break;
    }
    if (chunk.is("IDAT")) m_pixels.push_back(chunk);
    const bool small = chunk.length <= 3 * 256;
    if (chunk.is("tRNS") && small && m_colour == Palette) alpha = data(chunk);
    if (!chunk.is("PLTE") || m_colour != Palette) continue;
    if (!small || chunk.length % 3 != 0) fail("its table of colours is damaged");
    const std::vector<unsigned char> colours = data(chunk);
    for (std::size_t i = 0; i < colours.size(); i += 3) {
      m_palette.push_back({colours[i], colours[i + 1], colours[i + 2], 255});
    }
  }
  if (m_pixels.empty()) fail("it holds no pixels");
  if (m_colour == Palette && m_palette.empty()) fail("its table of colours is missing");
  for (std::size_t i = 0; i < std::min(alpha.size(), m_palette.size()); ++i) m_palette[i][3] = alpha[i];
}

void PngReader::checkSize() const
{
  constexpr std::uint64_t mostPacked = 1032; // What deflate can do at best.
  std::uint64_t packed = 0;
  for (const Chunk& chunk : m_pixels) packed += chunk.length;
  const auto width = static_cast<std::size_t>(m_info.shape.dims.width);
  const auto height = static_cast<std::size_t>(m_info.shape.dims.height);
  if (rowBytes(width) / mostPacked > packed || rowBytes(width) * height / mostPacked > packed) {
    fail("it holds fewer data than its size needs");
  }
}

std::size_t PngReader::samples() const noexcept
{
  switch (m_colour) {
  case Rgb:
    return 3;
  case GreyAlpha:
    return 2;
  case Rgba:
    return 4;
  default:
    return 1;
  }
}

void PngReader::findType()
{
  const char* names[] = {"", "", "RGB ", "RGB ", "grey with alpha ", "", "RGBA "};
  const bool palette = m_colour == Palette;
  m_info.storedType = std::string(names[m_colour]) + (m_bits == 16 ? "uint16" : "uint8");
  if (m_colour == GreyAlpha || (m_colour != Grey && m_bits == 16)) {
    fail("pixels of the type " + m_info.storedType + " are not supported");
  }
  m_info.shape.numDataVars = m_colour == Grey ? 1 : 4;
  m_info.shape.primType = m_bits == 16 && !palette ? McPrimType::UInt16 : McPrimType::UInt8;
}

void PngReader::placePixel(const unsigned char* row, std::size_t i, std::byte* dst) const
{
  constexpr unsigned char opaque = 255;
  if (m_colour == Rgb || m_colour == Rgba) {
    std::memcpy(dst, row + i * samples(), samples());
    if (m_colour == Rgb) std::memcpy(dst + 3, &opaque, 1);
  } else if (m_bits == 16) {
    const auto value = static_cast<std::uint16_t>(row[2 * i] << 8 | row[2 * i + 1]);
    std::memcpy(dst, &value, sizeof value);
  } else {
    const std::size_t bit = i * m_bits;
    const unsigned value = row[bit / 8] >> (8 - m_bits - bit % 8) & ((1u << m_bits) - 1);
    if (m_colour == Grey)
      dst[0] = static_cast<std::byte>(value);
    else
      std::memcpy(dst, m_palette[std::min<std::size_t>(value, m_palette.size() - 1)].data(), 4);
  }
}

void PngReader::readPass(PngInflater& inflater, const Pass& pass, std::byte* dst) const
{
  const auto width = static_cast<std::size_t>(m_info.shape.dims.width);
  const auto height = static_cast<std::size_t>(m_info.shape.dims.height);
  if (pass.x >= width || pass.y >= height) return;
  const std::size_t count = (width - pass.x - 1) / pass.dx + 1;
  const std::size_t voxel = m_info.shape.voxelBytes();
  std::vector<unsigned char> row(rowBytes(count));
  std::vector<unsigned char> above(row.size());
  for (std::size_t y = pass.y; y < height; y += pass.dy) {
    unsigned char kind = 0;
    inflater.read(&kind, 1);
    inflater.read(row.data(), row.size());
    if (!unfilter(kind, row, above, std::max<std::size_t>(1, samples() * m_bits / 8)))
      fail("its data are damaged");
    std::byte* at = dst + (y * width + pass.x) * voxel;
    for (std::size_t i = 0; i < count; ++i) placePixel(row.data(), i, at + i * pass.dx * voxel);
    row.swap(above);
  }
}

void PngReader::readSlice(int, void* dst)
{
  constexpr Pass whole = {0, 0, 1, 1};
  constexpr Pass interlaced[] = {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                                 {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};
  PngInflater inflater(*this);
  auto* out = static_cast<std::byte*>(dst);
  if (!m_interlaced) return readPass(inflater, whole, out);
  for (const Pass& pass : interlaced) readPass(inflater, pass, out);
}

} // namespace io
