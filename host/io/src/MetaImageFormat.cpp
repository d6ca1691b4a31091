#include "Continuation.h"
#include "DataFileName.h"
#include "FileError.h"
#include "Format.h"
#include "FormatNames.h"
#include "Geometry.h"
#include "MetaImageHeader.h"
#include "RawVolumeReader.h"
#include "SliceWriter.h"

#include <algorithm>
#include <bit>

namespace io {

namespace {

constexpr bool littleMachine = std::endian::native == std::endian::little;

struct TypeName {
  StoredType type;
  const char* name;
};

// MET_LONG has 32 bits on every machine.
constexpr TypeName typeNames[] = {
    {StoredType::Int8, "MET_CHAR"},       {StoredType::UInt8, "MET_UCHAR"},
    {StoredType::Int16, "MET_SHORT"},     {StoredType::UInt16, "MET_USHORT"},
    {StoredType::Int32, "MET_INT"},       {StoredType::UInt32, "MET_UINT"},
    {StoredType::Int32, "MET_LONG"},      {StoredType::UInt32, "MET_ULONG"},
    {StoredType::Int64, "MET_LONG_LONG"}, {StoredType::UInt64, "MET_ULONG_LONG"},
    {StoredType::Float, "MET_FLOAT"},     {StoredType::Double, "MET_DOUBLE"},
};

StoredVoxels voxelsOf(const MetaImageHeader& header)
{
  StoredVoxels voxels;
  std::string name = header.field("ElementType");
  if (name.ends_with("_ARRAY")) name.resize(name.size() - 6);
  const auto* found = std::find_if(std::begin(typeNames), std::end(typeNames),
                                   [&](const TypeName& t) { return name == t.name; });
  if (name.empty()) cannotRead(header.path(), "its header has no ElementType");
  if (found == std::end(typeNames))
    cannotRead(header.path(), "the type \"" + header.field("ElementType") + "\" is not supported");
  voxels.type = found->type;
  const std::int64_t channels = header.integer("ElementNumberOfChannels", 1);
  const bool colour = (channels == 3 || channels == 4) && voxels.type == StoredType::UInt8;
  if (channels != 1 && !colour)
    cannotRead(header.path(), "it holds " + std::to_string(channels) + " values of the type " +
                                  nameOf(voxels.type) +
                                  " per voxel, and only RGB and RGBA of uint8 are supported");
  voxels.channels = static_cast<int>(channels);
  return voxels;
}

std::vector<std::int64_t> sizesOf(const MetaImageHeader& header)
{
  const std::int64_t dimensions = header.integer("NDims", 0);
  if (dimensions < 2 || dimensions > 16)
    cannotRead(header.path(), "its number of dimensions (NDims) is missing or not supported");
  std::vector<std::int64_t> sizes;
  for (const std::string& word : splitWords(header.field("DimSize")))
    if (!parseInteger(word, sizes.emplace_back()))
      cannotRead(header.path(), "its DimSize holds no whole numbers");
  if (sizes.size() != static_cast<std::size_t>(dimensions))
    cannotRead(header.path(), "its DimSize does not hold " + std::to_string(dimensions) + " sizes");
  return sizes;
}

std::uint64_t volumeCount(const MetaImageHeader& header, const std::vector<std::int64_t>& sizes)
{
  std::uint64_t volumes = 1;
  for (std::size_t axis = 3; axis < sizes.size(); ++axis)
    if (sizes[axis] < 1 || __builtin_mul_overflow(volumes, static_cast<std::uint64_t>(sizes[axis]), &volumes))
      cannotRead(header.path(), "its sizes are not positive or impossibly large");
  return volumes;
}

std::vector<std::string> dataFiles(const MetaImageHeader& header)
{
  const std::string& text = header.field("ElementDataFile");
  if (text == "LOCAL" || text == "Local" || text == "local") return {header.path()};
  if (text.empty()) cannotRead(header.path(), "its header does not name its data (ElementDataFile)");
  if (saysList(text)) {
    std::vector<std::string> names;
    for (const std::string& name : header.list()) names.push_back(besideHeader(header.path(), name));
    return names;
  }
  const std::vector<std::string> words = splitWords(text);
  std::int64_t first = 0, last = 0, step = 1;
  const bool pattern = text.find('%') != std::string::npos && words.size() >= 3 &&
                       parseInteger(words[1], first) && parseInteger(words[2], last) &&
                       (words.size() < 4 || parseInteger(words[3], step));
  if (!pattern) return {besideHeader(header.path(), text)};
  return expandPattern(header.path(), words[0], first, last, step);
}

std::vector<DataFile> findData(const MetaImageHeader& header)
{
  DataFile data;
  data.packing = header.isTrue("CompressedData", false) ? Packing::Deflate : Packing::None;
  data.notation = header.isTrue("BinaryData", true) ? Notation::Binary : Notation::Text;
  const std::int64_t skip = header.integer("HeaderSize", 0);
  if (skip < -1) cannotRead(header.path(), "its HeaderSize is negative");
  if (skip == -1) data.place = Place::AtEnd;
  std::vector<DataFile> files;
  for (const std::string& path : dataFiles(header)) {
    data.path = path;
    data.offset = path == header.path() ? header.bytes() : skip > 0 ? static_cast<std::uint64_t>(skip) : 0;
    files.push_back(data);
  }
  if (data.place == Place::AtEnd && data.packing != Packing::None)
    cannotRead(header.path(), "only raw data can be counted from the end of the file");
  return files;
}

ZxFileGeometry geometryOf(const MetaImageHeader& header)
{
  ZxFileGeometry geometry;
  const auto spacings = MetaImageHeader::numbers(header.firstOf({"ElementSpacing", "ElementSize"}));
  const auto origins = MetaImageHeader::numbers(header.firstOf({"Offset", "Position", "Origin"}));
  for (std::size_t i = 0; i < 3 && i < spacings.size(); ++i) geometry.voxelSize[i] = voxelSizeOf(spacings[i]);
  for (std::size_t i = 0; i < 3 && i < origins.size(); ++i) geometry.origin[i] = finiteOrZero(origins[i]);
  const std::string& unit = header.firstOf({MetaImageHeader::unitField, "DistanceUnits"});
  geometry.unit = unit == "?" ? "" : unit;
  return geometry;
}

const char* writtenType(McPrimType type)
{
  switch (type) {
  case McPrimType::UInt8:
    return "MET_UCHAR";
  case McPrimType::Int16:
    return "MET_SHORT";
  case McPrimType::UInt16:
    return "MET_USHORT";
  case McPrimType::Int32:
    return "MET_INT";
  case McPrimType::Float:
    return "MET_FLOAT";
  default:
    return "MET_DOUBLE";
  }
}

std::string printable(const std::string& text)
{
  std::string result;
  for (const char c : text)
    if (static_cast<unsigned char>(c) >= ' ') result.push_back(c);
  return trimmed(result);
}

std::string headerText(const ZxSpatialData& data, const std::string& dataFile)
{
  const ZxLattice& lattice = *data.getLattice();
  const ZxDims& dims = lattice.getDims();
  const ZxFileGeometry geometry = ZxFileGeometry::of(data);
  const auto triple = [](const double* v) {
    return exactText(v[0]) + " " + exactText(v[1]) + " " + exactText(v[2]) + "\n";
  };
  std::string text = "ObjectType = Image\nNDims = 3\nBinaryData = True\n";
  text += std::string("BinaryDataByteOrderMSB = ") + (littleMachine ? "False" : "True") + "\n";
  text += "CompressedData = False\nTransformMatrix = 1 0 0 0 1 0 0 0 1\n";
  text += "Offset = " + triple(geometry.origin) + "CenterOfRotation = 0 0 0\n";
  text += "ElementSpacing = " + triple(geometry.voxelSize);
  text += "DimSize = " + std::to_string(dims.width) + " " + std::to_string(dims.height) + " " +
          std::to_string(dims.slices) + "\n";
  if (!geometry.unit.empty())
    text += std::string(MetaImageHeader::unitField) + " = " + printable(geometry.unit) + "\n";
  std::size_t index = 0;
  for (const auto& [key, value] : flatten(data.parameters()))
    text += MetaImageHeader::pairLines(key, value, index++);
  if (lattice.isColor()) text += "ElementNumberOfChannels = 4\n";
  text += std::string("ElementType = ") + writtenType(lattice.primType()) + "\n";
  return text + "ElementDataFile = " + dataFile + "\n";
}

/// MetaImage: .mha with its data, .mhd beside a data file, a pattern or a list of them.
///
/// Reads raw, zlib-packed and text data. Writes raw data in this machine's byte order, .mha in one file, .mhd
/// beside a .raw file. Parameters are fields of their own in the header, in lines that other readers take.
class MetaImageFormat final : public Format {
public:
  const char* name() const noexcept override { return "MetaImage"; }
  std::vector<std::string> endings() const override { return {".mha", ".mhd"}; }
  bool claims(const std::string& path, std::span<const std::byte> head) const override;
  std::unique_ptr<VolumeReader> open(const std::string& path) const override;
  std::string cannotHold(const ZxLatticeShape& shape) const override;
  bool holdsParameters() const noexcept override { return true; }
  void write(const ZxSpatialData& data, const std::string& target,
             const std::string& temporary) const override;
  int continueWriting(const ZxSpatialData& data, const std::string& path) const override;
};

} // namespace

bool MetaImageFormat::claims(const std::string& path, std::span<const std::byte> head) const
{
  return hasEnding(path, ".mha") || hasEnding(path, ".mhd") || beginsWith(head, "ObjectType = Image");
}

std::unique_ptr<VolumeReader> MetaImageFormat::open(const std::string& path) const
{
  const MetaImageHeader header = MetaImageHeader::read(path);
  const std::vector<std::int64_t> sizes = sizesOf(header);
  RawVolume volume;
  volume.path = path;
  volume.dims = checkedDims(path, sizes[0], sizes[1], sizes.size() > 2 ? sizes[2] : 1);
  volume.volumes = volumeCount(header, sizes);
  volume.voxels = voxelsOf(header);
  volume.files = findData(header);
  const bool text = !header.isTrue("BinaryData", true);
  const bool bigEndian = header.isTrue("BinaryDataByteOrderMSB", header.isTrue("ElementByteOrderMSB", false));
  volume.voxels.swapped = !text && bigEndian == littleMachine;
  VolumeInfo info;
  info.format = name();
  info.geometry = geometryOf(header);
  unflatten(header.pairs(), info.parameters);
  return std::make_unique<RawVolumeReader>(std::move(volume), std::move(info));
}

std::string MetaImageFormat::cannotHold(const ZxLatticeShape& shape) const
{
  return neitherGreyNorColour(name(), shape);
}

void MetaImageFormat::write(const ZxSpatialData& data, const std::string& target,
                            const std::string& temporary) const
{
  const bool pair = hasEnding(target, ".mhd");
  if (pair) writeVoxels(data, withEnding(target, ".raw"), withEnding(temporary, ".raw"));
  OutputFile file(temporary, target);
  file.write(headerText(data, pair ? fileName(withEnding(target, ".raw")) : "LOCAL"));
  if (!pair) writeVoxels(data, target, file);
  file.close();
}

int MetaImageFormat::continueWriting(const ZxSpatialData& data, const std::string& path) const
{
  if (!hasEnding(path, ".mhd")) {
    const std::string header = headerText(data, "LOCAL");
    return continueVoxels(data, path, std::as_bytes(std::span(header)));
  }
  const std::string voxels = withEnding(path, ".raw");
  return continueVoxelsBeside(data, path, headerText(data, fileName(voxels)), voxels);
}

std::unique_ptr<Format> makeMetaImageFormat() { return std::make_unique<MetaImageFormat>(); }

} // namespace io
