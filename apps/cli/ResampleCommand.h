#pragma once

#include "Command.h"
#include "InputOptions.h"
#include "ResampleOptions.h"
#include "SliceScale.h"

#include <string>
#include <vector>

namespace cli {

class AlignModule;
class PartialOutput;

/// `zxalign resample`: makes the aligned volume from a stored alignment.
class ResampleCommand : public Command {
public:
  void declare(CLI::App& options) override;
  void run(Console& console) override;

private:
  void check(const io::VolumeInfo& info) const;
  void announce(const io::VolumeInfo& info, OutputFiles& files) const;
  std::vector<ZxAlignTransform> readTable(const ZxDims& dims) const;
  /// The size of the slices that the table was made on.
  ZxDims tableDims(const ZxDims& dims) const;
  void applyTable(AlignModule& module, const ZxDims& dims) const;
  RunFacts facts(const io::VolumeInfo& info) const;
  void write(AlignModule& module, OutputFiles& files, PartialOutput& partial, Console& console) const;

  InputOptions m_input;
  ResampleOptions m_resample;
  std::string m_output;
  std::string m_transforms;
  std::string m_scaleText;
  SliceScale m_scale;
  bool m_resume = false;
};

} // namespace cli
