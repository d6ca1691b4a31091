#include "TiffWriter.h"

#include "Geometry.h"
#include "SliceWriter.h"
#include "TiffFile.h"
#include "TiffRemains.h"

#include <algorithm>
#include <cmath>

namespace io {
namespace {

/// Strips of about a megabyte: readers that look at a part of a slice need not read all of it.
constexpr std::size_t stripBytes = std::size_t{1} << 20;

TiffFile::Mode modeFor(const ZxLatticeShape& shape)
{
  // Directories and tables of strips take less than 4 KB a page, and 64 KB go to the description.
  constexpr std::uint64_t limit = (std::uint64_t{1} << 32) - (1 << 16);
  const std::uint64_t strips = shape.bytes() / stripBytes * 16;
  const std::uint64_t bytes = shape.bytes() + strips + static_cast<std::uint64_t>(shape.dims.slices) * 4096;
  return bytes > limit ? TiffFile::Mode::WriteBig : TiffFile::Mode::Write;
}

std::uint16_t sampleFormat(McPrimType type)
{
  switch (type) {
  case McPrimType::Int16:
  case McPrimType::Int32:
    return SAMPLEFORMAT_INT;
  case McPrimType::Float:
  case McPrimType::Double:
    return SAMPLEFORMAT_IEEEFP;
  default:
    return SAMPLEFORMAT_UINT;
  }
}

/// A unit in ASCII on one line: other characters are written as \uXXXX where ImageJ knows them.
std::string asciiUnit(std::string unit)
{
  for (const char* micro : {"\u00B5", "\u03BC"}) {
    const std::size_t at = unit.find(micro);
    if (at != std::string::npos) unit.replace(at, 2, "\\u00B5");
  }
  if (const std::size_t at = unit.find("\u00C5"); at != std::string::npos) unit.replace(at, 2, "\\u00C5");
  std::erase_if(unit, [](char c) { return c < ' ' || c > '~'; });
  return unit;
}

std::string description(const ZxFileGeometry& geometry, int slices)
{
  std::string text = "ImageJ=1.53t\n";
  if (slices > 1) text += "images=" + std::to_string(slices) + "\nslices=" + std::to_string(slices) + '\n';
  if (!geometry.unit.empty()) text += "unit=" + asciiUnit(geometry.unit) + '\n';
  return text + "spacing=" + exactText(geometry.voxelSize[2]) + "\nloop=false\n";
}

/// The rows of a strip.
std::uint32_t stripRows(const ZxLatticeShape& shape)
{
  const std::size_t rowBytes = static_cast<std::size_t>(shape.dims.width) * shape.voxelBytes();
  const auto height = static_cast<std::size_t>(shape.dims.height);
  return static_cast<std::uint32_t>(std::clamp<std::size_t>(stripBytes / rowBytes, 1, height));
}

/// The fields of whole numbers of a page, except those that follow from them.
std::vector<TiffField> pageFields(const ZxLatticeShape& shape)
{
  const auto samples = static_cast<std::size_t>(shape.numDataVars);
  const bool colour = shape.numDataVars == 4;
  std::vector<TiffField> fields = {
      {TIFFTAG_SUBFILETYPE, static_cast<std::uint64_t>(shape.dims.slices > 1 ? FILETYPE_PAGE : 0)},
      {TIFFTAG_IMAGEWIDTH, static_cast<std::uint64_t>(shape.dims.width)},
      {TIFFTAG_IMAGELENGTH, static_cast<std::uint64_t>(shape.dims.height)},
      {TIFFTAG_SAMPLESPERPIXEL, samples},
      {TIFFTAG_BITSPERSAMPLE, 8 * mcSizeOf(shape.primType), samples},
      {TIFFTAG_SAMPLEFORMAT, sampleFormat(shape.primType), samples},
      {TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG},
      {TIFFTAG_COMPRESSION, COMPRESSION_NONE},
      {TIFFTAG_PHOTOMETRIC, static_cast<std::uint64_t>(colour ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK)},
      {TIFFTAG_ROWSPERSTRIP, stripRows(shape)},
      {TIFFTAG_RESOLUTIONUNIT, RESUNIT_NONE},
  };
  if (colour) fields.push_back({TIFFTAG_EXTRASAMPLES, EXTRASAMPLE_UNASSALPHA});
  return fields;
}

void setPageFields(TIFF* tiff, const ZxLatticeShape& shape, const ZxFileGeometry& geometry)
{
  for (const TiffField& field : pageFields(shape)) {
    const auto value = static_cast<std::uint16_t>(field.value);
    if (field.tag == TIFFTAG_EXTRASAMPLES)
      TIFFSetField(tiff, field.tag, 1, &value);
    else
      TIFFSetField(tiff, field.tag, static_cast<std::uint32_t>(field.value));
  }
  TIFFSetField(tiff, TIFFTAG_XRESOLUTION, 1.0 / geometry.voxelSize[0]);
  TIFFSetField(tiff, TIFFTAG_YRESOLUTION, 1.0 / geometry.voxelSize[1]);
}

void writePixels(const TiffFile& file, const ZxLatticeShape& shape, std::span<const std::byte> slice)
{
  const std::size_t rowBytes = static_cast<std::size_t>(shape.dims.width) * shape.voxelBytes();
  const std::size_t bytes = rowBytes * stripRows(shape);
  std::uint32_t strip = 0;
  for (; !slice.empty(); slice = slice.subspan(std::min(bytes, slice.size()))) {
    const auto size = static_cast<tmsize_t>(std::min(bytes, slice.size()));
    // The library leaves the memory alone unless it has to swap bytes or to reverse bits.
    auto* memory = const_cast<std::byte*>(slice.data());
    if (TIFFWriteEncodedStrip(file.get(), strip++, memory, size) != size)
      file.fail("its data cannot be stored");
  }
}

/// Writes the slices from the first one on as further pages.
void writePages(TiffFile& file, const ZxSpatialData& data, const std::string& target, int first)
{
  const ZxLatticeShape& shape = data.getLattice()->shape();
  const ZxFileGeometry geometry = ZxFileGeometry::of(data);
  bool isFirst = first == 0;
  const auto write = [&](std::span<const std::byte> slice) {
    setPageFields(file.get(), shape, geometry);
    if (isFirst) {
      const std::string text = description(geometry, shape.dims.slices);
      TIFFSetField(file.get(), TIFFTAG_IMAGEDESCRIPTION, text.c_str());
    }
    isFirst = false;
    writePixels(file, shape, slice);
    if (!TIFFWriteDirectory(file.get())) file.fail("a page cannot be stored");
  };
  forEachSlice(data, target, write, first);
  file.close();
}

} // namespace

void writeTiff(const ZxSpatialData& data, const std::string& target, const std::string& path)
{
  TiffFile file(path, modeFor(data.getLattice()->shape()), target);
  writePages(file, data, target, 0);
}

int continueTiff(const ZxSpatialData& data, const std::string& path)
{
  const ZxLatticeShape& shape = data.getLattice()->shape();
  const TiffPlan plan{shape.dims.slices, shape.sliceBytes(), pageFields(shape),
                      description(ZxFileGeometry::of(data), shape.dims.slices)};
  const int pages = keepWholePages(path, plan);
  TiffFile file(path, pages > 0 ? TiffFile::Mode::Append : modeFor(shape), path);
  writePages(file, data, path, pages);
  return pages;
}

} // namespace io
