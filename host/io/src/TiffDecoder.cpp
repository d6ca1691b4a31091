#include "TiffDecoder.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace io {
namespace {

/// Samples of fewer than 16 bits that follow each other bit by bit, the highest bit of a byte first.
template <class T>
void unpackBits(const std::byte* src, std::size_t count, unsigned bits, std::byte* dst)
{
  unsigned held = 0;
  unsigned value = 0;
  for (std::size_t i = 0; i < count; ++i) {
    while (held < bits) {
      value = (value << 8) | std::to_integer<unsigned>(*src++);
      held += 8;
    }
    held -= bits;
    const T sample = static_cast<T>((value >> held) & ((1u << bits) - 1));
    std::memcpy(dst + i * sizeof sample, &sample, sizeof sample);
  }
}

/// 24 bits, which the library has put into the order of this machine.
void unpack24(const std::byte* src, std::size_t count, std::byte* dst)
{
  for (std::size_t i = 0; i < count; ++i, src += 3) {
    const auto byte = [&](int n) { return std::to_integer<std::uint32_t>(src[n]); };
    const std::uint32_t sample = std::endian::native == std::endian::little
                                     ? byte(0) | byte(1) << 8 | byte(2) << 16
                                     : byte(2) | byte(1) << 8 | byte(0) << 16;
    std::memcpy(dst + i * sizeof sample, &sample, sizeof sample);
  }
}

/// Puts a row of one plane, or of pixels of 3 or 4 samples, into rows of four.
void placeColour(const TiffPage& page, const std::byte* row, std::size_t count, std::uint16_t plane,
                 std::byte* dst)
{
  const std::size_t stride = page.samplesPerPlane();
  const std::uint16_t used = page.hasAlpha ? 4 : 3;
  for (std::uint16_t c = plane; c < used && c < plane + stride; ++c) {
    for (std::size_t i = 0; i < count; ++i) dst[4 * i + c] = row[i * stride + c - plane];
  }
}

void fillAlpha(std::byte* dst, std::size_t pixels)
{
  for (std::size_t i = 0; i < pixels; ++i) dst[4 * i + 3] = std::byte{255};
}

} // namespace

const std::byte* TiffDecoder::decodePiece(const TiffPage& page, const TiffPieces& pieces, std::uint32_t index)
{
  const std::uint64_t bytes = pieces.rowBytes * pieces.rowsIn(page, index % pieces.perPlane);
  m_piece.resize(bytes);
  const auto size = static_cast<tmsize_t>(bytes);
  m_file.forgetMessages();
  const tmsize_t got = page.tiled ? TIFFReadEncodedTile(m_file.get(), index, m_piece.data(), size)
                                  : TIFFReadEncodedStrip(m_file.get(), index, m_piece.data(), size);
  if (got < size || m_file.hasFailed()) m_file.fail("its data are damaged");
  if (isDeflate(page)) m_deflate.check(page, pieces, index, m_piece);
  return m_piece.data();
}

template <class Sink>
void TiffDecoder::forEachRow(const TiffPage& page, Rows wanted, Sink sink)
{
  if (!TIFFSetSubDirectory(m_file.get(), page.directory)) m_file.fail("a page of it is damaged");
  if (page.compression == COMPRESSION_JPEG)
    TIFFSetField(m_file.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
  const TiffPieces pieces = TiffPieces::of(m_file, page);
  const std::uint32_t columns = pieces.columns(page);
  for (std::uint32_t i = 0; i < pieces.perPlane * page.planes(); ++i) {
    const std::uint32_t inPlane = i % pieces.perPlane;
    const std::size_t x = std::size_t{inPlane % columns} * pieces.width;
    const std::size_t y = std::size_t{inPlane / columns} * pieces.height;
    if (y >= wanted.end() || y + pieces.height <= wanted.first) continue;
    const std::byte* data = decodePiece(page, pieces, i);
    const std::size_t count = std::min<std::size_t>(pieces.width, page.width - x);
    const std::size_t rows = std::min<std::size_t>(pieces.height, page.height - y);
    const auto plane = static_cast<std::uint16_t>(i / pieces.perPlane);
    const std::size_t from = std::max(y, wanted.first) - y, to = std::min(y + rows, wanted.end()) - y;
    for (std::size_t r = from; r < to; ++r) sink(data + r * pieces.rowBytes, x, y + r, count, plane);
  }
}

std::byte* TiffDecoder::unpacked(const TiffPage& page, const std::byte* row, std::size_t samples)
{
  m_row.resize(samples * sizeof(std::uint64_t));
  if (page.bits == 24)
    unpack24(row, samples, m_row.data());
  else if (page.bits < 8)
    unpackBits<std::uint8_t>(row, samples, page.bits, m_row.data());
  else if (page.isPacked())
    unpackBits<std::uint16_t>(row, samples, page.bits, m_row.data());
  else
    std::memcpy(m_row.data(), row, samples * page.bits / 8);
  return m_row.data();
}

void TiffDecoder::decode(const TiffPage& page, std::size_t first, std::size_t rows, McPrimType type,
                         void* dst)
{
  auto* out = static_cast<std::byte*>(dst);
  const StoredVoxels voxels = page.voxels(m_file.name());
  const bool colour = voxels.channels > 1;
  const std::size_t voxelBytes = colour ? 4 : mcSizeOf(type);
  if (colour) fillAlpha(out, page.width * rows);
  forEachRow(page, {first, rows},
             [&](const std::byte* row, std::size_t x, std::size_t y, std::size_t count, std::uint16_t plane) {
               std::byte* at = out + ((y - first) * page.width + x) * voxelBytes;
               if (colour)
                 placeColour(page, row, count, plane, at);
               else if (voxels.isPlain(type) && !page.isPacked())
                 std::memcpy(at, row, count * voxelBytes);
               else
                 voxels.convert(unpacked(page, row, count), count, type, at);
             });
}

void TiffDecoder::extendRange(const TiffPage& page, IntegerRange& range)
{
  const StoredVoxels voxels = page.voxels(m_file.name());
  const Rows all{0, page.height};
  forEachRow(page, all,
             [&](const std::byte* row, std::size_t, std::size_t, std::size_t count, std::uint16_t) {
               voxels.extendRange(unpacked(page, row, count), count, range);
             });
}

} // namespace io
