#pragma once

#include "TiffPage.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace io {

/// True for pages whose strips or tiles are deflate streams.
inline bool isDeflate(const TiffPage& page) noexcept
{
  return page.compression == COMPRESSION_ADOBE_DEFLATE || page.compression == COMPRESSION_DEFLATE;
}

/// Finds deflate streams that hold something else than what the library took from them: it stops where its
/// memory is full, so that data behind and a wrong checksum go unseen.
class TiffDeflate {
public:
  explicit TiffDeflate(const TiffFile& file) : m_file(file) {}

  /// Throws Error unless the stream of a strip or tile is whole and unpacks to as many bytes as were decoded.
  /// A stream that holds the rows of a whole strip where the page ends earlier is sound, too: some programs
  /// write the last strip like that. The page is the current one of the file.
  void check(const TiffPage& page, const TiffPieces& pieces, std::uint32_t index,
             std::span<const std::byte> decoded);

private:
  /// The checksum of the decoded bytes in the form that was packed: before differences were added up and
  /// bytes were put into the order of this machine.
  std::uint32_t checksum(const TiffPage& page, const TiffPieces& pieces, std::span<const std::byte> decoded);
  /// A row in that form.
  std::span<const std::byte> asPacked(const TiffPage& page, int predictor, std::span<const std::byte> row);
  /// The checksum at the end of the stream, should the stream end with the strip or tile.
  std::uint32_t storedChecksum(std::uint32_t index) const;
  /// True when the stream is whole and unpacks to one of two sizes; orSize is at least size.
  bool unpacksTo(const TiffPage& page, std::uint32_t index, std::uint64_t size, std::uint64_t orSize) const;

  const TiffFile& m_file;
  std::vector<std::byte> m_row;
  std::vector<std::byte> m_gathered;
};

} // namespace io
