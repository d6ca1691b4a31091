#include "TiffDeflate.h"

#include "PlainFile.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <memory>
#include <new>
#include <optional>

namespace io {
namespace {

/// The differences of the values of a row to those of the pixel before, in arithmetic without overflow.
template <class T>
void subtractNeighbours(std::span<const std::byte> row, std::size_t stride, std::byte* dst)
{
  // Both begin where the allocator put them, aligned for any type.
  const T* from = reinterpret_cast<const T*>(row.data());
  T* to = reinterpret_cast<T*>(dst);
  const std::size_t count = row.size() / sizeof(T);
  std::copy_n(from, std::min(stride, count), to);
  for (std::size_t i = stride; i < count; ++i) to[i] = static_cast<T>(from[i] - from[i - stride]);
}

void subtractNeighbours(unsigned bits, std::span<const std::byte> row, std::size_t stride, std::byte* dst)
{
  switch (bits) {
  case 8:
    return subtractNeighbours<std::uint8_t>(row, stride, dst);
  case 16:
    return subtractNeighbours<std::uint16_t>(row, stride, dst);
  case 32:
    return subtractNeighbours<std::uint32_t>(row, stride, dst);
  default:
    return subtractNeighbours<std::uint64_t>(row, stride, dst);
  }
}

/// Puts the highest bytes of all values of a row first, then the next ones.
void gatherBytes(std::span<const std::byte> row, std::size_t valueBytes, std::byte* dst)
{
  const std::size_t count = row.size() / valueBytes;
  for (std::size_t b = 0; b < valueBytes; ++b) {
    const std::size_t from = std::endian::native == std::endian::little ? valueBytes - 1 - b : b;
    for (std::size_t i = 0; i < count; ++i) dst[b * count + i] = row[i * valueBytes + from];
  }
}

void swapBytes(unsigned bits, std::span<std::byte> row)
{
  const auto count = static_cast<tmsize_t>(row.size() * 8 / bits);
  if (bits == 16) TIFFSwabArrayOfShort(reinterpret_cast<std::uint16_t*>(row.data()), count);
  if (bits == 24) TIFFSwabArrayOfTriples(reinterpret_cast<std::uint8_t*>(row.data()), count);
  if (bits == 32) TIFFSwabArrayOfLong(reinterpret_cast<std::uint32_t*>(row.data()), count);
  if (bits == 64) TIFFSwabArrayOfLong8(reinterpret_cast<std::uint64_t*>(row.data()), count);
}

/// Bytes that a whole stream unpacks to, or nothing when it is damaged, ends too early or holds more than
/// most.
std::optional<std::uint64_t> unpackedSize(std::span<std::byte> packed, std::uint64_t most)
{
  z_stream stream{};
  if (inflateInit(&stream) != Z_OK) throw std::bad_alloc();
  const std::unique_ptr<z_stream, decltype(&inflateEnd)> end(&stream, inflateEnd);
  std::vector<Bytef> part(1 << 16);
  std::uint64_t size = 0;
  int result = Z_OK;
  while (result == Z_OK && size <= most) {
    // zlib counts in 32 bits.
    const auto given = static_cast<uInt>(std::min<std::size_t>(packed.size(), 1u << 30));
    stream.next_in = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_in = given;
    stream.next_out = part.data();
    stream.avail_out = static_cast<uInt>(part.size());
    result = inflate(&stream, Z_NO_FLUSH);
    packed = packed.subspan(given - stream.avail_in);
    size += part.size() - stream.avail_out;
  }
  return result == Z_STREAM_END ? std::optional(size) : std::nullopt;
}

} // namespace

std::span<const std::byte> TiffDeflate::asPacked(const TiffPage& page, int predictor,
                                                 std::span<const std::byte> row)
{
  const bool swapped = TIFFIsByteSwapped(m_file.get()) != 0;
  m_row.resize(row.size());
  if (predictor == PREDICTOR_FLOATINGPOINT) {
    m_gathered.resize(row.size());
    gatherBytes(row, page.bits / 8u, m_gathered.data());
    subtractNeighbours(8, m_gathered, page.samplesPerPlane(), m_row.data());
    return m_row;
  }
  if (predictor == PREDICTOR_HORIZONTAL)
    subtractNeighbours(page.bits, row, page.samplesPerPlane(), m_row.data());
  else
    std::copy(row.begin(), row.end(), m_row.begin());
  if (swapped) swapBytes(page.bits, m_row);
  return m_row;
}

std::uint32_t TiffDeflate::checksum(const TiffPage& page, const TiffPieces& pieces,
                                    std::span<const std::byte> decoded)
{
  std::uint16_t predictor = PREDICTOR_NONE;
  TIFFGetFieldDefaulted(m_file.get(), TIFFTAG_PREDICTOR, &predictor);
  uLong sum = adler32_z(0, nullptr, 0);
  const auto add = [&sum](std::span<const std::byte> bytes) {
    sum = adler32_z(sum, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
  };
  if (predictor == PREDICTOR_NONE && !TIFFIsByteSwapped(m_file.get())) {
    add(decoded);
    return static_cast<std::uint32_t>(sum);
  }
  for (; !decoded.empty(); decoded = decoded.subspan(pieces.rowBytes))
    add(asPacked(page, predictor, decoded.first(pieces.rowBytes)));
  return static_cast<std::uint32_t>(sum);
}

std::uint32_t TiffDeflate::storedChecksum(std::uint32_t index) const
{
  std::array<std::byte, 4> bytes{};
  const std::uint64_t size = TIFFGetStrileByteCount(m_file.get(), index);
  if (size < bytes.size()) return 0; // no stream; the longer way will say so
  const std::uint64_t end = TIFFGetStrileOffset(m_file.get(), index) + size;
  readAt(TIFFFileno(m_file.get()), m_file.name(), end - bytes.size(), bytes);
  std::uint32_t sum = 0;
  for (const std::byte byte : bytes) sum = sum << 8 | std::to_integer<std::uint32_t>(byte);
  return sum;
}

bool TiffDeflate::unpacksTo(const TiffPage& page, std::uint32_t index, std::uint64_t size,
                            std::uint64_t orSize) const
{
  std::vector<std::byte> packed(TIFFGetStrileByteCount(m_file.get(), index));
  const auto bytes = static_cast<tmsize_t>(packed.size());
  const tmsize_t got = page.tiled ? TIFFReadRawTile(m_file.get(), index, packed.data(), bytes)
                                  : TIFFReadRawStrip(m_file.get(), index, packed.data(), bytes);
  if (got != bytes) return false;
  std::uint16_t order = FILLORDER_MSB2LSB;
  TIFFGetFieldDefaulted(m_file.get(), TIFFTAG_FILLORDER, &order);
  if (order == FILLORDER_LSB2MSB) TIFFReverseBits(reinterpret_cast<std::uint8_t*>(packed.data()), bytes);
  const auto unpacked = unpackedSize(packed, orSize);
  return unpacked == size || unpacked == orSize;
}

void TiffDeflate::check(const TiffPage& page, const TiffPieces& pieces, std::uint32_t index,
                        std::span<const std::byte> decoded)
{
  if (checksum(page, pieces, decoded) == storedChecksum(index)) return;
  // Other streams are rare: they are unpacked once more, and counted.
  std::uint32_t rows = pieces.height;
  if (!page.tiled) TIFFGetFieldDefaulted(m_file.get(), TIFFTAG_ROWSPERSTRIP, &rows);
  const std::uint64_t whole = rows * pieces.rowBytes;
  if (!unpacksTo(page, index, decoded.size(), std::max<std::uint64_t>(whole, decoded.size())))
    m_file.fail("its compressed data are damaged");
}

} // namespace io
