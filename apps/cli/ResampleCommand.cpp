#include "ResampleCommand.h"

#include "AlignModule.h"
#include "Console.h"
#include "Failure.h"
#include "GrowingVolume.h"
#include "OutputFiles.h"
#include "PartialOutput.h"
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
  auto* table =
      options
          .add_option("--transforms", m_transforms,
                      "Apply the transforms of this table instead of the alignment stored in the input")
          ->type_name("FILE.csv");
  options
      .add_option(
          "--scale", m_scaleText,
          "Size of the slices that the table was made on, as a part of those of the input: 1/4, 0.25, 2")
      ->needs(table)
      ->type_name("F");
  m_resample.declare(options);
  options.add_flag("--resume", m_resume, "Go on after the last slice of a stopped run, from OUTPUT.partial");
}

void ResampleCommand::check(const io::VolumeInfo& info) const
{
  requireMemory(info.shape, "The");
  requireMemory(m_resample.outputShape(info.shape), "Aligned");
  if (!m_transforms.empty()) return;
  if (!hasAlignment(info.parameters)) throw Failure(m_input.name() + " carries no alignment.");
  if (isAligned(info.parameters))
    throw Failure("The alignment stored in " + m_input.name() + " has been applied to it already.");
}

void ResampleCommand::announce(const io::VolumeInfo& info, OutputFiles& files) const
{
  files.protect(m_input.paths(), OutputFiles::Input::Replaceable);
  if (!m_transforms.empty()) files.protect({m_transforms}, OutputFiles::Input::Protected);
  if (m_resample.hasLabels()) files.protect({m_resample.labels()}, OutputFiles::Input::Replaceable);
  files.announceVolume(m_output, m_resample.outputShape(info.shape));
  files.announceFolder(PartialOutput::nameFor(m_output));
  m_resample.announceLabels(m_input, info.shape, files);
}

ZxDims ResampleCommand::tableDims(const ZxDims& dims) const
{
  ZxDims stated = statedSize(m_transforms);
  const int reduction = m_scale.reduction(), enlargement = m_scale.enlargement();
  if (stated.width == 0)
    return {dims.width / reduction * enlargement, dims.height / reduction * enlargement, dims.slices};
  const auto fits = [&](int ofTable, int ofInput) { return ofTable / enlargement == ofInput / reduction; };
  if (!fits(stated.width, dims.width) || !fits(stated.height, dims.height))
    throw Failure("The table " + m_transforms + " is for slices of " + std::to_string(stated.width) + " x " +
                  std::to_string(stated.height) + " pixels, which is not " + m_scale.text() +
                  " times the size of those of " + m_input.name() + ".");
  stated.slices = dims.slices;
  return stated;
}

std::vector<ZxAlignTransform> ResampleCommand::readTable(const ZxDims& dims) const
{
  if (m_scale.isOne()) return readTransformTable(m_transforms, dims.width, dims.height);
  const ZxDims table = tableDims(dims);
  std::vector<ZxAlignTransform> transforms = readTransformTable(m_transforms);
  for (ZxAlignTransform& transform : transforms) transform = m_scale.toFull(transform, table, dims);
  return transforms;
}

void ResampleCommand::applyTable(AlignModule& module, const ZxDims& dims) const
{
  if (m_transforms.empty()) return;
  const std::vector<ZxAlignTransform> transforms = readTable(dims);
  if (!module.control().setTransforms(transforms))
    throw Failure("The table " + m_transforms + " has " + std::to_string(transforms.size()) +
                  " slices, but " + m_input.name() + " has " + std::to_string(dims.slices) + ".");
}

RunFacts ResampleCommand::facts(const io::VolumeInfo& info) const
{
  RunFacts facts = {{"the command", "resample"}, {"the version", ZXALIGN_VERSION}};
  m_input.addFacts(info, facts);
  facts.push_back({"--transforms", pathFact(m_transforms)});
  addFileFacts({m_transforms}, facts);
  facts.push_back({"--scale", m_scale.text()});
  m_resample.addFacts(facts);
  return facts;
}

void ResampleCommand::write(AlignModule& module, OutputFiles& files, PartialOutput& partial,
                            Console& console) const
{
  const WorkingPhase phase("Writing " + m_output);
  growVolume(files, partial, PartialOutput::kVolume, m_output, module.alignedVolume(), console);
  if (m_resample.hasLabels())
    growVolume(files, partial, PartialOutput::kLabels, m_resample.labelsOutput(), module.alignedLabels(),
               console);
  files.commit();
  partial.remove();
}

void ResampleCommand::run(Console& console)
{
  AlignModule module(console);
  if (!m_scaleText.empty()) m_scale = SliceScale::of(m_scaleText, SliceScale::Allowed::Both);
  const io::VolumeInfo info = m_input.info();
  check(info);
  OutputFiles files;
  announce(info, files);
  using Start = PartialOutput::Start;
  PartialOutput partial(m_output, m_resume ? Start::Resume : Start::Anew, console);

  const Stopwatch watch;
  ZxDims dims = info.shape.dims;
  partial.guard([&] {
    const McHandle<ZxField3> volume = m_input.open();
    module.connectInput(*volume, AlignModule::Window::Later); // no slices are compared
    applyTable(module, info.shape.dims);
    m_resample.prepare(module, info.shape);
    m_resample.settle(module, info.shape);
    partial.describe(facts(info));
    console.remarks();
    dims = module.alignedVolume()->getLattice()->getDims();
    write(module, files, partial, console);
  });
  console.summary(sizeName(dims) + " voxels resampled in " + fixed(watch.seconds(), 1) + " s.");
}

} // namespace cli
