#include "ResampleOptions.h"

#include "Console.h"
#include "Failure.h"
#include "OutputFiles.h"
#include "Text.h"
#include "zx/ZxMemory.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace cli {
namespace {

constexpr const char* kMostFrequent = "most-frequent";

/// "r,g,b" and "r,g,b,a" as the four values of a colour, alpha 255 where it is left out; one value is a grey.
std::string colourOf(const std::string& text)
{
  const auto parts = static_cast<int>(split(text, ',').size());
  if (parts == 4) return text;
  if (parts == 3) return text + ",255";
  if (parts == 1) return text + "," + text + "," + text + ",255";
  throw Failure("--background of a colour volume is one, three or four values, not \"" + text + "\".");
}

} // namespace

void ResampleOptions::declare(CLI::App& options)
{
  auto* size = options
                   .add_option("--size", m_size,
                               "Width and height of the output in pixels (default: those of the input); "
                               "the slices lie in its middle")
                   ->expected(2)
                   ->type_name("W H");
  options
      .add_flag("--auto-size", m_autoSize,
                "Make the output as large as needed to hold every aligned slice whole")
      ->excludes(size);
  options
      .add_option("--background", m_background,
                  "Value where a slice does not reach: a grey value, r,g,b or r,g,b,a for colour, or "
                  "most-frequent for each slice's most frequent value (default: 0)")
      ->type_name("VALUE");
  options
      .add_option("--interpolation", m_interpolation,
                  "nearest or linear; linear loses the last column and row of each slice, and nearest "
                  "keeps the values as they are (default: linear)")
      ->check(CLI::IsMember({"nearest", "linear"}).description(""))
      ->type_name("KIND");
  auto* labels =
      options.add_option("--labels", m_labels, "A label field of the size of the input, aligned with it")
          ->type_name("FILE");
  auto* output = options.add_option("--labels-out", m_labelsOutput, "Where the aligned label field goes")
                     ->type_name("FILE");
  labels->needs(output);
  output->needs(labels);
}

ZxLatticeShape ResampleOptions::outputShape(const ZxLatticeShape& input) const
{
  ZxLatticeShape shape = input;
  if (m_size.size() == 2) {
    if (m_size[0] < 1 || m_size[1] < 1) throw Failure("--size is at least 1 x 1 pixels.");
    shape.dims.width = m_size[0];
    shape.dims.height = m_size[1];
  }
  return shape;
}

void ResampleOptions::announceLabels(const InputOptions& input, const ZxLatticeShape& inputShape,
                                     OutputFiles& files) const
{
  if (!hasLabels()) return;
  const io::VolumeInfo info = io::readInfo({m_labels});
  requireSameDims("label field", m_labels, info.shape.dims, input, inputShape.dims);
  files.announceVolume(m_labelsOutput, outputShape(info.shape));
}

void requireMemory(const ZxLatticeShape& shape, const char* whose, std::uint64_t slices)
{
  if (shape.sliceBytes() <= zxAvailableMemory() / slices) return;
  throw Failure(std::string(whose) + " slices of " + std::to_string(shape.dims.width) + " x " +
                std::to_string(shape.dims.height) + " pixels are too large for the free memory.");
}

void ResampleOptions::addFacts(RunFacts& facts) const
{
  facts.push_back(
      {"--size", m_size.size() == 2 ? std::to_string(m_size[0]) + " " + std::to_string(m_size[1]) : ""});
  facts.push_back({"--auto-size", m_autoSize ? "on" : "off"});
  facts.push_back({"--background", m_background});
  facts.push_back({"--interpolation", m_interpolation});
  facts.push_back({"--labels", pathFact(m_labels)});
  facts.push_back({"--labels-out", pathFact(m_labelsOutput)});
  if (hasLabels()) addFileFacts(io::readInfo({m_labels}).files, facts);
}

void ResampleOptions::prepare(AlignModule& module, const ZxLatticeShape& input)
{
  if (hasLabels()) {
    const WorkingPhase phase("Reading " + m_labels);
    m_labelField = io::openLabels({m_labels});
  }
  module.setInterpolation(m_interpolation == "nearest" ? Interpolation::Nearest : Interpolation::Linear);
  setBackground(module, input.numDataVars == 4);
}

void ResampleOptions::setBackground(AlignModule& module, bool colour) const
{
  if (m_background.empty()) return;
  if (m_background == kMostFrequent)
    module.set("most-frequent-background", "on");
  else if (colour)
    module.set("background-colour", colourOf(m_background));
  else
    module.set("background", m_background);
}

void ResampleOptions::setSize(AlignModule& module) const
{
  if (!m_autoSize && m_size.size() != 2) return;
  int width = 0, height = 0;
  if (m_autoSize)
    module.control().minimalSize(width, height);
  else
    width = m_size[0], height = m_size[1];
  module.set("width", std::to_string(width));
  module.set("height", std::to_string(height));
  if (m_autoSize) module.set("automatic-origin", "on");
}

void ResampleOptions::settle(AlignModule& module, const ZxLatticeShape& input) const
{
  setSize(module);
  ZxLatticeShape output = input;
  output.dims.width = parseInteger(module.control().getSetting("width")).value_or(output.dims.width);
  output.dims.height = parseInteger(module.control().getSetting("height")).value_or(output.dims.height);
  // Other sizes have been checked when nothing was held yet.
  constexpr std::uint64_t ofOutput = 4;
  if (m_autoSize) requireMemory(output, "Aligned", ofOutput);
  if (m_labelField) module.connect("LabelField", *m_labelField);
}

} // namespace cli
