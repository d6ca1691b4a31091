#include "PictureHeader.h"

#include "ByteStream.h"
#include "FileError.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <limits>
#include <string_view>
#include <vector>

namespace io {
namespace {

/// A picture file that is read here and there.
class PictureFile {
public:
  explicit PictureFile(const std::string& path)
    : m_path(path), m_size(fileSize(path)), m_in(path, std::ios::binary)
  {
  }
  std::uint64_t size() const noexcept { return m_size; }
  [[noreturn]] void fail(const std::string& reason) const { cannotRead(m_path, reason); }

  template <std::size_t n>
  std::array<unsigned char, n> bytes(std::uint64_t offset)
  {
    std::array<unsigned char, n> result;
    read(offset, result.data(), n);
    return result;
  }
  void read(std::uint64_t offset, void* dst, std::size_t n)
  {
    m_in.seekg(static_cast<std::streamoff>(offset));
    m_in.read(static_cast<char*>(dst), static_cast<std::streamsize>(n));
    if (!m_in) fail("it is cut off");
  }
  /// Checks a width and a height and takes them.
  void setSize(PictureHeader& header, std::int64_t width, std::int64_t height) const
  {
    constexpr std::int64_t largest = std::numeric_limits<int>::max();
    if (width < 1 || height < 1 || width > largest || height > largest) {
      fail("its size of " + std::to_string(width) + " x " + std::to_string(height) + " is impossible");
    }
    header.width = static_cast<int>(width);
    header.height = static_cast<int>(height);
  }
  /// Refuses a size that the data cannot fill.
  void checkData(const PictureHeader& header, std::uint64_t bitsPerPixel, std::uint64_t dataBytes,
                 std::uint64_t expansion) const
  {
    const std::uint64_t pixels =
        static_cast<std::uint64_t>(header.width) * static_cast<std::uint64_t>(header.height);
    if (pixels / 8 * bitsPerPixel / expansion > dataBytes) fail("it holds fewer data than its size needs");
  }

private:
  std::string m_path;
  std::uint64_t m_size;
  std::ifstream m_in;
};

std::uint32_t bigEndian(const unsigned char* b) noexcept
{
  return std::uint32_t{b[0]} << 24 | std::uint32_t{b[1]} << 16 | std::uint32_t{b[2]} << 8 | b[3];
}

std::uint32_t littleEndian(const unsigned char* b) noexcept
{
  return std::uint32_t{b[3]} << 24 | std::uint32_t{b[2]} << 16 | std::uint32_t{b[1]} << 8 | b[0];
}

std::uint64_t pngSamples(unsigned char colourType) noexcept
{
  switch (colourType) {
  case 2:
    return 3;
  case 4:
    return 2;
  case 6:
    return 4;
  default:
    return 1;
  }
}

PictureHeader readPng(PictureFile& file)
{
  PictureHeader header{.kind = PictureKind::Png};
  const auto start = file.bytes<26>(8);
  if (std::memcmp(&start[4], "IHDR", 4) != 0) file.fail("its header is damaged");
  file.setSize(header, bigEndian(&start[8]), bigEndian(&start[12]));
  std::uint64_t data = 0;
  for (std::uint64_t at = 8;;) {
    const auto chunk = file.bytes<8>(at);
    const std::uint64_t length = bigEndian(chunk.data());
    if (length > file.size() || at + 12 + length > file.size()) file.fail("it is cut off");
    if (std::memcmp(&chunk[4], "IDAT", 4) == 0) data += length;
    if (std::memcmp(&chunk[4], "IEND", 4) == 0) break;
    at += 12 + length;
  }
  constexpr std::uint64_t deflate = 1032;
  file.checkData(header, start[16] * pngSamples(start[17]), data, deflate);
  return header;
}

/// The end marker; nothing else in the coded data looks like it.
bool hasJpegEnd(PictureFile& file, std::uint64_t from)
{
  const std::uint64_t n = std::min<std::uint64_t>(file.size() - from, 1 << 16);
  std::vector<char> tail(n);
  file.read(file.size() - n, tail.data(), n);
  return std::string_view(tail.data(), tail.size()).find("\xFF\xD9") != std::string_view::npos;
}

/// Markers that begin a frame: all of C0 to CF but three that define tables.
bool isFrame(unsigned char marker) noexcept
{
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

void readJpegFrame(PictureFile& file, PictureHeader& header, std::uint64_t at)
{
  const auto frame = file.bytes<10>(at); // Marker, length, bits, height, width, components.
  file.setSize(header, frame[7] << 8 | frame[8], frame[5] << 8 | frame[6]);
  const int components = frame[9];
  if (frame[4] != 8) file.fail("JPEG pictures of " + std::to_string(frame[4]) + " bits are not supported");
  if (components != 1 && components != 3) {
    file.fail("JPEG pictures of " + std::to_string(components) +
              " colour components (CMYK) are not supported");
  }
  // 64 pixels of a component take at least one bit.
  file.checkData(header, static_cast<std::uint64_t>(8 * components), file.size(), 64 * 8 * 3);
}

PictureHeader readJpeg(PictureFile& file)
{
  PictureHeader header{.kind = PictureKind::Jpeg};
  for (std::uint64_t at = 2;;) {
    const auto segment = file.bytes<4>(at);
    if (segment[0] != 0xFF) file.fail("its header is damaged");
    if (segment[1] == 0xFF) { // Fill bytes may come before a marker.
      ++at;
      continue;
    }
    if (segment[1] == 0xDA || segment[1] == 0xD9) {
      if (!hasJpegEnd(file, at)) file.fail("it is cut off");
      break;
    }
    if (isFrame(segment[1])) readJpegFrame(file, header, at);
    at += 2 + std::uint64_t{static_cast<unsigned>(segment[2] << 8 | segment[3])};
  }
  if (header.width == 0) file.fail("its header is damaged");
  return header;
}

PictureHeader readBmp(PictureFile& file)
{
  PictureHeader header{.kind = PictureKind::Bmp};
  const auto start = file.bytes<54>(0);
  const std::uint64_t offset = littleEndian(&start[10]);
  if (littleEndian(&start[14]) < 40) file.fail("BMP pictures of OS/2 are not supported");
  const std::int64_t height = static_cast<std::int32_t>(littleEndian(&start[22]));
  file.setSize(header, static_cast<std::int32_t>(littleEndian(&start[18])), height < 0 ? -height : height);
  const unsigned bits = start[28] | static_cast<unsigned>(start[29]) << 8;
  const std::uint32_t compression = littleEndian(&start[30]);
  if ((bits != 8 && bits != 24 && bits != 32) || compression != 0) {
    file.fail("BMP pictures of " + std::to_string(bits) + " bits a pixel" + (compression ? ", packed," : "") +
              " are not supported");
  }
  if (littleEndian(&start[46]) > 256) file.fail("its table of colours is damaged");
  const std::uint64_t rowBytes = (static_cast<std::uint64_t>(header.width) * bits + 31) / 32 * 4;
  const std::uint64_t room = offset < file.size() ? file.size() - offset : 0;
  if (offset < 54 || room / rowBytes < static_cast<std::uint64_t>(header.height)) file.fail("it is cut off");
  header.alphaIsUnused = bits == 32;
  return header;
}

} // namespace

PictureKind pictureKindOf(std::span<const std::byte> head) noexcept
{
  const auto begins = [&](std::string_view text) {
    return head.size() >= text.size() && std::memcmp(head.data(), text.data(), text.size()) == 0;
  };
  if (begins("\x89PNG\r\n\x1A\n")) return PictureKind::Png;
  if (begins("\xFF\xD8\xFF")) return PictureKind::Jpeg;
  return begins("BM") ? PictureKind::Bmp : PictureKind::None;
}

PictureHeader PictureHeader::read(const std::string& path)
{
  PictureFile file(path);
  const auto head = file.bytes<8>(0);
  switch (pictureKindOf(std::as_bytes(std::span(head)))) {
  case PictureKind::Png:
    return readPng(file);
  case PictureKind::Jpeg:
    return readJpeg(file);
  case PictureKind::Bmp:
    return readBmp(file);
  default:
    file.fail("it is no picture");
  }
}

} // namespace io
