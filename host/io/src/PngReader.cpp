#include "PngReader.h"

#include "ByteStream.h"
#include "FileError.h"

#include <png.h>

#include <array>
#include <bit>
#include <csetjmp>
#include <cstdio>

namespace io {

/// The state of libpng. Its errors leave through a jump: nothing with a destructor may live in the functions
/// that call it.
struct PngReader::Decoder {
  png_structp png = nullptr;
  png_infop info = nullptr;
  std::FILE* file = nullptr;
  std::jmp_buf jump{};
  std::array<char, 200> message{};
  png_uint_32 width = 0, height = 0;
  int bits = 0, colour = 0;

  Decoder() = default;
  ~Decoder()
  {
    png_destroy_read_struct(&png, &info, nullptr);
    if (file) std::fclose(file);
  }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  [[noreturn]] static void stop(png_structp png, png_const_charp text)
  {
    auto* decoder = static_cast<Decoder*>(png_get_error_ptr(png));
    std::snprintf(decoder->message.data(), decoder->message.size(), "%s", text);
    std::longjmp(decoder->jump, 1);
  }

  /// Starts at the beginning of the file and reads what stands before the pixels. False for damaged data.
  bool readHeader()
  {
    std::rewind(file);
    png_destroy_read_struct(&png, &info, nullptr);
    png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, stop, [](png_structp, png_const_charp) {});
    info = png ? png_create_info_struct(png) : nullptr;
    if (!info || setjmp(jump)) return false;
    png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_crc_action(png, PNG_CRC_ERROR_QUIT, PNG_CRC_ERROR_QUIT);
    png_init_io(png, file);
    png_read_info(png, info);
    png_get_IHDR(png, info, &width, &height, &bits, &colour, nullptr, nullptr, nullptr);
    return true;
  }
  /// Decodes all rows, one value or four a pixel, 16 bits in the order of this machine. False for damaged
  /// data.
  bool readRows(std::byte* dst)
  {
    if (setjmp(jump)) return false;
    png_set_packing(png); // Values of less than a byte come in a byte of their own, unscaled.
    if (colour == PNG_COLOR_TYPE_PALETTE) {
      png_set_palette_to_rgb(png);
      if (png_get_valid(png, info, PNG_INFO_tRNS)) png_set_tRNS_to_alpha(png);
    }
    if (colour != PNG_COLOR_TYPE_GRAY) png_set_filler(png, 255, PNG_FILLER_AFTER);
    if (bits == 16 && std::endian::native == std::endian::little) png_set_swap(png);
    const int passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    const std::size_t rowBytes = png_get_rowbytes(png, info);
    for (int pass = 0; pass < passes; ++pass)
      for (png_uint_32 y = 0; y < height; ++y)
        png_read_row(png, reinterpret_cast<png_bytep>(dst + y * rowBytes), nullptr);
    png_read_end(png, nullptr);
    return true;
  }
};

PngReader::PngReader(const std::string& path) : m_path(path), m_decoder(std::make_unique<Decoder>())
{
  m_decoder->file = std::fopen(path.c_str(), "rb");
  if (!m_decoder->file) fail("it cannot be opened");
  if (!m_decoder->readHeader()) fail(m_decoder->message.data());
  m_info.format = "PNG";
  m_info.shape.dims = {static_cast<int>(m_decoder->width), static_cast<int>(m_decoder->height), 1};
  findType();
  checkSize();
}

PngReader::~PngReader() = default;

void PngReader::fail(const std::string& reason) const { cannotRead(m_path, reason); }

void PngReader::findType()
{
  const bool wide = m_decoder->bits == 16;
  const auto nameOfColour = [this] {
    switch (m_decoder->colour) {
    case PNG_COLOR_TYPE_GRAY_ALPHA:
      return "grey with alpha ";
    case PNG_COLOR_TYPE_RGB_ALPHA:
      return "RGBA ";
    case PNG_COLOR_TYPE_GRAY:
      return "";
    default:
      return "RGB ";
    }
  };
  m_info.storedType = std::string(nameOfColour()) + (wide ? "uint16" : "uint8");
  const bool grey = m_decoder->colour == PNG_COLOR_TYPE_GRAY;
  if (m_decoder->colour == PNG_COLOR_TYPE_GRAY_ALPHA || (wide && !grey))
    fail("pixels of the type " + m_info.storedType + " are not supported");
  m_info.shape.numDataVars = grey ? 1 : 4;
  m_info.shape.primType = wide ? McPrimType::UInt16 : McPrimType::UInt8;
}

void PngReader::checkSize() const
{
  constexpr std::uint64_t mostPacked = 1032; // What deflate can do at best.
  const std::uint64_t rowBytes = png_get_rowbytes(m_decoder->png, m_decoder->info);
  if (rowBytes * m_decoder->height / mostPacked > fileSize(m_path))
    fail("it holds fewer data than its size needs");
}

void PngReader::readSlice(int, void* dst)
{
  const png_uint_32 width = m_decoder->width;
  const png_uint_32 height = m_decoder->height;
  const int bits = m_decoder->bits;
  const int colour = m_decoder->colour;
  if (!m_decoder->readHeader()) fail(m_decoder->message.data());
  const bool same = width == m_decoder->width && height == m_decoder->height && bits == m_decoder->bits &&
                    colour == m_decoder->colour;
  if (!same) fail("it has changed since it was looked at");
  if (!m_decoder->readRows(static_cast<std::byte*>(dst))) fail(m_decoder->message.data());
}

} // namespace io
