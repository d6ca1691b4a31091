#include "SliceSequence.h"

#include "AtomicFiles.h"
#include "FileError.h"
#include "FormatNames.h"
#include "Formats.h"
#include "SliceWriter.h"
#include "zx/ZxField3.h"
#include "zx/ZxWorkArea.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <limits>
#include <utility>

namespace io {
namespace fs = std::filesystem;
namespace {

constexpr const char* sidecarEnding = ".params.json";

bool isPicture(const std::string& name)
{
  const char* endings[] = {".tif", ".tiff", ".png", ".jpg", ".jpeg", ".bmp"};
  return std::any_of(std::begin(endings), std::end(endings),
                     [&](const char* e) { return hasEnding(name, e); });
}

/// Folder with its '/' and name of a path.
std::pair<std::string, std::string> split(const std::string& path)
{
  const std::size_t slash = path.rfind('/');
  const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
  return {path.substr(0, start), path.substr(start)};
}

/// The names in a folder; none when it cannot be read.
std::vector<std::string> namesIn(const std::string& folder)
{
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator it(folder.empty() ? "." : folder, error), end; !error && it != end;
       it.increment(error)) {
    names.push_back(it->path().filename().string());
  }
  return names;
}

/// One slice of a lattice as a lattice of its own.
class SliceSource final : public ZxVoxelSource {
public:
  SliceSource(ZxLattice& lattice, int slice) : m_lattice(lattice), m_slice(slice) {}
  bool readSlice(int, void* dst) override { return m_lattice.readSlice(m_slice, dst); }
  bool readBox(const ZxBox3i& box, void* dst) override
  {
    ZxBox3i moved = box;
    moved.z += m_slice;
    return m_lattice.readBox(moved, dst);
  }
  const void* sliceInMemory(int) const override { return m_lattice.sliceInMemory(m_slice); }
  void* beginWrite(int) override { return nullptr; }
  bool endWrite(int) override { return false; }

private:
  ZxLattice& m_lattice;
  int m_slice;
};

McHandle<ZxField3> sliceOf(const ZxSpatialData& data, int k)
{
  // A source in a file moves on when it is read; its voxels stay as they are.
  ZxLattice& lattice = *const_cast<ZxSpatialData&>(data).getLattice();
  ZxLatticeShape shape = lattice.shape();
  shape.dims.slices = 1;
  auto slice = std::make_unique<ZxLattice3>(shape, std::make_unique<SliceSource>(lattice, k));
  const ZxFileGeometry geometry = ZxFileGeometry::of(data);
  slice->setBoundingBox(geometry.box(shape.dims));
  McHandle<ZxField3> field = ZxField3::create(std::move(slice));
  geometry.store(field->parameters());
  return field;
}

/// The pattern that a file of parameters is called after, if it is one of a sequence.
std::optional<NumberPattern> patternOfSidecar(const std::string& name)
{
  if (!name.ends_with(sidecarEnding)) return std::nullopt;
  return NumberPattern::parse(std::string_view(name).substr(0, name.size() - std::strlen(sidecarEnding)));
}

} // namespace

std::vector<std::string> slicesInFolder(const std::string& folder)
{
  std::vector<std::string> files;
  std::error_code error;
  for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
    const std::string name = it->path().filename().string();
    std::error_code ignored;
    if (!name.starts_with('.') && isPicture(name) && !it->is_directory(ignored))
      files.push_back(it->path().string());
  }
  if (error) cannotRead(folder, error.message());
  if (files.empty()) cannotRead(folder, "the folder holds no TIFF, PNG, JPEG or BMP pictures");
  std::sort(files.begin(), files.end(), naturalLess);
  return files;
}

std::vector<std::string> orderOfList(std::vector<std::string> files)
{
  if (std::is_sorted(files.begin(), files.end())) std::sort(files.begin(), files.end(), naturalLess);
  return files;
}

