#include "InputOptions.h"

#include "Console.h"
#include "Failure.h"

#include <CLI/CLI.hpp>

namespace cli {

void InputOptions::declare(CLI::App& options)
{
  options
      .add_option("INPUT", m_paths,
                  "A volume (TIFF, MRC, NRRD, MetaImage, NIfTI), a folder of slices, or the slice files "
                  "themselves (TIFF, PNG, JPEG, BMP)")
      ->required()
      ->type_name("");
  options.add_flag("--pad", m_pad,
                   "Pad slices of unequal size to the largest, centred, instead of refusing them");
}

std::string InputOptions::name() const
{
  return m_paths.size() == 1 ? m_paths.front() : m_paths.front() + " and the slices after it";
}

io::ReadOptions InputOptions::readOptions() const
{
  return {m_pad ? io::UnequalSlices::PadToLargest : io::UnequalSlices::Refuse};
}

io::VolumeInfo InputOptions::info() const { return io::readInfo(m_paths, readOptions()); }

McHandle<ZxField3> InputOptions::open() const
{
  const WorkingPhase phase("Reading " + name());
  return io::openVolume(m_paths, readOptions());
}

void InputOptions::addFacts(const io::VolumeInfo& info, RunFacts& facts) const
{
  facts.push_back({"--pad", m_pad ? "on" : "off"});
  addFileFacts(info.files, facts);
}

std::string typeName(const ZxLatticeShape& shape)
{
  const std::string type = mcNameOf(shape.primType);
  if (shape.numDataVars == 1) return type;
  if (shape.numDataVars == 4) return "RGBA " + type;
  return std::to_string(shape.numDataVars) + " x " + type;
}

std::string sizeName(const ZxDims& dims)
{
  return std::to_string(dims.width) + " x " + std::to_string(dims.height) + " x " +
         std::to_string(dims.slices);
}

void requireSameDims(const std::string& what, const std::string& path, const ZxDims& dims,
                     const InputOptions& input, const ZxDims& inputDims)
{
  if (dims == inputDims) return;
  throw Failure("The " + what + " " + path + " has " + sizeName(dims) + " voxels, but " + input.name() +
                " has " + sizeName(inputDims) + ".");
}

} // namespace cli
