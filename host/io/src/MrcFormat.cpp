#include "BinaryHeader.h"
#include "Continuation.h"
#include "FileError.h"
#include "Format.h"
#include "FormatNames.h"
#include "Geometry.h"
#include "PlainFile.h"
#include "RawVolumeReader.h"
#include "SliceWriter.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace io {

namespace {

constexpr std::size_t headerBytes = 1024;
constexpr bool littleMachine = std::endian::native == std::endian::little;

/// Places in the header, in bytes.
namespace at {
constexpr std::size_t size = 0, mode = 12, sampling = 28, cell = 40, axes = 64, minimum = 76, maximum = 80,
                      mean = 84, spaceGroup = 88, extended = 92, version = 108, imodStamp = 152,
                      imodFlags = 156, origin = 196, map = 208, machine = 212, deviation = 216,
                      labelCount = 220, labels = 224;
} // namespace at

constexpr std::size_t labelBytes = 80;
constexpr const char* byteLabel = "zxalign: 8-bit unsigned values in 16 bits";

std::int32_t number(const BinaryHeader& header, std::size_t place, int index = 0)
{
  return header.get<std::int32_t>(place + 4 * static_cast<std::size_t>(index));
}

float real(const BinaryHeader& header, std::size_t place, int index = 0)
{
  return header.get<float>(place + 4 * static_cast<std::size_t>(index));
}

/// Whether sizes and mode can be meant in the byte order that the header is set to.
bool isPlausible(const BinaryHeader& header)
{
  for (int axis = 0; axis < 3; ++axis) {
    const std::int32_t n = number(header, at::size, axis);
    if (n < 1 || n >= 1 << 24) return false;
  }
  const std::int32_t mode = number(header, at::mode);
  return mode >= 0 && mode < 256;
}

/// Sets the byte order: that of the machine stamp, unless the sizes make sense in the other one only.
void findByteOrder(BinaryHeader& header)
{
  const bool bigStamp = header.get<std::uint8_t>(at::machine) == 0x11;
  const bool stamped = bigStamp == littleMachine;
  header.setSwapped(stamped);
  if (isPlausible(header)) return;
  header.setSwapped(!stamped);
  if (!isPlausible(header)) header.setSwapped(stamped);
}

bool hasLabel(const BinaryHeader& header, const std::string& label)
{
  const int count = std::clamp(number(header, at::labelCount), 0, 10);
  for (int i = 0; i < count; ++i)
    if (header.text(at::labels + labelBytes * static_cast<std::size_t>(i), label.size()) == label)
      return true;
  return false;
}

/// IMOD says in its own fields whether bytes are signed.
bool hasUnsignedBytes(const BinaryHeader& header)
{
  constexpr std::int32_t imod = 1146047817;
  return number(header, at::imodStamp) == imod && (number(header, at::imodFlags) & 1) == 0;
}

StoredVoxels voxelsOf(const std::string& path, const BinaryHeader& header)
{
  StoredVoxels voxels;
  voxels.swapped = header.isSwapped();
  const std::int32_t mode = number(header, at::mode);
  switch (mode) {
  case 0:
    voxels.type = hasUnsignedBytes(header) ? StoredType::UInt8 : StoredType::Int8;
    return voxels;
  case 1:
    voxels.type = StoredType::Int16;
    return voxels;
  case 2:
    voxels.type = StoredType::Float;
    return voxels;
  case 6:
    voxels.type = StoredType::UInt16;
    return voxels;
  case 12:
    voxels.type = StoredType::Half;
    return voxels;
  case 16:
    voxels.channels = 3;
    return voxels;
  case 3:
  case 4:
    cannotRead(path, "its mode " + std::to_string(mode) + " (complex numbers) is not supported");
  case 101:
    cannotRead(path, "its mode 101 (4 bits per value) is not supported");
  default:
    cannotRead(path, "its mode " + std::to_string(mode) + " is not known");
  }
}

void checkAxes(const std::string& path, const BinaryHeader& header)
{
  const std::int32_t c = number(header, at::axes, 0), r = number(header, at::axes, 1),
                     s = number(header, at::axes, 2);
  // Files from before these fields leave them 0.
  const bool usual = (c == 1 && r == 2 && s == 3) || (c == 0 && r == 0 && s == 0);
  if (!usual)
    cannotRead(path, "its axes are stored in the order " + std::to_string(c) + " " + std::to_string(r) + " " +
                         std::to_string(s) + ", and only 1 2 3 is supported");
}

ZxFileGeometry geometryOf(const BinaryHeader& header)
{
  ZxFileGeometry geometry;
  for (int axis = 0; axis < 3; ++axis) {
    const double cell = real(header, at::cell, axis);
    const double samples = number(header, at::sampling, axis);
    if (cell > 0.0 && samples > 0.0) {
      geometry.voxelSize[axis] = voxelSizeOf(cell / samples);
      geometry.unit = "Angstrom";
    }
    geometry.origin[axis] = finiteOrZero(real(header, at::origin, axis));
  }
  return geometry;
}

/// Volumes that follow one another in one file: the space group says so, and the sampling how long each is.
std::uint64_t volumeCount(const BinaryHeader& header)
{
  const std::int32_t sections = number(header, at::size, 2), sampling = number(header, at::sampling, 2);
  const bool several = number(header, at::spaceGroup) >= 401 && sampling > 0 && sections % sampling == 0;
  return several ? static_cast<std::uint64_t>(sections / sampling) : 1;
}

BinaryHeader readHeader(const std::string& path, Packing packing)
{
  BinaryHeader header(headerBytes);
  const std::size_t got = openBytes(path, 0, packing)->read(header.data(), headerBytes);
  if (got == 0) cannotRead(path, "the file is empty");
  if (got < headerBytes) cannotRead(path, "the file is too short for an MRC header of 1024 bytes");
  findByteOrder(header);
  return header;
}

/// What the header says of the values: readers scale the display by it.
struct Statistics {
  float minimum = 0, maximum = -1, mean = -2, deviation = -1; // "not determined" in the format's own words
};

/// Gathers them slice by slice, in the order of the values.
class StatisticsSum {
public:
  /// Values of a type; those that are not finite do not count.
  void add(McPrimType type, std::span<const std::byte> slice)
  {
    mcVisit(type, [&](auto zero) { addValues(zero, slice); });
  }
  Statistics result() const
  {
    if (m_count == 0.0) return {};
    const double mean = m_sum / m_count;
    const double variance = std::max(0.0, m_squares / m_count - mean * mean);
    return {static_cast<float>(m_low), static_cast<float>(m_high), static_cast<float>(mean),
            static_cast<float>(std::sqrt(variance))};
  }

private:
  template <class T>
  void addValues(T, std::span<const std::byte> slice)
  {
    const auto* values = reinterpret_cast<const T*>(slice.data());
    for (std::size_t i = 0; i < slice.size() / sizeof(T); ++i) {
      const auto value = static_cast<double>(values[i]);
      if (!std::isfinite(value)) continue;
      m_low = std::min(m_low, value);
      m_high = std::max(m_high, value);
      m_sum += value;
      m_squares += value * value;
      m_count += 1.0;
    }
  }

