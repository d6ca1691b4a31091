#include "Continuation.h"
#include "DataFileName.h"
#include "FileError.h"
#include "Format.h"
#include "FormatNames.h"
#include "Geometry.h"
#include "NrrdHeader.h"
#include "RawVolumeReader.h"
#include "SliceWriter.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <optional>

namespace io {

namespace {

constexpr bool littleMachine = std::endian::native == std::endian::little;

std::string lowered(std::string text)
{
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return text;
}

StoredType storedType(const NrrdHeader& header)
{
  struct Names {
    StoredType type;
    std::initializer_list<const char*> names;
  };
  static const Names known[] = {
      {StoredType::Int8, {"signed char", "int8", "int8_t"}},
      {StoredType::UInt8, {"uchar", "unsigned char", "uint8", "uint8_t"}},
      {StoredType::Int16, {"short", "short int", "signed short", "signed short int", "int16", "int16_t"}},
      {StoredType::UInt16, {"ushort", "unsigned short", "unsigned short int", "uint16", "uint16_t"}},
      {StoredType::Int32, {"int", "signed int", "int32", "int32_t"}},
      {StoredType::UInt32, {"uint", "unsigned int", "uint32", "uint32_t"}},
      {StoredType::Int64,
       {"longlong", "long long", "long long int", "signed long long", "signed long long int", "int64",
        "int64_t"}},
      {StoredType::UInt64,
       {"ulonglong", "unsigned long long", "unsigned long long int", "uint64", "uint64_t"}},
      {StoredType::Float, {"float"}},
      {StoredType::Double, {"double"}},
  };
  if (!header.has("type")) cannotRead(header.path(), "its header has no type");
  const std::string name = lowered(header.field("type"));
  for (const Names& entry : known)
    for (const char* candidate : entry.names)
      if (name == candidate) return entry.type;
  cannotRead(header.path(), "the type \"" + header.field("type") + "\" is not supported");
}

/// The axes of the header, and which of them is the colour.
struct Axes {
  std::vector<std::int64_t> sizes;
  std::vector<std::string> kinds;
  std::vector<NrrdHeader::Direction> directions;
  std::vector<double> spacings;
  std::size_t first = 0; ///< the axis that is x: 1 when axis 0 holds the values of a voxel

