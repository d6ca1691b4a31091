#include "TiffPage.h"

#include "FileError.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace io {
namespace {

template <class T>
T field(TIFF* tiff, ttag_t tag, T fallback)
{
  T value = fallback;
  return TIFFGetFieldDefaulted(tiff, tag, &value) ? value : fallback;
}

const char* formatName(std::uint16_t sampleFormat)
{
  switch (sampleFormat) {
  case SAMPLEFORMAT_INT:
    return "int";
  case SAMPLEFORMAT_IEEEFP:
    return "float";
  case SAMPLEFORMAT_COMPLEXINT:
  case SAMPLEFORMAT_COMPLEXIEEEFP:
    return "complex ";
  default:
    return "uint";
  }
}

const char* photometricName(std::uint16_t photometric)
{
  switch (photometric) {
  case PHOTOMETRIC_MINISWHITE:
  case PHOTOMETRIC_MINISBLACK:
    return "grey";
  case PHOTOMETRIC_RGB:
    return "RGB";
  case PHOTOMETRIC_PALETTE:
    return "palette";
  case PHOTOMETRIC_SEPARATED:
    return "CMYK";
  case PHOTOMETRIC_YCBCR:
    return "YCbCr";
  case PHOTOMETRIC_CIELAB:
  case PHOTOMETRIC_ICCLAB:
  case PHOTOMETRIC_ITULAB:
    return "Lab";
  case PHOTOMETRIC_LOGL:
  case PHOTOMETRIC_LOGLUV:
    return "LogLuv";
  default:
    return "unknown colour space";
  }
}

std::optional<StoredType> storedType(std::uint16_t sampleFormat, std::uint16_t bits)
{
  switch (sampleFormat) {
  case SAMPLEFORMAT_UINT:
  case SAMPLEFORMAT_VOID:
    if (bits >= 1 && bits <= 16) return bits <= 8 ? StoredType::UInt8 : StoredType::UInt16;
    if (bits == 24 || bits == 32) return StoredType::UInt32;
    return bits == 64 ? std::optional(StoredType::UInt64) : std::nullopt;
  case SAMPLEFORMAT_INT:
    if (bits == 8) return StoredType::Int8;
    if (bits == 16) return StoredType::Int16;
    if (bits == 32) return StoredType::Int32;
    return bits == 64 ? std::optional(StoredType::Int64) : std::nullopt;
  case SAMPLEFORMAT_IEEEFP:
    if (bits == 16) return StoredType::Half;
    if (bits == 32) return StoredType::Float;
    return bits == 64 ? std::optional(StoredType::Double) : std::nullopt;
  default:
    return std::nullopt;
  }
}

bool isGrey(const TiffPage& page)
{
  return page.samples == 1 && (page.isMinWhite() || page.photometric == PHOTOMETRIC_MINISBLACK);
}

/// Red, green, blue of 8 bits with or without a fourth sample, as they come from the decoder.
bool isColour(const TiffPage& page)
{
  const bool decodedToRgb = page.photometric == PHOTOMETRIC_YCBCR && page.compression == COMPRESSION_JPEG;
  return (page.photometric == PHOTOMETRIC_RGB || decodedToRgb) && page.bits == 8 &&
         (page.sampleFormat == SAMPLEFORMAT_UINT || page.sampleFormat == SAMPLEFORMAT_VOID) &&
         (page.samples == 3 || page.samples == 4);
}

bool readAlpha(TIFF* tiff, std::uint16_t samples)
{
  std::uint16_t count = 0;
  std::uint16_t* kinds = nullptr;
  if (samples != 4 || !TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds)) return false;
  return count == 1 && (kinds[0] == EXTRASAMPLE_ASSOCALPHA || kinds[0] == EXTRASAMPLE_UNASSALPHA);
}

/// Checks one strip or tile that decodes to so many bytes.
void checkPiece(const TiffFile& file, std::uint32_t index, std::uint64_t decoded, std::uint16_t compression,
                std::uint64_t fileBytes)
{
  int error = 0;
  const std::uint64_t offset = TIFFGetStrileOffsetWithErr(file.get(), index, &error);
  const std::uint64_t bytes = error ? 0 : TIFFGetStrileByteCountWithErr(file.get(), index, &error);
  if (error || offset == 0 || bytes == 0) file.fail("a part of its data is missing");
  if (offset > fileBytes || bytes > fileBytes - offset) file.fail("it is cut off, data lie beyond its end");
  if (decoded / tiffExpansion(compression) > bytes) file.fail("it holds fewer data than its size needs");
}

} // namespace

