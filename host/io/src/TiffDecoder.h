#pragma once

#include "TiffDeflate.h"

#include <cstddef>
#include <vector>

namespace io {

/// Decodes pages of a TIFF file that checkTiffPage() has found sound.
class TiffDecoder {
public:
  explicit TiffDecoder(const TiffFile& file) : m_file(file), m_deflate(file) {}

  /// Decodes rows of a page into values of a type in memory, colours into four. dst has room for them. Only
  /// the strips or tiles that hold these rows are read. Throws Error when data are damaged or missing.
  void decode(const TiffPage& page, std::size_t first, std::size_t rows, McPrimType type, void* dst);
  /// Widens a range by the values of a page of integers.
  void extendRange(const TiffPage& page, IntegerRange& range);

private:
  struct Rows {
    std::size_t first, count;
    std::size_t end() const noexcept { return first + count; }
  };
  /// The sink takes count pixels (or samples of one plane) of a decoded row, whose first pixel is (x, y).
  template <class Sink>
  void forEachRow(const TiffPage& page, Rows wanted, Sink sink);
  const std::byte* decodePiece(const TiffPage& page, const TiffPieces& pieces, std::uint32_t index);
  std::byte* unpacked(const TiffPage& page, const std::byte* row, std::size_t samples);

  const TiffFile& m_file;
  TiffDeflate m_deflate;
  std::vector<std::byte> m_piece;
  std::vector<std::byte> m_row;
};

} // namespace io
