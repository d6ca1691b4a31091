#include "TiffReader.h"

#include "ByteStream.h"
#include "FileError.h"
#include "Geometry.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <limits>
#include <set>

namespace io {
namespace {

bool isSize(double value) { return std::isfinite(value) && value > 0; }

/// The number with 7 digits: a resolution in single precision says 0.0046, not 0.004599999885.
double toSevenDigits(double value)
{
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::general, 7);
  std::from_chars(text, end.ptr, value);
  return value;
}

/// Pixel sizes by the resolution in pixels a unit of a given length.
void setPixelSizes(ZxFileGeometry& geometry, const TiffNotes& page, double length)
{
  for (int axis = 0; axis < 2; ++axis) {
    const double size = length / page.pixelsPerUnit[axis];
    if (isSize(page.pixelsPerUnit[axis]) && isSize(size)) geometry.voxelSize[axis] = toSevenDigits(size);
  }
}

/// Without a unit the resolution says nothing but the shape of a pixel, and nobody agrees on how.
ZxFileGeometry geometryByResolution(const TiffNotes& page)
{
  ZxFileGeometry geometry;
  if (page.resolutionUnit != RESUNIT_INCH && page.resolutionUnit != RESUNIT_CENTIMETER) return geometry;
  if (!isSize(page.pixelsPerUnit[0])) return geometry;
  setPixelSizes(geometry, page, page.resolutionUnit == RESUNIT_INCH ? 25.4 : 10.0);
  geometry.unit = "mm";
  return geometry;
}

ZxFileGeometry geometryOf(const TiffNotes& page, const ImageJDescription& imageJ)
{
  ZxFileGeometry geometry;
  setPixelSizes(geometry, page, 1.0);
  if (imageJ.spacing) geometry.voxelSize[2] = voxelSizeOf(*imageJ.spacing);
  geometry.unit = imageJ.unit;
  return geometry;
}

/// All sizes in the unit of the first one that is given.
ZxFileGeometry geometryOf(const OmeDescription& ome)
{
  ZxFileGeometry geometry;
  for (int axis = 0; axis < 3; ++axis) {
    if (!isSize(ome.physicalSize[axis])) continue;
    if (geometry.unit.empty()) geometry.unit = ome.units[axis];
    const auto own = metresOf(ome.units[axis]);
    const auto common = metresOf(geometry.unit);
    const double factor = own && common && *own != *common ? *own / *common : 1.0;
    geometry.voxelSize[axis] = voxelSizeOf(ome.physicalSize[axis] * factor);
  }
  return geometry;
}

void reverseBytes(std::span<std::byte> values, std::size_t size)
{
  for (; values.size() >= size && size > 1; values = values.subspan(size)) {
    std::reverse(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(size));
  }
}

std::string quotedName(const std::string& path)
{
  return '"' + std::filesystem::path(path).filename().string() + '"';
}

} // namespace

TiffNotes::TiffNotes(TIFF* tiff)
{
  const char* text = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_IMAGEDESCRIPTION, &text) && text) description = text;
  float resolution[2] = {0, 0};
  TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &resolution[0]);
  TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &resolution[1]);
  pixelsPerUnit[0] = resolution[0];
  pixelsPerUnit[1] = resolution[1];
  TIFFGetFieldDefaulted(tiff, TIFFTAG_RESOLUTIONUNIT, &resolutionUnit);
}

TiffReader::TiffReader(const std::string& path)
  : m_file(path, TiffFile::Mode::Read, path), m_fileBytes(fileSize(path)),
    m_stamp(FileStamp::of(TIFFFileno(m_file.get()))), m_decoder(m_file)
{
  const TiffNotes first(m_file.get());
  m_info.format = "TIFF";
  readPages();
  dropExtraPages();
  describe(first);
  for (const TiffPage& page : m_pages) checkPage(page);
  findShape();
}

void TiffReader::readPages()
{
  std::set<std::uint64_t> seen;
  for (;;) {
    const TiffPage page = TiffPage::current(m_file);
    if (!seen.insert(page.directory).second) m_file.fail("its pages form a loop");
    m_pages.push_back(page);
    m_pageNumbers.push_back(m_pages.size());
    if (TIFFLastDirectory(m_file.get())) return;
    m_file.forgetMessages();
    if (!TIFFReadDirectory(m_file.get())) {
      m_file.fail("what follows page " + std::to_string(m_pages.size()) + " is damaged or leads back");
    }
  }
}

