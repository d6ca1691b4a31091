#pragma once

#include "Format.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace io {

/// Reads a PNG picture as one slice: grey of 1 to 16 bits with its stored values, colours of 8 bits and
/// palettes as four values. A colour that the file declares transparent is read like any other.
///
/// With zlib alone: the decoder of ITK ends the program when a header is damaged.
class PngReader final : public VolumeReader {
public:
  explicit PngReader(const std::string& path);
  void readSlice(int k, void* dst) override;

private:
  enum Colour : unsigned char { Grey = 0, Rgb = 2, Palette = 3, GreyAlpha = 4, Rgba = 6 };
  struct Chunk {
    std::uint64_t offset = 0; ///< of its data
    std::uint32_t length = 0;
    std::array<char, 4> type{};
    bool is(std::string_view name) const noexcept { return std::string_view(type.data(), 4) == name; }
  };
  /// Every how many pixels a pass of an interlaced picture has one, and where it begins.
  struct Pass {
    std::size_t x, y, dx, dy;
  };
  friend class PngInflater;

  Chunk chunkAt(std::uint64_t offset);
  /// The data of a chunk, checked against its sum.
  std::vector<unsigned char> data(const Chunk& chunk);
  void readHeader(const Chunk& chunk);
  void readChunks();
  void findType();
  void checkSize() const;
  std::size_t samples() const noexcept;
  std::size_t rowBytes(std::size_t pixels) const noexcept { return (pixels * samples() * m_bits + 7) / 8; }
  void readPass(class PngInflater& inflater, const Pass& pass, std::byte* dst) const;
  void placePixel(const unsigned char* row, std::size_t i, std::byte* dst) const;
  [[noreturn]] void fail(const std::string& reason) const;

  std::string m_path;
  std::uint64_t m_fileBytes;
  std::ifstream m_in;
  unsigned m_bits = 8; ///< of a sample
  Colour m_colour = Grey;
  bool m_interlaced = false;
  std::vector<std::array<unsigned char, 4>> m_palette;
  std::vector<Chunk> m_pixels;
};

} // namespace io