  double m_low = std::numeric_limits<double>::infinity(), m_high = -m_low, m_sum = 0.0, m_squares = 0.0,
         m_count = 0.0;
};

std::int32_t modeOf(McPrimType type)
{
  return type == McPrimType::Int16 ? 1 : type == McPrimType::Float ? 2 : 6;
}

void putLabels(BinaryHeader& header, bool bytes)
{
  const std::string texts[] = {"Written by zxalign", byteLabel};
  const int count = bytes ? 2 : 1;
  header.put<std::int32_t>(at::labelCount, count);
  for (int i = 0; i < count; ++i) {
    std::string label = texts[i];
    label.resize(labelBytes, ' ');
    header.putText(at::labels + labelBytes * static_cast<std::size_t>(i), label);
  }
}

void putGeometry(BinaryHeader& header, const ZxSpatialData& data)
{
  const ZxDims& dims = data.getLattice()->getDims();
  const int sizes[3] = {dims.width, dims.height, dims.slices};
  const ZxFileGeometry geometry = ZxFileGeometry::of(data);
  const double angstroms = metresOf(geometry.unit).value_or(1e-10) / 1e-10;
  for (int axis = 0; axis < 3; ++axis) {
    const std::size_t offset = 4 * static_cast<std::size_t>(axis);
    header.put<std::int32_t>(at::size + offset, sizes[axis]);
    header.put<std::int32_t>(at::sampling + offset, sizes[axis]);
    header.put(at::cell + offset, static_cast<float>(geometry.voxelSize[axis] * angstroms * sizes[axis]));
    header.put(at::cell + 12 + offset, 90.0f);
    header.put<std::int32_t>(at::axes + offset, axis + 1);
    header.put(at::origin + offset, static_cast<float>(geometry.origin[axis] * angstroms));
  }
}

BinaryHeader headerFor(const ZxSpatialData& data, const Statistics& statistics)
{
  BinaryHeader header(headerBytes);
  const McPrimType type = data.getLattice()->primType();
  putGeometry(header, data);
  header.put<std::int32_t>(at::mode, modeOf(type));
  header.put(at::minimum, statistics.minimum);
  header.put(at::maximum, statistics.maximum);
  header.put(at::mean, statistics.mean);
  header.put(at::deviation, statistics.deviation);
  header.put<std::int32_t>(at::spaceGroup, 1); // a volume
  header.put<std::int32_t>(at::version, 20140);
  header.putText(at::map, "MAP ");
  header.put<std::uint16_t>(at::machine, littleMachine ? 0x4444 : 0x1111);
  putLabels(header, type == McPrimType::UInt8);
  return header;
}

/// The type that voxels have in the file.
McPrimType storedTypeOf(McPrimType type) { return type == McPrimType::UInt8 ? McPrimType::UInt16 : type; }

std::uint64_t storedSliceBytes(const ZxLatticeShape& shape)
{
  return shape.dims.slicePixels() * mcSizeOf(storedTypeOf(shape.primType));
}

/// Writes the slices from the first one on and adds them to their statistics.
void writeSlices(const ZxSpatialData& data, const std::string& target, OutputFile& file,
                 StatisticsSum& statistics, int first)
{
  const McPrimType type = data.getLattice()->primType();
  std::vector<std::uint16_t> wide;
  const auto write = [&](std::span<const std::byte> slice) {
    statistics.add(type, slice);
    if (type != McPrimType::UInt8) return file.write(slice);
    wide.resize(slice.size());
    std::transform(slice.begin(), slice.end(), wide.begin(),
                   [](std::byte b) { return std::to_integer<std::uint16_t>(b); });
    file.write(std::as_bytes(std::span(wide)));
  };
  forEachSlice(data, target, write, first);
}

/// Goes on behind the header and the first slices of a file, so that each slice is asked for once only: the
/// statistics in the header are known when all have been written, and are put there then.
void writeBehindHeader(const ZxSpatialData& data, const std::string& target, const std::string& path,
                       int first)
{
  const ZxLatticeShape& shape = data.getLattice()->shape();
  StatisticsSum statistics;
  std::vector<std::byte> slice(first > 0 ? storedSliceBytes(shape) : 0);
  if (first > 0) {
    const PlainFile before(path);
    for (int k = 0; k < first; ++k) {
      throwIfInterrupted();
      before.readAt(headerBytes + static_cast<std::uint64_t>(k) * slice.size(), slice);
      statistics.add(storedTypeOf(shape.primType), slice);
    }
  }
  OutputFile file(path, target, OutputFile::Packing::None, OutputFile::Start::AtEnd);
  writeSlices(data, target, file, statistics, first);
  file.close();
  overwrite(path, target, 0, headerFor(data, statistics.result()).bytes());
}

/// The header of a file that an earlier call has begun when it is the given one but for the statistics, else
/// the given one.
std::vector<std::byte> headerToContinue(const std::string& path, const BinaryHeader& wanted)
{
  const std::vector<std::byte> found = beginningOf(path, headerBytes);
  if (found.size() != headerBytes) return wanted.bytes();
  BinaryHeader header(headerBytes);
  std::copy(found.begin(), found.end(), header.data());
  for (const std::size_t place : {at::minimum, at::maximum, at::mean, at::deviation})
    header.put(place, wanted.get<float>(place));
  return header.bytes() == wanted.bytes() ? found : wanted.bytes();
}

/// MRC volumes and image stacks, also packed with gzip.
///
/// Reads the modes 0, 1, 2, 6, 12 and 16 in both byte orders. Bytes are signed, as the format says, unless
/// the header bears the IMOD stamp and says that they are not. Writes the modes 1, 2 and 6; bytes, for which
/// the format has no type that all programs agree on, are written in 16 bits with a label that brings them
/// back as bytes. Lengths in the header are in Angstrom: where the unit of a volume is known they are
/// converted.
class MrcFormat final : public Format {
public:
  const char* name() const noexcept override { return "MRC"; }
  std::vector<std::string> endings() const override;
  bool claims(const std::string& path, std::span<const std::byte> head) const override;
  std::unique_ptr<VolumeReader> open(const std::string& path) const override;
  std::string cannotHold(const ZxLatticeShape& shape) const override;
  void write(const ZxSpatialData& data, const std::string& target,
             const std::string& temporary) const override;
  int continueWriting(const ZxSpatialData& data, const std::string& path) const override;
};

} // namespace