void TiffReader::keepPages(const std::vector<std::size_t>& indices)
{
  std::vector<TiffPage> pages;
  std::vector<std::size_t> numbers;
  for (const std::size_t i : indices) {
    pages.push_back(m_pages[i]);
    numbers.push_back(m_pageNumbers[i]);
  }
  m_pages = std::move(pages);
  m_pageNumbers = std::move(numbers);
}

void TiffReader::dropExtraPages()
{
  std::vector<std::size_t> slices;
  for (std::size_t i = 0; i < m_pages.size(); ++i) {
    if (!m_pages[i].isExtra) slices.push_back(i);
  }
  if (slices.empty() || slices.size() == m_pages.size()) return;
  m_info.remarks.push_back(quotedName(m_file.name()) + " also holds " +
                           std::to_string(m_pages.size() - slices.size()) +
                           " reduced pictures or masks, which are passed over.");
  keepPages(slices);
}

void TiffReader::describe(const TiffNotes& first)
{
  if (const auto ome = OmeDescription::parse(first.description, m_pages.size())) {
    m_info.geometry = geometryOf(*ome);
    selectFirstVolume(*ome);
  } else if (const auto imageJ = ImageJDescription::parse(first.description)) {
    m_info.geometry = geometryOf(first, *imageJ);
    findContiguousSlices(*imageJ);
    if (imageJ->channels * imageJ->frames > 1 && imageJ->channels * imageJ->frames < imageJ->images) {
      m_info.remarks.push_back(quotedName(m_file.name()) + " holds " + std::to_string(imageJ->channels) +
                               " channels and " + std::to_string(imageJ->frames) +
                               " times; all its pages are read as slices, in their order.");
    }
  } else {
    m_info.geometry = geometryByResolution(first);
  }
  if (m_pages.front().isMinWhite()) {
    m_info.remarks.push_back("0 stands for white in " + quotedName(m_file.name()) +
                             "; the values are read as they are stored.");
  } else if (m_pages.front().isPalette()) {
    m_info.remarks.push_back("The colours of " + quotedName(m_file.name()) +
                             " are entries of a table; the numbers of the entries are read.");
  }
}

void TiffReader::selectFirstVolume(const OmeDescription& ome)
{
  const std::string sizes =
      std::to_string(ome.sizeC) + " channels and " + std::to_string(ome.sizeT) + " times";
  if (!ome.firstVolume.empty()) {
    if (ome.firstVolume.size() == m_pages.size()) return;
    keepPages(ome.firstVolume);
    m_info.remarks.push_back(quotedName(m_file.name()) + " holds " + sizes + "; the first volume is read.");
  } else if (m_pages.size() > 1 || ome.sizeZ > 1) {
    m_info.remarks.push_back("The pages of " + quotedName(m_file.name()) + " do not hold the " +
                             std::to_string(ome.sizeZ) + " slices of " + sizes +
                             " that it describes; all its pages are read as slices, in their order.");
  }
}

void TiffReader::findContiguousSlices(const ImageJDescription& imageJ)
{
  const TiffPage& page = m_pages.front();
  if (imageJ.images < 2) return;
  if (m_pages.size() > 1 && m_pages.size() < imageJ.images) {
    m_info.remarks.push_back(quotedName(m_file.name()) + " describes " + std::to_string(imageJ.images) +
                             " slices but holds " + std::to_string(m_pages.size()) + '.');
  }
  if (m_pages.size() > 1) return;
  if (page.compression != COMPRESSION_NONE || page.tiled || page.planar || page.isPacked()) return;
  if (page.width == 0 || page.height == 0 || page.voxels(m_file.name()).channels != page.samples) return;
  if (!TIFFSetSubDirectory(m_file.get(), page.directory)) m_file.fail("its first page is damaged");
  m_firstByte = TIFFGetStrileOffset(m_file.get(), 0);
  const std::uint64_t left = m_firstByte < m_fileBytes ? m_fileBytes - m_firstByte : 0;
  const std::uint64_t slice = std::uint64_t{page.width} * page.height * page.samples * page.bits / 8;
  if (slice > left || left / slice < imageJ.images) {
    m_file.fail("it is cut off, it should hold " + std::to_string(imageJ.images) + " slices");
  }
  m_contiguous = imageJ.images;
}