SliceSequence::SliceSequence(const std::vector<std::string>& files) : m_files(files)
{
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (i % 16 == 0) throwIfInterrupted();
    m_stamps.push_back(FileStamp::of(files[i]));
    std::unique_ptr<VolumeReader> reader = openFile(files[i]);
    m_inAnyOrder = m_inAnyOrder && reader->readsInAnyOrder();
    if (i == 0) {
      m_info = reader->info();
      m_info.shape.dims = {};
      m_info.parameters.removeAll();
      m_info.files.clear();
    }
    add(i, *reader);
  }
  if (m_slices.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    cannotRead(files.front(), "the sequence has too many slices");
  }
  m_info.shape.dims.slices = static_cast<int>(m_slices.size());
}

void SliceSequence::add(std::size_t file, const VolumeReader& reader)
{
  const ZxLatticeShape& shape = reader.info().shape;
  if (shape.primType != m_info.shape.primType || shape.numDataVars != m_info.shape.numDataVars) {
    throw Error("The slices have different types: \"" + m_files.front() + "\" holds " + m_info.storedType +
                ", \"" + m_files[file] + "\" holds " + reader.info().storedType + ".");
  }
  const std::vector<std::string>& ofSlice = reader.info().files;
  m_info.files.insert(m_info.files.end(), ofSlice.begin(), ofSlice.end());
  if (ofSlice.empty()) m_info.files.push_back(m_files[file]);
  for (int k = 0; k < shape.dims.slices; ++k) m_slices.push_back({file, k, reader.sliceSize(k)});
  m_info.shape.dims.width = std::max(m_info.shape.dims.width, shape.dims.width);
  m_info.shape.dims.height = std::max(m_info.shape.dims.height, shape.dims.height);
}

VolumeReader& SliceSequence::fileOf(const Slice& slice)
{
  const std::string& path = m_files[slice.file];
  if (!m_open || m_openFile != slice.file) {
    m_open = openFile(path);
    m_openFile = slice.file;
  }
  const ZxLatticeShape& shape = m_open->info().shape;
  const bool same = slice.index < shape.dims.slices && m_open->sliceSize(slice.index) == slice.size &&
                    shape.voxelBytes() == m_info.shape.voxelBytes();
  if (!same) cannotRead(path, hasChanged);
  return *m_open;
}

void SliceSequence::readSlice(int k, void* dst)
{
  const Slice& slice = m_slices[static_cast<std::size_t>(k)];
  fileOf(slice).readSlice(slice.index, dst);
}

bool SliceSequence::readRows(int k, int y, int rows, void* dst)
{
  const Slice& slice = m_slices[static_cast<std::size_t>(k)];
  return fileOf(slice).readRows(slice.index, y, rows, dst);
}

void SliceSequence::checkUnchanged(int k)
{
  const std::size_t file = m_slices[static_cast<std::size_t>(k)].file;
  if (!(FileStamp::of(m_files[file]) == m_stamps[file])) cannotRead(m_files[file], hasChanged);
}

SliceSize SliceSequence::sliceSize(int k) const { return m_slices[static_cast<std::size_t>(k)].size; }

std::string SliceSequence::sliceName(int k) const
{
  const Slice& slice = m_slices[static_cast<std::size_t>(k)];
  const std::string name = '"' + m_files[slice.file] + '"';
  return slice.index == 0 ? name : "slice " + std::to_string(slice.index) + " of " + name;
}

PaddedReader::PaddedReader(std::unique_ptr<VolumeReader> reader) : m_reader(std::move(reader))
{
  m_info = m_reader->info();
}

void PaddedReader::readSlice(int k, void* dst)
{
  const SliceSize size = m_reader->sliceSize(k);
  const std::size_t voxel = m_info.shape.voxelBytes();
  const std::size_t rowBytes = static_cast<std::size_t>(size.width) * voxel;
  const std::size_t wideBytes = static_cast<std::size_t>(m_info.shape.dims.width) * voxel;
  m_slice.resize(rowBytes * static_cast<std::size_t>(size.height));
  m_reader->readSlice(k, m_slice.data());
  std::memset(dst, 0, m_info.shape.sliceBytes());
  const auto left = static_cast<std::size_t>((m_info.shape.dims.width - size.width) / 2);
  const auto top = static_cast<std::size_t>((m_info.shape.dims.height - size.height) / 2);
  auto* out = static_cast<std::byte*>(dst) + top * wideBytes + left * voxel;
  for (std::size_t y = 0; y < static_cast<std::size_t>(size.height); ++y) {
    std::memcpy(out + y * wideBytes, m_slice.data() + y * rowBytes, rowBytes);
  }
}