std::vector<std::string> MrcFormat::endings() const
{
  return {".mrc", ".mrcs", ".map", ".st", ".rec", ".ali", ".mrc.gz", ".map.gz", ".rec.gz"};
}

bool MrcFormat::claims(const std::string& path, std::span<const std::byte> head) const
{
  if (head.size() > at::map + 4 && beginsWith(head.subspan(at::map), "MAP ")) return true;
  const std::vector<std::string> all = endings();
  return std::any_of(all.begin(), all.end(),
                     [&](const std::string& ending) { return hasEnding(path, ending); });
}

std::unique_ptr<VolumeReader> MrcFormat::open(const std::string& path) const
{
  const Packing packing = detectPacking(path);
  const BinaryHeader header = readHeader(path, packing);
  RawVolume volume;
  volume.path = path;
  volume.dims = checkedDims(path, number(header, at::size, 0), number(header, at::size, 1),
                            number(header, at::size, 2));
  volume.voxels = voxelsOf(path, header);
  checkAxes(path, header);
  volume.volumes = volumeCount(header);
  volume.dims.slices = static_cast<int>(volume.dims.slices / static_cast<std::int64_t>(volume.volumes));
  const std::int32_t extended = number(header, at::extended);
  if (extended < 0) cannotRead(path, "its extended header has a negative length");
  DataFile file{.path = path, .packing = packing};
  file.skip = headerBytes + static_cast<std::uint64_t>(extended);
  volume.files = {file};
  if (hasLabel(header, byteLabel) && volume.voxels.type == StoredType::UInt16)
    volume.narrowing = Narrowing::ToValues;
  VolumeInfo info;
  info.format = name();
  info.geometry = geometryOf(header);
  return std::make_unique<RawVolumeReader>(std::move(volume), std::move(info));
}

