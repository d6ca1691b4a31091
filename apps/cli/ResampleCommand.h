#pragma once

#include "Command.h"
#include "InputOptions.h"
#include "ResampleOptions.h"

#include <string>

namespace cli {

class AlignModule;

/// `zxalign resample`: makes the aligned volume from a stored alignment.
class ResampleCommand : public Command {
public:
  void declare(CLI::App& options) override;
  void run(Console& console) override;

private:
  void check(const io::VolumeInfo& info) const;
  void applyTable(AlignModule& module, const ZxDims& dims) const;

  InputOptions m_input;
  ResampleOptions m_resample;
  std::string m_output;
  std::string m_transforms;
};

} // namespace cli