void TiffReader::checkPage(const TiffPage& page)
{
  m_file.forgetMessages();
  if (!TIFFSetSubDirectory(m_file.get(), page.directory)) m_file.fail("one of its pages is damaged");
  checkTiffPage(m_file, page, m_fileBytes);
  const TiffPage& first = m_pages.front();
  const StoredVoxels voxels = page.voxels(m_file.name());
  const StoredVoxels expected = first.voxels(m_file.name());
  if (voxels.type != expected.type || (voxels.channels > 1) != (expected.channels > 1)) {
    cannotRead(m_file.name(),
               "its pages are of different types, " + expected.describe() + " and " + voxels.describe());
  }
}

void TiffReader::findShape()
{
  const StoredVoxels voxels = m_pages.front().voxels(m_file.name());
  ZxLatticeShape& shape = m_info.shape;
  for (const TiffPage& page : m_pages) {
    shape.dims.width = std::max(shape.dims.width, static_cast<int>(page.width));
    shape.dims.height = std::max(shape.dims.height, static_cast<int>(page.height));
  }
  const std::size_t slices = std::max(m_contiguous, m_pages.size());
  if (slices > static_cast<std::size_t>(std::numeric_limits<int>::max()))
    m_file.fail("it has too many slices");
  shape.dims.slices = static_cast<int>(slices);
  shape.numDataVars = voxels.channels > 1 ? 4 : 1;
  shape.primType = voxels.channels > 1 ? McPrimType::UInt8 : findType(voxels);
  m_info.storedType = voxels.describe();
}

McPrimType TiffReader::findType(const StoredVoxels& voxels)
{
  if (const auto type = voxels.typeInMemory()) return *type;
  IntegerRange range;
  for (std::size_t k = 0; k < std::max(m_contiguous, m_pages.size()); ++k) {
    if (m_contiguous)
      voxels.extendRange(readBeyondPage(k).data(), m_slice.size() / voxels.bytes(), range);
    else
      m_decoder.extendRange(m_pages[k], range);
  }
  const auto type = smallestTypeFor(range);
  if (!type) cannotRead(m_file.name(), std::string("its ") + nameOf(voxels.type) + " values are too large");
  return *type;
}

void TiffReader::readSlice(int k, void* dst) { readRows(k, 0, sliceSize(k).height, dst); }

bool TiffReader::readRows(int k, int y, int rows, void* dst)
{
  const auto index = static_cast<std::size_t>(k), first = static_cast<std::size_t>(y),
             count = static_cast<std::size_t>(rows);
  const McPrimType type = m_info.shape.primType;
  if (!m_contiguous) {
    m_decoder.decode(m_pages[index], first, count, type, dst);
    return true;
  }
  const TiffPage& page = m_pages.front();
  page.voxels(m_file.name())
      .convert(readBeyondPage(index, first, count).data(), count * page.width, type, dst);
  return true;
}

void TiffReader::checkUnchanged(int)
{
  if (!(FileStamp::of(TIFFFileno(m_file.get())) == m_stamp)) cannotRead(m_file.name(), hasChanged);
}

std::span<std::byte> TiffReader::readBeyondPage(std::size_t k, std::size_t y, std::size_t rows)
{
  const TiffPage& page = m_pages.front();
  const std::size_t rowBytes = std::size_t{page.width} * page.samples * page.bits / 8;
  m_slice.resize(rowBytes * rows);
  readAt(TIFFFileno(m_file.get()), m_file.name(), m_firstByte + (k * page.height + y) * rowBytes, m_slice);
  if (TIFFIsByteSwapped(m_file.get())) reverseBytes(m_slice, page.bits / 8);
  return m_slice;
}

SliceSize TiffReader::sliceSize(int k) const
{
  const TiffPage& page = m_contiguous ? m_pages.front() : m_pages[static_cast<std::size_t>(k)];
  return {static_cast<int>(page.width), static_cast<int>(page.height)};
}

std::string TiffReader::sliceName(int k) const
{
  if (m_contiguous || m_pages.size() == 1) return VolumeReader::sliceName(k);
  return "page " + std::to_string(m_pageNumbers[static_cast<std::size_t>(k)]);
}

} // namespace io
