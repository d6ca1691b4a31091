#include "PngWriter.h"

#include "FileError.h"
#include "SliceWriter.h"

#include <png.h>

#include <bit>
#include <csetjmp>
#include <exception>

namespace io {
namespace {

/// The state of libpng. Its errors leave through a jump: nothing with a destructor may live in the functions
/// that call it. An exception of the file must not pass through its C code; it waits here.
struct Encoder {
  explicit Encoder(OutputFile& output) : file(output)
  {
    png = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, stop, [](png_structp, png_const_charp) {});
    info = png ? png_create_info_struct(png) : nullptr;
  }
  ~Encoder() { png_destroy_write_struct(&png, &info); }
  Encoder(const Encoder&) = delete;
  Encoder& operator=(const Encoder&) = delete;

  [[noreturn]] static void stop(png_structp png, png_const_charp)
  {
    std::longjmp(static_cast<Encoder*>(png_get_error_ptr(png))->jump, 1);
  }
  static void store(png_structp png, png_bytep bytes, std::size_t n)
  {
    auto* encoder = static_cast<Encoder*>(png_get_io_ptr(png));
    try {
      encoder->file.write(std::as_bytes(std::span(bytes, n)));
      return;
    } catch (...) {
      encoder->failure = std::current_exception();
    }
    png_error(png, "");
  }

  bool write(const ZxLatticeShape& shape, const std::byte* slice)
  {
    if (!info || setjmp(jump)) return false;
    constexpr int quick = 4;
    const std::size_t rowBytes = static_cast<std::size_t>(shape.dims.width) * shape.voxelBytes();
    png_set_write_fn(png, this, store, nullptr);
    png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_compression_level(png, quick);
    png_set_filter(png, 0, PNG_FILTER_UP); // Differences to the row above pack better than the values.
    png_set_IHDR(png, info, static_cast<png_uint_32>(shape.dims.width),
                 static_cast<png_uint_32>(shape.dims.height), static_cast<int>(8 * mcSizeOf(shape.primType)),
                 shape.numDataVars == 4 ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    if (std::endian::native == std::endian::little) png_set_swap(png); // of values of 16 bits
    for (int y = 0; y < shape.dims.height; ++y)
      png_write_row(png, reinterpret_cast<png_const_bytep>(slice) + static_cast<std::size_t>(y) * rowBytes);
    png_write_end(png, nullptr);
    return true;
  }

  OutputFile& file;
  png_structp png = nullptr;
  png_infop info = nullptr;
  std::jmp_buf jump{};
  std::exception_ptr failure;
};

} // namespace

void writePng(const ZxLatticeShape& shape, std::span<const std::byte> slice, const std::string& target,
              const std::string& path)
{
  OutputFile file(path, target);
  Encoder encoder(file);
  if (!encoder.write(shape, slice.data())) {
    if (encoder.failure) std::rethrow_exception(encoder.failure);
    cannotWrite(target, "it could not be encoded");
  }
  file.close();
}

} // namespace io
