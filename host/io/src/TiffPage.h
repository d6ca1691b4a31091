#pragma once

#include "Format.h"
#include "StoredVoxels.h"
#include "TiffFile.h"

#include <cstdint>
#include <string>

namespace io {

/// One page of a TIFF file as its directory describes it.
struct TiffPage {
  std::uint64_t directory = 0; ///< offset in the file
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint16_t samples = 1;
  std::uint16_t bits = 1;
  std::uint16_t sampleFormat = SAMPLEFORMAT_UINT;
  std::uint16_t photometric = PHOTOMETRIC_MINISBLACK;
  std::uint16_t compression = COMPRESSION_NONE;
  bool planar = false; ///< the samples of a pixel lie apart
  bool tiled = false;
  bool hasAlpha = false;
  bool isExtra = false; ///< a thumbnail or a mask of another page

  /// What its samples are in memory once they are whole bytes: 1 to 8 bits are uint8, 9 to 16 uint16, 24
  /// bits uint32, all with their stored values. Throws Error for what is not supported.
  StoredVoxels voxels(const std::string& fileName) const;
  /// True for samples that do not begin at bytes or whose bytes are no type's.
  bool isPacked() const noexcept { return bits < 8 || (bits > 8 && bits < 16) || bits == 24; }
  bool isPalette() const noexcept { return photometric == PHOTOMETRIC_PALETTE; }
  bool isMinWhite() const noexcept { return photometric == PHOTOMETRIC_MINISWHITE; }
  /// Samples that lie side by side.
  std::uint16_t samplesPerPlane() const noexcept { return planar ? std::uint16_t{1} : samples; }
  std::uint16_t planes() const noexcept { return planar ? samples : std::uint16_t{1}; }

  /// The page that the file stands at.
  static TiffPage current(const TiffFile& file);
};

/// Strips and tiles alike: pieces of a page that are decoded as a whole.
struct TiffPieces {
  std::uint32_t width = 0;  ///< of a piece
  std::uint32_t height = 0; ///< of a piece; the last strip has fewer rows
  std::uint32_t perPlane = 0;
  std::uint64_t rowBytes = 0; ///< of a row of a piece, decoded

  static TiffPieces of(const TiffFile& file, const TiffPage& page);
  std::uint32_t columns(const TiffPage& page) const noexcept { return (page.width - 1) / width + 1; }
  /// Rows that are stored in piece i of a plane.
  std::uint32_t rowsIn(const TiffPage& page, std::uint32_t i) const noexcept;
};

/// Prepares the decoder for the current page and checks that its sizes are possible and that all of its data
/// lie within the file. Throws Error.
void checkTiffPage(const TiffFile& file, const TiffPage& page, std::uint64_t fileBytes);

/// Bytes that one byte of compressed data can stand for at most.
std::uint64_t tiffExpansion(std::uint16_t compression) noexcept;

} // namespace io
