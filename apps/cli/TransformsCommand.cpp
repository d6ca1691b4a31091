#include "TransformsCommand.h"

#include "AlignModule.h"
#include "Console.h"
#include "Failure.h"
#include "OutputFiles.h"
#include "StoredAlignment.h"
#include "Text.h"
#include "TransformTable.h"

#include <CLI/CLI.hpp>

namespace cli {

void TransformsCommand::declare(CLI::App& options)
{
  m_input.declare(options);
  options.add_option("-o,--output", m_output, "Write the table to this file instead of printing it")
      ->type_name("FILE.csv");
  options.footer(
      "The table has a row slice,tx,ty,angle_deg,flip for every slice, counted from 0: its forward\n"
      "mapping into the aligned frame in pixels (y downwards) and degrees. The commands align\n"
      "(--start-from) and resample (--transforms) read it back.");
}

void TransformsCommand::run(Console& console)
{
  AlignModule module(console);
  const io::VolumeInfo info = m_input.info();
  if (!hasAlignment(info.parameters)) throw Failure(m_input.name() + " carries no alignment.");
  OutputFiles files;
  files.protect(m_input.paths(), OutputFiles::Input::Protected);
  if (!m_output.empty()) files.announceFile(m_output);

  const McHandle<ZxField3> carrier = alignmentCarrier(info);
  module.connectInput(*carrier);
  const std::vector<ZxAlignTransform> transforms = module.control().transforms();
  const ZxDims& dims = carrier->getLattice()->getDims();
  if (m_output.empty()) {
    console.result(std::string(trimmed(transformTableText(transforms, dims.width, dims.height))));
    return;
  }
  files.write(m_output, [&](const std::string& path) {
    writeTransformTable(transforms, dims.width, dims.height, path);
  });
  files.commit();
}

} // namespace cli
