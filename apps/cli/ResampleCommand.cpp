#include "ResampleCommand.h"

#include "AlignModule.h"
#include "Console.h"
#include "Failure.h"
#include "OutputFiles.h"
#include "Stopwatch.h"
#include "StoredAlignment.h"
#include "Text.h"
#include "TransformTable.h"

#include <CLI/CLI.hpp>

namespace cli {

void ResampleCommand::declare(CLI::App& options)
{
  m_input.declare(options);
  options
      .add_option("-o,--output", m_output,
                  "The aligned volume; its name ending chooses the format, as in the command align")
      ->required()
      ->type_name("FILE");
  options
      .add_option("--transforms", m_transforms,
                  "Apply the transforms of this table instead of the alignment stored in the input")
      ->type_name("FILE.csv");
  m_resample.declare(options);
}

void ResampleCommand::check(const io::VolumeInfo& info) const
{
  if (!m_transforms.empty()) return;
  if (!hasAlignment(info.parameters)) throw Failure(m_input.name() + " carries no alignment.");
  if (isAligned(info.parameters))
    throw Failure("The alignment stored in " + m_input.name() + " has been applied to it already.");
}

void ResampleCommand::applyTable(AlignModule& module, const ZxDims& dims) const
{
  if (m_transforms.empty()) return;
  const std::vector<ZxAlignTransform> transforms = readTransformTable(m_transforms, dims.width, dims.height);
  if (!module.control().setTransforms(transforms))
    throw Failure("The table " + m_transforms + " has " + std::to_string(transforms.size()) +
                  " slices, but " + m_input.name() + " has " + std::to_string(dims.slices) + ".");
}

void ResampleCommand::run(Console& console)
{
  AlignModule module(console);
  const io::VolumeInfo info = m_input.info();
  check(info);
  OutputFiles files;
  files.protect(m_input.paths(), OutputFiles::Input::Replaceable);
  if (!m_transforms.empty()) files.protect({m_transforms}, OutputFiles::Input::Protected);
  if (m_resample.hasLabels()) files.protect({m_resample.labels()}, OutputFiles::Input::Replaceable);
  files.announceVolume(m_output, m_resample.outputShape(info.shape));
  m_resample.announceLabels(m_input, info.shape, files);

  const Stopwatch watch;
  const McHandle<ZxField3> volume = m_input.read();
  module.connectInput(*volume);
  applyTable(module, info.shape.dims);
  m_resample.prepare(module, info.shape);
  m_resample.resample(module, info.shape);

  const WorkingPhase phase("Writing " + m_output);
  files.write(m_output, [&](const std::string& path) { io::writeVolume(*module.result(), path); });
  if (m_resample.hasLabels())
    files.write(m_resample.labelsOutput(),
                [&](const std::string& path) { io::writeVolume(*module.labelResult(), path); });
  files.commit();
  console.summary(sizeName(module.result()->getLattice()->getDims()) + " voxels resampled in " +
                  fixed(watch.seconds(), 1) + " s.");
}

} // namespace cli
