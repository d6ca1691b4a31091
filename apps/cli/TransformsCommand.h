#pragma once

#include "Command.h"
#include "InputOptions.h"

#include <string>

namespace cli {

/// `zxalign transforms`: prints or writes the alignment stored in a volume. Its voxels are not read.
class TransformsCommand : public Command {
public:
  void declare(CLI::App& options) override;
  void run(Console& console) override;

private:
  InputOptions m_input;
  std::string m_output;
};

} // namespace cli
