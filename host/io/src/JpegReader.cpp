#include "JpegReader.h"

#include "ByteStream.h"
#include "FileError.h"

#include <cstddef>

// These need the declarations above.
#include <jerror.h>
#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstring>

namespace io {

/// The state of libjpeg. Its errors leave through a jump: nothing with a destructor may live in the functions
/// that call it.
struct JpegReader::Decoder {
  jpeg_error_mgr errors{}; // First: libjpeg hands its address back.
  std::jmp_buf jump{};
  std::array<char, JMSG_LENGTH_MAX> message{};
  jpeg_decompress_struct state{};
  std::FILE* file = nullptr;

  Decoder()
  {
    state.err = jpeg_std_error(&errors);
    errors.error_exit = [](j_common_ptr common) { stop(common); };
    errors.emit_message = [](j_common_ptr common, int level) {
      // Bytes between two parts mean nothing; any other warning says that pixels were made up.
      if (level < 0 && common->err->msg_code != JWRN_EXTRANEOUS_DATA) stop(common);
    };
    errors.output_message = [](j_common_ptr) {};
  }
  ~Decoder()
  {
    jpeg_destroy_decompress(&state);
    if (file) std::fclose(file);
  }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  [[noreturn]] static void stop(j_common_ptr common)
  {
    auto* decoder = reinterpret_cast<Decoder*>(common->err);
    common->err->format_message(common, decoder->message.data());
    std::longjmp(decoder->jump, 1);
  }

  /// Starts at the beginning of the file and reads the header. False for damaged data.
  bool readHeader()
  {
    std::rewind(file);
    if (setjmp(jump)) return false;
    jpeg_destroy_decompress(&state);
    jpeg_create_decompress(&state);
    // Progressive pictures are kept in memory as a whole before they are decoded.
    constexpr long memory = 1L << 30;
    state.mem->max_memory_to_use = memory;
    jpeg_stdio_src(&state, file);
    jpeg_read_header(&state, TRUE);
    return true;
  }
  /// Decodes rows of 1 or 3 values a pixel. False for damaged data.
  bool readRows(std::byte* dst, std::size_t rowBytes)
  {
    if (setjmp(jump)) return false;
    state.out_color_space = state.num_components == 1 ? JCS_GRAYSCALE : JCS_RGB;
    state.dct_method = JDCT_ISLOW;
    jpeg_start_decompress(&state);
    while (state.output_scanline < state.output_height) {
      auto* row = reinterpret_cast<JSAMPROW>(dst + state.output_scanline * rowBytes);
      jpeg_read_scanlines(&state, &row, 1);
    }
    jpeg_finish_decompress(&state);
    return true;
  }
};

JpegReader::JpegReader(const std::string& path) : m_path(path), m_decoder(std::make_unique<Decoder>())
{
  const std::uint64_t fileBytes = fileSize(path);
  m_decoder->file = std::fopen(path.c_str(), "rb");
  if (!m_decoder->file) fail("it cannot be opened");
  const jpeg_decompress_struct& state = m_decoder->state;
  if (!m_decoder->readHeader()) fail(m_decoder->message.data());
  const int components = state.num_components;
  if (components != 1 && components != 3) {
    fail("pixels of " + std::to_string(components) + " colour components (CMYK) are not supported");
  }
  // A block of 64 pixels of a component takes at least one bit.
  const std::uint64_t blocks = std::uint64_t{state.image_width} * state.image_height / 64;
  if (blocks / 8 > fileBytes) fail("it holds fewer data than its size needs");
  m_info.format = "JPEG";
  m_info.storedType = components == 3 ? "RGB uint8" : "uint8";
  m_info.shape.dims = {static_cast<int>(state.image_width), static_cast<int>(state.image_height), 1};
  m_info.shape.numDataVars = components == 3 ? 4 : 1;
}

JpegReader::~JpegReader() = default;

void JpegReader::fail(const std::string& reason) const { cannotRead(m_path, reason); }

void JpegReader::readSlice(int, void* dst)
{
  if (!m_decoder->readHeader()) fail(m_decoder->message.data());
  const jpeg_decompress_struct& state = m_decoder->state;
  const ZxDims& dims = m_info.shape.dims;
  const bool same = state.image_width == static_cast<JDIMENSION>(dims.width) &&
                    state.image_height == static_cast<JDIMENSION>(dims.height) &&
                    (state.num_components == 3) == (m_info.shape.numDataVars == 4);
  if (!same) fail("it has changed since it was looked at");
  auto* out = static_cast<std::byte*>(dst);
  const std::size_t width = state.image_width;
  if (!m_decoder->readRows(out, width * m_info.shape.voxelBytes())) fail(m_decoder->message.data());
  if (m_info.shape.numDataVars != 4) return;
  for (std::size_t y = 0; y < state.image_height; ++y) {
    std::byte* row = out + y * width * 4;
    // From the end: three values become four in place.
    for (std::size_t x = width; x-- > 0;) {
      std::memmove(row + 4 * x, row + 3 * x, 3);
      row[4 * x + 3] = std::byte{255};
    }
  }
}

} // namespace io