std::string MrcFormat::cannotHold(const ZxLatticeShape& shape) const
{
  if (shape.numDataVars != 1) return "MRC cannot hold colours";
  switch (shape.primType) {
  case McPrimType::Int32:
    return "MRC cannot hold 32-bit integers";
  case McPrimType::Double:
    return "MRC cannot hold 64-bit floating-point numbers";
  default:
    return {};
  }
}

void MrcFormat::write(const ZxSpatialData& data, const std::string& target,
                      const std::string& temporary) const
{
  if (!hasEnding(target, ".gz")) {
    OutputFile file(temporary, target);
    file.write(headerFor(data, {}).bytes());
    file.close();
    return writeBehindHeader(data, target, temporary, 0);
  }
  StatisticsSum statistics;
  const McPrimType type = data.getLattice()->primType();
  forEachSlice(data, target, [&](std::span<const std::byte> slice) { statistics.add(type, slice); });
  OutputFile file(temporary, target, OutputFile::Packing::Gzip);
  file.write(headerFor(data, statistics.result()).bytes());
  StatisticsSum again;
  writeSlices(data, target, file, again, 0);
  file.close();
}

int MrcFormat::continueWriting(const ZxSpatialData& data, const std::string& path) const
{
  if (hasEnding(path, ".gz")) return Format::continueWriting(data, path);
  const ZxLatticeShape& shape = data.getLattice()->shape();
  const std::vector<std::byte> header = headerToContinue(path, headerFor(data, {}));
  const int first = keepWholeSlices(path, header, storedSliceBytes(shape), shape.dims.slices);
  writeBehindHeader(data, path, path, first);
  return first;
}

std::unique_ptr<Format> makeMrcFormat() { return std::make_unique<MrcFormat>(); }

} // namespace io
