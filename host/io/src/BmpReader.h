#pragma once

#include "Format.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace io {

/// Reads a BMP picture as one slice: 24 and 32 bits a pixel, and 8 with a table of colours. A table of greys
/// gives grey, any other colours; the fourth byte of 32 bits means nothing. Packed pictures are refused.
class BmpReader final : public VolumeReader {
public:
  explicit BmpReader(const std::string& path);
  void readSlice(int k, void* dst) override;

private:
  void readHeader(std::uint64_t fileBytes);
  void readTable(std::uint64_t offset, std::uint32_t colours);
  void read(std::uint64_t offset, void* dst, std::size_t n);
  void placeRow(const unsigned char* row, std::byte* dst) const;
  [[noreturn]] void fail(const std::string& reason) const;

  std::string m_path;
  std::ifstream m_in;
  std::uint64_t m_offset = 0; ///< of the pixels
  std::uint64_t m_rowBytes = 0;
  unsigned m_bits = 0;
  bool m_fromTop = false;
  std::array<std::array<unsigned char, 4>, 256> m_table{}; ///< blue, green, red, nothing
};

} // namespace io
