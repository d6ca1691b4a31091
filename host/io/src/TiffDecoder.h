#pragma once

#include "TiffPage.h"

#include <cstddef>
#include <vector>

namespace io {

/// Decodes pages of a TIFF file that checkTiffPage() has found sound.
class TiffDecoder {
public:
  explicit TiffDecoder(const TiffFile& file) : m_file(file) {}

  /// Decodes a page into rows of values of a type in memory, colours into four. dst has room for all of them.
  /// Throws Error when data are damaged or missing.
  void decode(const TiffPage& page, McPrimType type, void* dst);
  /// Widens a range by the values of a page of integers.
  void extendRange(const TiffPage& page, IntegerRange& range);

private:
  /// Takes count pixels (or samples of one plane) of a decoded row, whose first pixel is (x, y).
  template <class Sink>
  void forEachRow(const TiffPage& page, Sink sink);
  const std::byte* decodePiece(const TiffPage& page, const TiffPieces& pieces, std::uint32_t index);
  std::byte* unpacked(const TiffPage& page, const std::byte* row, std::size_t samples);

  const TiffFile& m_file;
  std::vector<std::byte> m_piece;
  std::vector<std::byte> m_row;
};

} // namespace io
