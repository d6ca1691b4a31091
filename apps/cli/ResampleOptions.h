#pragma once

#include "AlignModule.h"
#include "InputOptions.h"

#include <cstdint>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace cli {

class OutputFiles;

/// Refuses, before it is tried, work on slices of which so many do not fit into the free memory: those of
/// input, output and what lies between them.
void requireMemory(const ZxLatticeShape& shape, const char* whose, std::uint64_t slices = 12);

/// How the aligned volume is made: the options that the commands align and resample share.
class ResampleOptions {
public:
  void declare(CLI::App& options);

  bool hasLabels() const noexcept { return !m_labels.empty(); }
  const std::string& labels() const noexcept { return m_labels; }
  const std::string& labelsOutput() const noexcept { return m_labelsOutput; }
  const std::string& interpolation() const noexcept { return m_interpolation; }

  /// Shape of the aligned volume as far as it is known before the alignment.
  ZxLatticeShape outputShape(const ZxLatticeShape& input) const;
  /// Checks the label field against the input and announces its output. Only its header is read.
  void announceLabels(const InputOptions& input, const ZxLatticeShape& inputShape, OutputFiles& files) const;

  /// Adds what decides about the aligned volume.
  void addFacts(RunFacts& facts) const;

  /// Opens the label field and sets interpolation and background.
  void prepare(AlignModule& module, const ZxLatticeShape& input);
  /// Sets the size of the output, which --auto-size takes from the transforms as they are, and connects the
  /// label field. Refuses slices that do not fit into memory.
  void settle(AlignModule& module, const ZxLatticeShape& input) const;

private:
  void setBackground(AlignModule& module, bool colour) const;
  void setSize(AlignModule& module) const;

  std::vector<int> m_size;
  bool m_autoSize = false;
  std::string m_background;
  std::string m_interpolation = "linear";
  std::string m_labels;
  std::string m_labelsOutput;
  McHandle<ZxUniformLabelField3> m_labelField;
};

} // namespace cli
