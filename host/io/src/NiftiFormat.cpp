#include "Continuation.h"
#include "DataFileName.h"
#include "FileError.h"
#include "Format.h"
#include "FormatNames.h"
#include "Geometry.h"
#include "NiftiHeader.h"
#include "RawVolumeReader.h"
#include "SliceWriter.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>

namespace io {

namespace {

/// The numbers that the format gives to types.
enum class DataType : std::int64_t {
  UInt8 = 2,
  Int16 = 4,
  Int32 = 8,
  Float = 16,
  Double = 64,
  Rgb = 128,
  Int8 = 256,
  UInt16 = 512,
  UInt32 = 768,
  Int64 = 1024,
  UInt64 = 1280,
  Rgba = 2304
};

const char* nameOfUnsupported(std::int64_t type)
{
  switch (type) {
  case 1:
    return "single bits";
  case 32:
  case 1792:
  case 2048:
    return "complex numbers";
  case 1536:
    return "128-bit floating-point numbers";
  default:
    return "an unknown type";
  }
}

StoredVoxels voxelsOf(const std::string& path, const NiftiHeader& header)
{
  const std::int64_t type = header.integer(header.at().type, 2);
  switch (static_cast<DataType>(type)) {
  case DataType::UInt8:
    return {.type = StoredType::UInt8};
  case DataType::Int16:
    return {.type = StoredType::Int16};
  case DataType::Int32:
    return {.type = StoredType::Int32};
  case DataType::Float:
    return {.type = StoredType::Float};
  case DataType::Double:
    return {.type = StoredType::Double};
  case DataType::Rgb:
    return {.type = StoredType::UInt8, .channels = 3};
  case DataType::Int8:
    return {.type = StoredType::Int8};
  case DataType::UInt16:
    return {.type = StoredType::UInt16};
  case DataType::UInt32:
    return {.type = StoredType::UInt32};
  case DataType::Int64:
    return {.type = StoredType::Int64};
  case DataType::UInt64:
    return {.type = StoredType::UInt64};
  case DataType::Rgba:
    return {.type = StoredType::UInt8, .channels = 4};
  }
  cannotRead(path,
             "its data type " + std::to_string(type) + " (" + nameOfUnsupported(type) + ") is not supported");
}

/// A slope of 0 means that the values are not scaled.
void applyScaling(const NiftiHeader& header, StoredVoxels& voxels)
{
  const double slope = header.real(header.at().slope);
  if (voxels.channels != 1 || slope == 0.0 || !std::isfinite(slope)) return;
  voxels.slope = slope;
  voxels.intercept = finiteOrZero(header.real(header.at().intercept));
}

void findSizes(const std::string& path, const NiftiHeader& header, RawVolume& volume)
{
  const std::int64_t dimensions = header.size(0);
  if (dimensions < 1 || dimensions > 7)
    cannotRead(path, "its number of dimensions " + std::to_string(dimensions) + " is impossible");
  if (dimensions == 1) cannotRead(path, "it has one dimension only");
  const auto size = [&](int axis) {
    return axis <= dimensions ? header.size(static_cast<std::size_t>(axis)) : 1;
  };
  volume.dims = checkedDims(path, size(1), size(2), size(3));
  if (size(5) > 1)
    cannotRead(path, "it holds vectors of " + std::to_string(size(5)) +
                         " values per voxel, which is not supported");
  for (const int axis : {4, 6, 7})
    if (size(axis) < 1 ||
        __builtin_mul_overflow(volume.volumes, static_cast<std::uint64_t>(size(axis)), &volume.volumes))
      cannotRead(path, "its sizes are not positive or impossibly large");
}

ZxFileGeometry geometryOf(const NiftiHeader& header)
{
  ZxFileGeometry geometry;
  const NiftiLayout& at = header.at();
  const bool qform = header.integer(at.qformCode, at.codeBytes) > 0;
  const bool sform = header.integer(at.sformCode, at.codeBytes) > 0;
  for (std::size_t i = 0; i < 3; ++i) {
    geometry.voxelSize[i] = voxelSizeOf(header.real(at.spacings, i + 1));
    if (qform)
      geometry.origin[i] = finiteOrZero(header.real(at.qoffset, i));
    else if (sform)
      geometry.origin[i] = finiteOrZero(header.real(at.srow, 4 * i + 3));
  }
  switch (header.integer(at.units, at.unitBytes) & 7) {
  case 1:
    geometry.unit = "m";
    break;
  case 2:
    geometry.unit = "mm";
    break;
  case 3:
    geometry.unit = "micron";
    break;
  default:
    break;
  }
  return geometry;
}

bool isPairName(const std::string& path)
{
  const auto ends = [&](const char* ending) { return hasEnding(path, ending); };
  return ends(".hdr") || ends(".hdr.gz") || ends(".img") || ends(".img.gz");
}

/// The stem of "stack.img.gz": "stack".
std::string stemOf(const std::string& path)
{
  const std::string name = hasEnding(path, ".gz") ? path.substr(0, path.size() - 3) : path;
  return withEnding(name, "");
}

/// Stem and ending as they are on the disk, packed or not; nothing when neither is there.
std::string findPart(const std::string& path, const std::string& ending)
{
  for (const char* packed : {"", ".gz"}) {
    const std::string candidate = stemOf(path) + ending + packed;
    std::error_code ignored;
    if (std::filesystem::exists(candidate, ignored)) return candidate;
  }
  return {};
}

std::string headerOf(const std::string& path)
{
  if (!hasEnding(path, ".img") && !hasEnding(path, ".img.gz")) return path;
  const std::string header = findPart(path, ".hdr");
  if (header.empty()) cannotRead(path, "its header \"" + fileName(stemOf(path)) + ".hdr\" is missing");
  return header;
}

DataFile findData(const std::string& path, const NiftiHeader& header, Packing packing)
{
  DataFile data{.path = path, .packing = packing};
  const std::int64_t offset = header.dataOffset();
  if (offset < 0) cannotRead(path, "its voxels begin at an impossible place (vox_offset)");
  data.skip = static_cast<std::uint64_t>(offset);
  if (header.isSingleFile()) {
    // Files of some programs say 0 and mean "behind the header and its four bytes of extension".
    if (data.skip < header.at().bytes) data.skip = header.at().bytes + 4;
    return data;
  }
  data.path = findPart(path, ".img");
  if (data.path.empty()) cannotRead(path, "its image \"" + fileName(stemOf(path)) + ".img\" is missing");
  data.packing = hasEnding(data.path, ".gz") ? Packing::Deflate : Packing::None;
  return data;
}

DataType writtenType(const ZxLatticeShape& shape)
{
  if (shape.numDataVars == 4) return DataType::Rgba;
  switch (shape.primType) {
  case McPrimType::UInt8:
    return DataType::UInt8;
  case McPrimType::Int16:
    return DataType::Int16;
  case McPrimType::UInt16:
    return DataType::UInt16;
  case McPrimType::Int32:
    return DataType::Int32;
  case McPrimType::Float:
    return DataType::Float;
  default:
    return DataType::Double;
  }
}

/// The format's number for a unit and what a length in that unit is multiplied with. Units that the format
/// lacks become microns.
struct Unit {
  int code = 0;
  double factor = 1.0;
};

Unit writtenUnit(const std::string& unit)
{
  const std::optional<double> metres = metresOf(unit);
  if (!metres) return {};
  if (*metres == 1.0) return {1, 1.0};
  if (*metres == 1e-3) return {2, 1.0};
  return {3, *metres == 1e-6 ? 1.0 : *metres / 1e-6};
}

void putGeometry(NiftiHeader& header, const ZxFileGeometry& geometry)
{
  const NiftiLayout& at = header.at();
  const Unit unit = writtenUnit(geometry.unit);
  header.putInteger(at.units, at.unitBytes, unit.code);
  constexpr int scannerAxes = 1;
  header.putInteger(at.qformCode, at.codeBytes, scannerAxes);
  header.putInteger(at.sformCode, at.codeBytes, scannerAxes);
  header.putReal(at.spacings, 0, 1.0); // no mirrored axis
  for (std::size_t i = 0; i < 3; ++i) {
    const double size = geometry.voxelSize[i] * unit.factor, origin = geometry.origin[i] * unit.factor;
    header.putReal(at.spacings, i + 1, size);
    header.putReal(at.qoffset, i, origin);
    header.putReal(at.srow, 4 * i + i, size);
    header.putReal(at.srow, 4 * i + 3, origin);
  }
}

NiftiHeader headerFor(const ZxSpatialData& data)
{
  const ZxLatticeShape& shape = data.getLattice()->shape();
  const int sizes[] = {shape.dims.width, shape.dims.height, shape.dims.slices};
  const int largest = *std::max_element(std::begin(sizes), std::end(sizes));
  NiftiHeader header(largest > std::numeric_limits<std::int16_t>::max() ? 2 : 1);
  const NiftiLayout& at = header.at();
  header.putSize(0, 3);
  for (std::size_t axis = 1; axis < 8; ++axis) header.putSize(axis, axis <= 3 ? sizes[axis - 1] : 1);
  header.putInteger(at.type, 2, static_cast<std::int64_t>(writtenType(shape)));
  header.putInteger(at.bits, 2, static_cast<std::int64_t>(shape.voxelBytes() * 8));
  header.putReal(at.slope, 0, 1.0);
  const auto offset = static_cast<std::int64_t>(at.bytes) + 4;
  if (header.version() == 1)
    header.putReal(at.dataOffset, 0, static_cast<double>(offset));
  else
    header.putInteger(at.dataOffset, at.offsetBytes, offset);
  putGeometry(header, ZxFileGeometry::of(data));
  return header;
}

/// All that stands before the voxels.
std::vector<std::byte> headerBytes(const ZxSpatialData& data)
{
  std::vector<std::byte> bytes = headerFor(data).bytes();
  bytes.resize(bytes.size() + 4); // No extension follows.
  return bytes;
}

/// NIfTI-1 and NIfTI-2: .nii, .nii.gz and pairs of .hdr and .img, in both byte orders.
///
/// Rows and slices keep the order of the file. The origin is the position of its first voxel in the file's
/// own axes (x to the right, y to the front, z up), from qform or else sform; directions that are turned or
/// mirrored are not kept, an origin is written back with axes along x, y and z. Scaled integers become
/// floating-point numbers. Writes NIfTI-1, and NIfTI-2 where a size does not fit into the former.
class NiftiFormat final : public Format {
public:
  const char* name() const noexcept override { return "NIfTI"; }
  std::vector<std::string> endings() const override { return {".nii", ".nii.gz"}; }
  bool claims(const std::string& path, std::span<const std::byte> head) const override;
  std::unique_ptr<VolumeReader> open(const std::string& path) const override;
  std::string cannotHold(const ZxLatticeShape& shape) const override;
  void write(const ZxSpatialData& data, const std::string& target,
             const std::string& temporary) const override;
  int continueWriting(const ZxSpatialData& data, const std::string& path) const override;
};

} // namespace

bool NiftiFormat::claims(const std::string& path, std::span<const std::byte> head) const
{
  if (hasEnding(path, ".nii") || hasEnding(path, ".nii.gz")) return true;
  if (isPairName(path)) return !findPart(path, ".hdr").empty();
  const auto mark = [&](std::size_t place, std::string_view text) {
    return head.size() > place && beginsWith(head.subspan(place), text);
  };
  return mark(344, "n+1") || mark(344, "ni1") || mark(4, "n+2") || mark(4, "ni2");
}

std::unique_ptr<VolumeReader> NiftiFormat::open(const std::string& path) const
{
  const std::string headerPath = headerOf(path);
  const Packing packing = detectPacking(headerPath);
  const NiftiHeader header = NiftiHeader::read(headerPath, packing);
  RawVolume volume;
  volume.path = path;
  findSizes(path, header, volume);
  volume.voxels = voxelsOf(path, header);
  volume.voxels.swapped = header.isSwapped();
  applyScaling(header, volume.voxels);
  volume.files = {findData(headerPath, header, packing)};
  VolumeInfo info;
  info.format = name();
  info.geometry = geometryOf(header);
  info.files = {headerPath};
  return std::make_unique<RawVolumeReader>(std::move(volume), std::move(info));
}

std::string NiftiFormat::cannotHold(const ZxLatticeShape& shape) const
{
  return neitherGreyNorColour(name(), shape);
}

void NiftiFormat::write(const ZxSpatialData& data, const std::string& target,
                        const std::string& temporary) const
{
  const bool packed = hasEnding(target, ".gz");
  OutputFile file(temporary, target, packed ? OutputFile::Packing::Gzip : OutputFile::Packing::None);
  file.write(headerBytes(data));
  writeVoxels(data, target, file);
  file.close();
}

int NiftiFormat::continueWriting(const ZxSpatialData& data, const std::string& path) const
{
  if (hasEnding(path, ".gz")) return Format::continueWriting(data, path);
  return continueVoxels(data, path, headerBytes(data));
}

std::unique_ptr<Format> makeNiftiFormat() { return std::make_unique<NiftiFormat>(); }

} // namespace io