std::optional<int> firstUnequalSlice(const VolumeReader& reader)
{
  for (int k = 1; k < reader.info().shape.dims.slices; ++k) {
    if (reader.sliceSize(k) != reader.sliceSize(0)) return k;
  }
  return std::nullopt;
}

std::optional<SequenceTarget> SequenceTarget::of(const std::string& path)
{
  const auto [folder, name] = split(path);
  const std::string text = name.empty() && !folder.empty() ? "slice_%04d.tif" : name;
  if (text.find('%') == std::string::npos) return std::nullopt;
  const auto pattern = NumberPattern::parse(text);
  if (!pattern)
    cannotWrite(path, "a name with % must hold one place for the slice's number, like slice_%04d.tif");
  return SequenceTarget{folder, text, *pattern};
}

std::string SequenceTarget::problem(int slices) const
{
  for (const std::string& name : namesIn(folder)) {
    if (pattern.numberIn(name) >= slices) return "\"" + name + "\" of a longer sequence is there already";
  }
  return {};
}

void SequenceTarget::write(const ZxSpatialData& data, const Format& format) const
{
  AtomicFiles files(folder);
  writeSlices(data, 0, [&](const ZxSpatialData& slice, const std::string& name) {
    format.write(slice, folder + name, files.temporary(name));
  });
  const std::string beside = text + sidecarEnding;
  const std::string parameters = parametersText(data);
  if (!parameters.empty()) writeText(parameters, folder + beside, files.temporary(beside));
  files.commit(beside);
  std::error_code error;
  if (parameters.empty()) fs::remove(folder + beside, error); // Those of slices that are no more.
}

int SequenceTarget::continueWriting(const ZxSpatialData& data, const Format& format) const
{
  const int first = wholeSlices(data.getLattice()->shape());
  writeSlices(data, first, [&](const ZxSpatialData& slice, const std::string& name) {
    format.write(slice, folder + name, folder + name);
  });
  writeParameters(data, folder + text + sidecarEnding);
  return first;
}

void SequenceTarget::writeSlices(
    const ZxSpatialData& data, int first,
    const std::function<void(const ZxSpatialData&, const std::string&)>& writeSlice) const
{
  ZxWorkArea* area = ZxWorkArea::getTheWorkArea();
  const int slices = data.getLattice()->getDims().slices;
  for (int k = first; k < slices; ++k) {
    throwIfInterrupted();
    if (area->isWorking()) area->setProgressFraction(static_cast<float>(k) / static_cast<float>(slices));
    writeSlice(*sliceOf(data, k), pattern.name(k));
  }
}

int SequenceTarget::wholeSlices(ZxLatticeShape shape) const
{
  const int slices = std::exchange(shape.dims.slices, 1);
  std::error_code error;
  int k = 0;
  while (k < slices && fs::exists(folder + pattern.name(k), error)) ++k;
  const int sure = std::max(k - 1, 0);
  for (k = 0; k < sure; ++k) try {
      if (openFile(folder + pattern.name(k))->info().shape != shape) break;
    } catch (const Interrupted&) {
      throw;
    } catch (const Error&) { // It is none of ours.
      break;
    }
  return k;
}

std::optional<std::string> parametersOfSequence(const std::vector<std::string>& files,
                                                std::vector<std::string>& remarks)
{
  const auto [folder, first] = split(files.front());
  for (const std::string& sidecar : namesIn(folder)) {
    const auto pattern = patternOfSidecar(sidecar);
    if (!pattern || pattern->name(0) != first) continue;
    int number = 0;
    const auto fits = [&](const std::string& file) { return file == folder + pattern->name(number++); };
    if (std::all_of(files.begin(), files.end(), fits)) return folder + sidecar;
    remarks.push_back("The parameters in \"" + folder + sidecar +
                      "\" are not used: they belong to other slices.");
  }
  return std::nullopt;
}

} // namespace io