StoredVoxels TiffPage::voxels(const std::string& fileName) const
{
  if (isColour(*this)) return {.type = StoredType::UInt8, .channels = hasAlpha ? 4 : 3};
  const auto type = storedType(sampleFormat, bits);
  if (type && (isGrey(*this) || (isPalette() && samples == 1 && bits <= 16))) return {.type = *type};
  std::string text = std::string(photometricName(photometric)) + ' ' + formatName(sampleFormat);
  text += std::to_string(bits);
  if (samples != 1 && samples != 3) text += " with " + std::to_string(samples) + " samples a pixel";
  cannotRead(fileName, "pixels of the type " + text + " are not supported");
}

TiffPage TiffPage::current(const TiffFile& file)
{
  TIFF* tiff = file.get();
  TiffPage page;
  page.directory = TIFFCurrentDirOffset(tiff);
  page.width = field<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH, 0);
  page.height = field<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH, 0);
  page.samples = field<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  page.bits = field<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  page.sampleFormat = field<std::uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
  page.photometric = field<std::uint16_t>(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
  page.compression = field<std::uint16_t>(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  const auto planar = field<std::uint16_t>(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  page.planar = planar == PLANARCONFIG_SEPARATE && page.samples > 1;
  page.tiled = TIFFIsTiled(tiff) != 0;
  page.hasAlpha = readAlpha(tiff, page.samples);
  const auto subfile = field<std::uint32_t>(tiff, TIFFTAG_SUBFILETYPE, 0);
  page.isExtra = (subfile & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK)) != 0;
  return page;
}

std::uint32_t TiffPieces::rowsIn(const TiffPage& page, std::uint32_t i) const noexcept
{
  if (page.tiled) return height;
  return std::min(height, page.height - i * height);
}

TiffPieces TiffPieces::of(const TiffFile& file, const TiffPage& page)
{
  TiffPieces pieces;
  if (page.tiled) {
    pieces.width = field<std::uint32_t>(file.get(), TIFFTAG_TILEWIDTH, 0);
    pieces.height = field<std::uint32_t>(file.get(), TIFFTAG_TILELENGTH, 0);
  } else {
    pieces.width = page.width;
    pieces.height =
        std::min(page.height, field<std::uint32_t>(file.get(), TIFFTAG_ROWSPERSTRIP, page.height));
  }
  if (pieces.width == 0 || pieces.height == 0) file.fail("its strips or tiles have no size");
  pieces.rowBytes = (std::uint64_t{pieces.width} * page.samplesPerPlane() * page.bits + 7) / 8;
  const std::uint64_t count = std::uint64_t{pieces.columns(page)} * ((page.height - 1) / pieces.height + 1);
  const std::uint32_t stored = page.tiled ? TIFFNumberOfTiles(file.get()) : TIFFNumberOfStrips(file.get());
  if (count * page.planes() != stored) file.fail("the number of its strips or tiles does not fit its size");
  pieces.perPlane = static_cast<std::uint32_t>(count);
  return pieces;
}

std::uint64_t tiffExpansion(std::uint16_t compression) noexcept
{
  switch (compression) {
  case COMPRESSION_NONE:
    return 1;
  case COMPRESSION_PACKBITS:
    return 64;
  case COMPRESSION_ADOBE_DEFLATE:
  case COMPRESSION_DEFLATE:
    return 1032;
  case COMPRESSION_JPEG:
    return 512; // A block of 64 values takes at least one bit.
  case COMPRESSION_LZW:
    return 2731; // 4096 bytes from a code of 12 bits.
  default:
    return 1 << 16;
  }
}

void checkTiffPage(const TiffFile& file, const TiffPage& page, std::uint64_t fileBytes)
{
  constexpr auto largest = static_cast<std::uint32_t>(std::numeric_limits<int>::max());
  if (page.width == 0 || page.height == 0 || page.width > largest || page.height > largest) {
    file.fail("its size of " + std::to_string(page.width) + " x " + std::to_string(page.height) +
              " is impossible");
  }
  if (page.compression == COMPRESSION_JPEG)
    TIFFSetField(file.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
  if (!TIFFIsCODECConfigured(page.compression) || page.compression == COMPRESSION_OJPEG) {
    file.fail("its compression (number " + std::to_string(page.compression) + ") is not supported");
  }
  const TiffPieces pieces = TiffPieces::of(file, page);
  const auto rowBytes = page.tiled ? TIFFTileRowSize64(file.get()) : TIFFScanlineSize64(file.get());
  if (rowBytes != pieces.rowBytes) file.fail("the layout of its rows is not supported");
  for (std::uint32_t i = 0; i < pieces.perPlane * page.planes(); ++i) {
    const std::uint64_t rows = pieces.rowsIn(page, i % pieces.perPlane);
    checkPiece(file, i, rows * pieces.rowBytes, page.compression, fileBytes);
  }
}

} // namespace io
