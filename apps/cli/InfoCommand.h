#pragma once

#include "Command.h"
#include "InputOptions.h"

namespace cli {

/// `zxalign info`: prints what is known of a volume without reading its voxels.
class InfoCommand : public Command {
public:
  void declare(CLI::App& options) override;
  void run(Console& console) override;

private:
  InputOptions m_input;
};

} // namespace cli
