#include "io/Volume.h"

#include "AtomicFiles.h"
#include "FileError.h"
#include "FileVoxelSource.h"
#include "Formats.h"
#include "Geometry.h"
#include "SliceSequence.h"
#include "SliceWriter.h"
#include "io/ParameterJson.h"
#include "zx/ZxFileAccess.h"
#include "zx/ZxMemory.h"
#include "zx/ZxMessage.h"
#include "zx/ZxWorkArea.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <new>
#include <system_error>
#include <utility>

namespace io {
namespace fs = std::filesystem;
namespace {

/// An opened input with everything that is known of it.
struct Input {
  std::unique_ptr<VolumeReader> reader;
  VolumeInfo info;
  std::string name; ///< for messages
};

/// Runs what libraries may throw anything in; what leaves is an Error that names the file.
template <class F>
decltype(auto) guarded(const std::string& verb, const std::string& name, F f)
{
  try {
    return f();
  } catch (const Error&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw Error("Cannot " + verb + " \"" + name + "\": there is not enough memory.");
  } catch (const std::exception& error) {
    throw Error("Cannot " + verb + " \"" + name + "\": " + error.what() + ".");
  }
}

bool isFolder(const std::string& path)
{
  std::error_code error;
  return fs::is_directory(path, error);
}

std::string withoutSlash(std::string path)
{
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

/// Origin, voxel size and unit that stand in parameters go over to the geometry, where numbers are sound.
void takeGeometry(VolumeInfo& info)
{
  ZxFileGeometry& geometry = info.geometry;
  if (const ZxParamBundle* file = std::as_const(info.parameters).findBundle(ZxFileGeometry::bundleName)) {
    file->findReals("Origin", 3, geometry.origin);
    file->findReals("VoxelSize", 3, geometry.voxelSize);
    file->findString("Unit", geometry.unit);
  }
  info.parameters.remove(ZxFileGeometry::bundleName);
  for (double& size : geometry.voxelSize) size = voxelSizeOf(size);
  for (double& origin : geometry.origin) origin = finiteOrZero(origin);
}

void loadParameters(Input& input, const std::string& path)
{
  input.info.parameters = fromJson(readText(path), path);
  input.info.files.push_back(path);
}

/// Decides what becomes of slices of unequal size.
void settleSizes(Input& input, UnequalSlices rule)
{
  const auto unequal = firstUnequalSlice(*input.reader);
  if (!unequal) return;
  if (rule == UnequalSlices::PadToLargest) {
    input.reader = std::make_unique<PaddedReader>(std::move(input.reader));
    return;
  }
  const auto text = [&](int k) {
    const SliceSize size = input.reader->sliceSize(k);
    return input.reader->sliceName(k) + " has " + std::to_string(size.width) + " x " +
           std::to_string(size.height);
  };
  cannotRead(input.name, "its slices have different sizes, " + text(0) + " pixels and " + text(*unequal));
}

Input openSequence(const std::vector<std::string>& files, const std::string& name)
{
  Input input{.reader = std::make_unique<SliceSequence>(files), .info = {}, .name = name};
  input.info = input.reader->info();
  if (const auto beside = parametersOfSequence(files, input.info.remarks)) loadParameters(input, *beside);
  return input;
}

Input openSingle(const std::string& path)
{
  const Format& format = formatOfFile(path);
  Input input{.reader = format.open(path), .info = {}, .name = path};
  input.info = input.reader->info();
  if (input.info.files.empty()) input.info.files.push_back(path);
  std::error_code error;
  const std::string beside = parametersBeside(path);
  if (!format.holdsParameters() && fs::exists(beside, error)) loadParameters(input, beside);
  return input;
}

Input openInput(const std::vector<std::string>& inputs, const ReadOptions& options)
{
  if (inputs.empty()) throw Error("There is no input.");
  Input input = inputs.size() > 1     ? openSequence(orderOfList(inputs), inputs.front())
                : isFolder(inputs[0]) ? openSequence(slicesInFolder(inputs[0]), inputs[0])
                                      : openSingle(inputs[0]);
  takeGeometry(input.info);
  settleSizes(input, options.unequalSlices);
  return input;
}

const std::string& nameOf(const std::vector<std::string>& inputs)
{
  static const std::string none = "input";
  return inputs.empty() ? none : inputs.front();
}

/// Reads all slices into a lattice.
void fill(ZxLattice& lattice, Input& input)
{
  const int slices = lattice.getDims().slices;
  ZxWorkArea* area = ZxWorkArea::getTheWorkArea();
  for (int k = 0; k < slices; ++k) {
    throwIfInterrupted();
    if (area->isWorking()) area->setProgressFraction(static_cast<float>(k) / static_cast<float>(slices));
    void* slice = lattice.beginWrite(k);
    if (!slice) cannotRead(input.name, "its voxels cannot be kept");
    input.reader->readSlice(k, slice);
    if (!lattice.endWrite(k)) cannotRead(input.name, "its voxels cannot be kept");
  }
}

/// Where the voxels of what is read are to be.
enum class Voxels {
  InMemory,
  InFile,           ///< where they can stay there
  InMemoryIfTheyFit ///< else in the file where they can stay there
};

Voxels placeOf(const ReadOptions& options)
{
  return options.tooLarge == TooLarge::LeaveInFile ? Voxels::InMemoryIfTheyFit : Voxels::InMemory;
}

/// A lattice whose voxels stay in the file.
template <class Lattice>
std::unique_ptr<Lattice> fileLattice(Input& input)
{
  return std::make_unique<Lattice>(input.info.shape,
                                   std::make_unique<FileVoxelSource>(std::move(input.reader), input.name));
}

/// A lattice ready for use. What is to be in memory is read now.
template <class Lattice>
std::unique_ptr<Lattice> readLattice(Input& input, Voxels voxels)
{
  const ZxLatticeShape& shape = input.info.shape;
  const bool canStay = input.reader->readsInAnyOrder();
  std::unique_ptr<Lattice> lattice;
  if (voxels == Voxels::InFile && canStay)
    lattice = fileLattice<Lattice>(input);
  else if ((lattice = Lattice::create(shape)))
    fill(*lattice, input);
  else if (voxels == Voxels::InMemoryIfTheyFit && canStay) {
    lattice = fileLattice<Lattice>(input);
    input.info.remarks.push_back("\"" + input.name + "\" stays in its file: it does not fit into memory.");
  } else {
    cannotRead(input.name, "its " + std::to_string(shape.dims.width) + " x " +
                               std::to_string(shape.dims.height) + " x " + std::to_string(shape.dims.slices) +
                               " voxels do not fit into the free memory of " +
                               std::to_string(zxAvailableMemory() >> 20) + " MB");
  }
  lattice->setBoundingBox(input.info.geometry.box(shape.dims));
  return lattice;
}

void finish(ZxSpatialData& data, const Input& input)
{
  data.parameters() = input.info.parameters;
  input.info.geometry.store(data.parameters());
  data.setLabel(fs::path(withoutSlash(input.name)).filename().string());
  data.setSaved();
  for (const std::string& remark : input.info.remarks) ZxMessage::getTheMsg()->printf("%s", remark.c_str());
}

bool canBeLabels(const Input& input)
{
  const ZxLatticeShape& shape = input.info.shape;
  return shape.numDataVars == 1 && ZxLabelLattice::isLabelType(shape.primType);
}

/// True for a lattice whose voxels are read from files: their reader has gone over to it.
bool staysInFile(const Input& input) { return !input.reader; }

McHandle<ZxField3> fieldOf(Input& input, Voxels voxels)
{
  auto lattice = readLattice<ZxLattice3>(input, voxels);
  McHandle<ZxField3> field;
  if (staysInFile(input))
    field = mcMake<ZxExternalData>(std::move(lattice));
  else
    field = ZxField3::create(std::move(lattice));
  finish(*field, input);
  return field;
}

McHandle<ZxUniformLabelField3> labelsOf(Input& input, Voxels voxels)
{
  auto field = mcMake<ZxUniformLabelField3>(readLattice<ZxLabelLattice3>(input, voxels));
  finish(*field, input);
  return field;
}

McHandle<ZxField3> readField(const std::vector<std::string>& inputs, const ReadOptions& options,
                             Voxels voxels)
{
  return guarded("read", nameOf(inputs), [&] {
    Input input = openInput(inputs, options);
    return fieldOf(input, voxels);
  });
}

McHandle<ZxUniformLabelField3> readLabelField(const std::vector<std::string>& inputs,
                                              const ReadOptions& options, Voxels voxels)
{
  return guarded("read", nameOf(inputs), [&] {
    Input input = openInput(inputs, options);
    if (!canBeLabels(input)) {
      cannotRead(input.name, "labels are integers of 8, 16 or 32 bits, not " + input.info.storedType);
    }
    return labelsOf(input, voxels);
  });
}

/// Where a volume is written: a file, or a sequence.
struct Output {
  std::string path; ///< of the file, or of slice 0 of the sequence
  std::optional<SequenceTarget> sequence;
  const Format* format = nullptr;

  explicit Output(const std::string& target) : path(target), sequence(SequenceTarget::of(target))
  {
    if (sequence) path = sequence->folder + sequence->pattern.name(0);
    format = formatOfName(path);
  }
  std::string folder() const { return path.substr(0, path.rfind('/') + 1); }
  std::string name() const { return path.substr(path.rfind('/') + 1); }
};

/// Only the last folder of "results/slices/" is created; the one above it has to be there.
bool createsFolder(const std::string& target, const std::string& folder)
{
  std::error_code error;
  return target.ends_with('/') && !fs::exists(withoutSlash(folder), error);
}

std::string folderProblem(const std::string& folder)
{
  const std::string path = folder.empty() ? "." : withoutSlash(folder);
  std::error_code error;
  if (!fs::exists(path, error)) return "the folder \"" + path + "\" does not exist";
  if (!fs::is_directory(path, error)) return "\"" + path + "\" is not a folder";
  if (access(path.c_str(), W_OK | X_OK) != 0) return "the folder \"" + path + "\" cannot be written to";
  return {};
}

std::string pathProblem(const Output& output, const std::string& target, int slices)
{
  const std::string folder = output.folder();
  if (createsFolder(target, folder))
    return folderProblem(fs::path(withoutSlash(folder)).parent_path().string());
  if (std::string problem = folderProblem(folder); !problem.empty()) return problem;
  if (output.sequence) return output.sequence->problem(slices);
  std::error_code error;
  const fs::file_status status = fs::status(output.path, error);
  if (fs::is_directory(status)) return "it is a folder; end the name in / for one file a slice";
  if (fs::exists(status) && !fs::is_regular_file(status)) return "it is not a regular file";
  // Files are replaced by renaming, which their own protection would not keep from.
  if (fs::exists(status) && ::access(output.path.c_str(), W_OK) != 0) return "it is write-protected";
  return {};
}

std::string outputProblem(const Output& output, const ZxLatticeShape& shape, const std::string& target)
{
  if (output.name().empty()) return "the name is empty";
  if (!output.format) return "the ending of the name is unknown; use " + writableEndings();
  ZxLatticeShape each = shape;
  if (output.sequence) each.dims.slices = 1;
  std::string problem = output.format->cannotHold(each);
  return problem.empty() ? pathProblem(output, target, shape.dims.slices) : problem;
}

void writeFile(const ZxSpatialData& data, const std::string& path, const Format& format)
{
  // A link stays a link: what it leads to is replaced.
  std::error_code error;
  const fs::path real = fs::is_symlink(path, error) ? fs::weakly_canonical(path, error) : fs::path(path);
  const std::string name = real.filename().string();
  const std::string folder = real.string().substr(0, real.string().size() - name.size());
  AtomicFiles files(folder);
  format.write(data, folder + name, files.temporary(name));
  const std::string beside = parametersBeside(name);
  const std::string parameters = format.holdsParameters() ? std::string() : parametersText(data);
  if (!parameters.empty()) writeText(parameters, folder + beside, files.temporary(beside));
  files.commit(name);
  if (parameters.empty()) fs::remove(folder + beside, error); // Those of a file that is no more.
}

void writeSequence(const ZxSpatialData& data, const SequenceTarget& sequence, const std::string& target,
                   const Format& format)
{
  const bool created = createsFolder(target, sequence.folder);
  std::error_code error;
  if (created && !fs::create_directory(withoutSlash(sequence.folder), error))
    cannotWrite(target, error.message());
  try {
    sequence.write(data, format);
  } catch (...) {
    if (created) fs::remove(withoutSlash(sequence.folder), error);
    throw;
  }
}

/// Where data are to be written. Throws Error when they cannot be.
Output checkedOutput(const ZxSpatialData& data, const std::string& path)
{
  const ZxLattice* lattice = data.getLattice();
  if (!lattice || !lattice->isValid()) cannotWrite(path, "there are no voxels to write");
  Output output(path);
  const std::string problem = outputProblem(output, lattice->shape(), path);
  if (!problem.empty()) cannotWrite(path, problem);
  return output;
}

int continueFile(const ZxSpatialData& data, const std::string& path, const Format& format)
{
  const int slices = format.continueWriting(data, path);
  if (!format.holdsParameters()) writeParameters(data, parametersBeside(path));
  return slices;
}

int continueSequence(const ZxSpatialData& data, const SequenceTarget& sequence, const std::string& target,
                     const Format& format)
{
  std::error_code error;
  if (createsFolder(target, sequence.folder) && !fs::create_directory(withoutSlash(sequence.folder), error))
    cannotWrite(target, error.message());
  return sequence.continueWriting(data, format);
}

} // namespace

VolumeInfo readInfo(const std::vector<std::string>& inputs, const ReadOptions& options)
{
  return guarded("read", nameOf(inputs), [&] { return openInput(inputs, options).info; });
}

McHandle<ZxField3> readVolume(const std::vector<std::string>& inputs, const ReadOptions& options)
{
  return readField(inputs, options, placeOf(options));
}

McHandle<ZxField3> openVolume(const std::vector<std::string>& inputs, const ReadOptions& options)
{
  return readField(inputs, options, Voxels::InFile);
}

McHandle<ZxUniformLabelField3> readLabels(const std::vector<std::string>& inputs, const ReadOptions& options)
{
  return readLabelField(inputs, options, placeOf(options));
}

McHandle<ZxUniformLabelField3> openLabels(const std::vector<std::string>& inputs, const ReadOptions& options)
{
  return readLabelField(inputs, options, Voxels::InFile);
}

McHandle<ZxSpatialData> readAnything(const std::vector<std::string>& inputs, const ReadOptions& options)
{
  return guarded("read", nameOf(inputs), [&] {
    Input input = openInput(inputs, options);
    std::string content;
    input.info.parameters.findString(ZxFileAccess::contentParameter, content);
    const bool isLabels = content == ZxFileAccess::labelContent && canBeLabels(input);
    const Voxels voxels = placeOf(options);
    return isLabels ? McHandle<ZxSpatialData>(labelsOf(input, voxels))
                    : McHandle<ZxSpatialData>(fieldOf(input, voxels));
  });
}

void writeVolume(const ZxSpatialData& data, const std::string& path)
{
  guarded("write", path, [&] {
    const Output output = checkedOutput(data, path);
    if (output.sequence)
      writeSequence(data, *output.sequence, path, *output.format);
    else
      writeFile(data, path, *output.format);
  });
}

int continueVolume(const ZxSpatialData& data, const std::string& path)
{
  return guarded("write", path, [&] {
    const Output output = checkedOutput(data, path);
    return output.sequence ? continueSequence(data, *output.sequence, path, *output.format)
                           : continueFile(data, path, *output.format);
  });
}

std::string checkWritable(const ZxLatticeShape& shape, const std::string& path)
{
  try {
    const Output output(path);
    const std::string problem = outputProblem(output, shape, path);
    if (!problem.empty()) cannotWrite(path, problem);
  } catch (const std::exception& error) {
    return error.what();
  }
  return {};
}

} // namespace io