  std::size_t count() const noexcept { return sizes.size(); }
  std::int64_t size(std::size_t axis) const noexcept { return axis < count() ? sizes[axis] : 1; }
};

bool isUnknownKind(const std::string& kind) { return kind.empty() || kind == "???" || kind == "none"; }

bool isSpaceKind(const std::string& kind) { return kind == "domain" || kind == "space" || kind == "time"; }

/// True when axis 0 runs over the values of a voxel: its kind says so, or it alone lies outside of space, or
/// nothing is said and it looks like the colours of a volume.
bool beginsWithValues(const Axes& axes, StoredType type)
{
  const std::string kind = axes.kinds.empty() ? "" : axes.kinds[0];
  if (!isUnknownKind(kind)) return !isSpaceKind(kind);
  const auto& directions = axes.directions;
  const auto isThere = [](const NrrdHeader::Direction& d) { return d.present; };
  if (std::any_of(directions.begin(), directions.end(), isThere)) return !directions[0].present;
  const auto isNumber = [](double spacing) { return !std::isnan(spacing); };
  if (std::any_of(axes.spacings.begin(), axes.spacings.end(), isNumber)) return std::isnan(axes.spacings[0]);
  return axes.count() == 4 && (axes.sizes[0] == 3 || axes.sizes[0] == 4) && type == StoredType::UInt8;
}

/// Values per voxel, from axis 0 when it runs over them.
int channelsOf(const NrrdHeader& header, const Axes& axes, StoredType type)
{
  if (axes.first == 0) return 1;
  const std::string kind = axes.kinds.empty() ? "" : axes.kinds[0];
  const std::int64_t n = axes.sizes[0];
  const bool otherColour =
      kind == "hsv-color" || kind == "xyz-color" || kind == "complex" || kind == "quaternion";
  if (n == 1) return 1;
  if ((n == 3 || n == 4) && type == StoredType::UInt8 && !otherColour) return static_cast<int>(n);
  cannotRead(header.path(), "it holds " + std::to_string(n) + " values of the type " + nameOf(type) +
                                (isUnknownKind(kind) ? "" : " (" + kind + ")") +
                                " per voxel, and only RGB and RGBA of uint8 are supported");
}

Axes readAxes(const NrrdHeader& header, StoredType type)
{
  Axes axes;
  const std::int64_t dimension = header.integer("dimension", 0);
  if (dimension < 1 || dimension > 16) cannotRead(header.path(), "its dimension is missing or impossible");
  const auto count = static_cast<std::size_t>(dimension);
  for (const std::string& word : header.words("sizes", count))
    if (!parseInteger(word, axes.sizes.emplace_back()))
      cannotRead(header.path(), "its sizes are no whole numbers");
  if (axes.sizes.empty()) cannotRead(header.path(), "its header has no sizes");
  for (const std::string& kind : header.words("kinds", count)) axes.kinds.push_back(lowered(kind));
  axes.directions = header.directions(count);
  axes.spacings = header.numbers("spacings", count);
  axes.first = beginsWithValues(axes, type) ? 1 : 0;
  if (count < axes.first + 2) cannotRead(header.path(), "it has one dimension only");
  for (std::size_t axis = axes.first; axis < axes.first + 3 && axis < axes.kinds.size(); ++axis)
    if (!isUnknownKind(axes.kinds[axis]) && !isSpaceKind(axes.kinds[axis]))
      cannotRead(header.path(), "its axis " + std::to_string(axis) + " is of the kind " + axes.kinds[axis] +
                                    ", and values of a voxel are supported on axis 0 only");
  return axes;
}

Packing packingOf(const NrrdHeader& header, Notation& notation)
{
  const std::string encoding = lowered(header.field("encoding"));
  notation = Notation::Binary;
  if (encoding == "raw") return Packing::None;
  if (encoding == "gzip" || encoding == "gz") return Packing::Deflate;
  if (encoding == "bzip2" || encoding == "bz2") return Packing::Bzip2;
  notation = encoding == "hex" ? Notation::Hex : Notation::Text;
  if (encoding == "hex" || encoding == "ascii" || encoding == "txt" || encoding == "text")
    return Packing::None;
  if (encoding.empty()) cannotRead(header.path(), "its header has no encoding");
  cannotRead(header.path(), "the encoding \"" + header.field("encoding") + "\" is not supported");
}

/// Whether values must be swapped; says so when the header leaves the order open.
bool isSwapped(const NrrdHeader& header, StoredType type, Notation notation)
{
  if (sizeOf(type) == 1 || notation == Notation::Text) return false;
  const std::string endian = lowered(header.field("endian"));
  if (endian != "little" && endian != "big")
    cannotRead(header.path(),
               std::string("its header does not say the byte order of its ") + nameOf(type) + " data");
  return (endian == "little") != littleMachine;
}

/// Offset behind so many lines of a file.
std::uint64_t offsetBehindLines(const std::string& path, std::uint64_t offset, std::int64_t lines)
{
  const std::unique_ptr<ByteStream> stream = openBytes(path, offset, Packing::None);
  LineReader reader(*stream, path);
  std::string line;
  while (lines-- > 0)
    if (!reader.next(line)) cannotRead(path, "it has fewer lines than are to be skipped");
  return offset + reader.position();
}

std::vector<std::string> dataFiles(const NrrdHeader& header)
{
  const std::string& text = header.field("datafile");
  if (text.empty()) return {header.path()};
  std::vector<std::string> names;
  if (saysList(text)) {
    for (const std::string& name : header.list()) names.push_back(besideHeader(header.path(), name));
    return names;
  }
  const std::vector<std::string> words = splitWords(text);
  std::int64_t first = 0, last = 0, step = 0;
  const bool pattern = words.size() >= 4 && text.find('%') != std::string::npos &&
                       parseInteger(words[1], first) && parseInteger(words[2], last) &&
                       parseInteger(words[3], step);
  if (pattern) return expandPattern(header.path(), words[0], first, last, step);
  return {besideHeader(header.path(), text)};
}

std::vector<DataFile> findData(const NrrdHeader& header)
{
  DataFile data;
  data.packing = packingOf(header, data.notation);
  const std::int64_t lineSkip = header.integer("lineskip", 0), byteSkip = header.integer("byteskip", 0);
  if (lineSkip < 0 || byteSkip < -1) cannotRead(header.path(), "what it says to skip is negative");
  if (byteSkip == -1) {
    if (data.packing != Packing::None || data.notation != Notation::Binary)
      cannotRead(header.path(), "only raw data can be counted from the end of the file");
    data.place = Place::AtEnd;
  } else {
    data.skip = static_cast<std::uint64_t>(byteSkip);
  }
  std::vector<DataFile> files;
  for (const std::string& path : dataFiles(header)) {
    data.path = path;
    fileSize(path); // refuses a pipe before lines are looked for in it
    data.offset = offsetBehindLines(path, path == header.path() ? header.bytes() : 0, lineSkip);
    files.push_back(data);
  }
  return files;
}

/// Length of a vector, exact when it lies along an axis.
double lengthOf(const std::array<double, 3>& v) noexcept
{
  const int parts = (v[0] != 0.0) + (v[1] != 0.0) + (v[2] != 0.0);
  return parts <= 1 ? std::abs(v[0] + v[1] + v[2]) : std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
}

/// Position of the first sample of an axis from the limits that the header gives it. Samples count as the
/// centres of cells unless the header says that they are nodes.
void applyLimits(const NrrdHeader& header, const Axes& axes, ZxFileGeometry& geometry)
{
  const std::vector<double> mins = header.numbers("axismins", axes.count());
  const std::vector<double> maxs = header.numbers("axismaxs", axes.count());
  const std::vector<std::string> centers = header.words("centers", axes.count());
  for (std::size_t axis = axes.first; axis < axes.first + 3 && axis < mins.size(); ++axis) {
    const std::size_t i = axis - axes.first;
    const bool node = axis < centers.size() && lowered(centers[axis]) == "node";
    const double intervals = static_cast<double>(axes.sizes[axis] - (node ? 1 : 0));
    if (axes.spacings.empty() && !maxs.empty() && intervals > 0)
      geometry.voxelSize[i] = voxelSizeOf((maxs[axis] - mins[axis]) / intervals);
    geometry.origin[i] = finiteOrZero(mins[axis] + (node ? 0.0 : geometry.voxelSize[i] / 2));
  }
}

ZxFileGeometry geometryOf(const NrrdHeader& header, const Axes& axes)
{
  ZxFileGeometry geometry;
  for (std::size_t axis = axes.first; axis < axes.first + 3 && axis < axes.count(); ++axis) {
    double& size = geometry.voxelSize[axis - axes.first];
    if (!axes.directions.empty() && axes.directions[axis].present)
      size = voxelSizeOf(lengthOf(axes.directions[axis].vector));
    else if (!axes.spacings.empty())
      size = voxelSizeOf(axes.spacings[axis]);
  }
  if (header.has("spaceorigin")) {
    const std::array<double, 3> origin = header.spaceOrigin();
    for (std::size_t i = 0; i < 3; ++i) geometry.origin[i] = finiteOrZero(origin[i]);
  } else {
    applyLimits(header, axes, geometry);
  }
  const std::vector<std::string> units = header.words("units", axes.count());
  if (header.has("spaceunits"))
    geometry.unit = header.firstWord("spaceunits");
  else if (units.size() > axes.first)
    geometry.unit = units[axes.first];
  if (geometry.unit == "???") geometry.unit.clear();
  return geometry;
}

std::uint64_t volumeCount(const NrrdHeader& header, const Axes& axes)
{
  std::uint64_t volumes = 1;
  for (std::size_t axis = axes.first + 3; axis < axes.count(); ++axis) {
    if (axes.sizes[axis] < 1) cannotRead(header.path(), "its sizes are not positive");
    if (__builtin_mul_overflow(volumes, static_cast<std::uint64_t>(axes.sizes[axis]), &volumes))
      cannotRead(header.path(), "its sizes are impossibly large");
  }
  return volumes;
}

const char* writtenType(McPrimType type)
{
  switch (type) {
  case McPrimType::UInt8:
    return "unsigned char";
  case McPrimType::Int16:
    return "short";
  case McPrimType::UInt16:
    return "unsigned short";
  case McPrimType::Int32:
    return "int";
  case McPrimType::Float:
    return "float";
  default:
    return "double";
  }
}

std::string quotedUnit(const std::string& unit)
{
  std::string text = "\"";
  for (const char c : unit)
    if (c != '"' && c != '\\' && static_cast<unsigned char>(c) >= ' ') text.push_back(c);
  return text + "\"";
}

std::string geometryText(const ZxFileGeometry& geometry, bool colour)
{
  const auto vector = [](double x, double y, double z) {
    return "(" + exactText(x) + "," + exactText(y) + "," + exactText(z) + ")";
  };
  const double* size = geometry.voxelSize;
  std::string text = "space directions: ";
  if (colour) text += "none ";
  text += vector(size[0], 0, 0) + " " + vector(0, size[1], 0) + " " + vector(0, 0, size[2]) + "\n";
  if (!geometry.unit.empty()) {
    const std::string unit = quotedUnit(geometry.unit);
    text += "space units: " + unit + " " + unit + " " + unit + "\n";
  }
  return text + "space origin: " + vector(geometry.origin[0], geometry.origin[1], geometry.origin[2]) + "\n";
}

std::string headerText(const ZxSpatialData& data, const std::string& dataFile)
{
  const ZxLattice& lattice = *data.getLattice();
  const ZxDims& dims = lattice.getDims();
  const bool colour = lattice.isColor();
  std::string text = "NRRD0004\n";
  text += std::string("type: ") + writtenType(lattice.primType()) + "\n";
  text +=
      colour ? "dimension: 4\nspace dimension: 3\nsizes: 4 " : "dimension: 3\nspace dimension: 3\nsizes: ";
  text += std::to_string(dims.width) + " " + std::to_string(dims.height) + " " + std::to_string(dims.slices) +
          "\n";
  text += geometryText(ZxFileGeometry::of(data), colour);
  text += colour ? "kinds: RGBA-color domain domain domain\n" : "kinds: domain domain domain\n";
  text += std::string("endian: ") + (littleMachine ? "little" : "big") + "\nencoding: raw\n";
  if (!dataFile.empty()) text += "data file: " + dataFile + "\n";
  for (const auto& [key, value] : flatten(data.parameters())) text += key + ":=" + value + "\n";
  return text + "\n";
}

/// NRRD, headers with their data and detached ones. Keeps parameters as key/value pairs.
///
/// Reads the versions 1 to 5 with raw, gzip, bzip2, text and hex data. Writes raw data in this machine's byte
/// order: .nrrd in one file, .nhdr beside a .raw file.
class NrrdFormat final : public Format {
public:
  const char* name() const noexcept override { return "NRRD"; }
  std::vector<std::string> endings() const override { return {".nrrd", ".nhdr"}; }
  bool claims(const std::string& path, std::span<const std::byte> head) const override;
  std::unique_ptr<VolumeReader> open(const std::string& path) const override;
  std::string cannotHold(const ZxLatticeShape& shape) const override;
  bool holdsParameters() const noexcept override { return true; }
  void write(const ZxSpatialData& data, const std::string& target,
             const std::string& temporary) const override;
  int continueWriting(const ZxSpatialData& data, const std::string& path) const override;
};

} // namespace

bool NrrdFormat::claims(const std::string& path, std::span<const std::byte> head) const
{
  return beginsWith(head, "NRRD") || hasEnding(path, ".nrrd") || hasEnding(path, ".nhdr");
}

std::unique_ptr<VolumeReader> NrrdFormat::open(const std::string& path) const
{
  const NrrdHeader header = NrrdHeader::read(path);
  RawVolume volume;
  volume.path = path;
  volume.voxels.type = storedType(header);
  const Axes axes = readAxes(header, volume.voxels.type);
  volume.voxels.channels = channelsOf(header, axes, volume.voxels.type);
  volume.dims =
      checkedDims(path, axes.size(axes.first), axes.size(axes.first + 1), axes.size(axes.first + 2));
  volume.volumes = volumeCount(header, axes);
  volume.files = findData(header);
  if (!volume.files.empty())
    volume.voxels.swapped = isSwapped(header, volume.voxels.type, volume.files.front().notation);
  VolumeInfo info;
  info.format = name();
  info.geometry = geometryOf(header, axes);
  unflatten(header.pairs(), info.parameters);
  return std::make_unique<RawVolumeReader>(std::move(volume), std::move(info));
}

std::string NrrdFormat::cannotHold(const ZxLatticeShape& shape) const
{
  return neitherGreyNorColour(name(), shape);
}

void NrrdFormat::write(const ZxSpatialData& data, const std::string& target,
                       const std::string& temporary) const
{
  const bool detached = hasEnding(target, ".nhdr");
  if (detached) writeVoxels(data, withEnding(target, ".raw"), withEnding(temporary, ".raw"));
  OutputFile file(temporary, target);
  file.write(headerText(data, detached ? fileName(withEnding(target, ".raw")) : ""));
  if (!detached) writeVoxels(data, target, file);
  file.close();
}

int NrrdFormat::continueWriting(const ZxSpatialData& data, const std::string& path) const
{
  if (!hasEnding(path, ".nhdr")) {
    const std::string header = headerText(data, "");
    return continueVoxels(data, path, std::as_bytes(std::span(header)));
  }
  const std::string voxels = withEnding(path, ".raw");
  return continueVoxelsBeside(data, path, headerText(data, fileName(voxels)), voxels);
}

std::unique_ptr<Format> makeNrrdFormat() { return std::make_unique<NrrdFormat>(); }

} // namespace io
