#pragma once

#include "Command.h"
#include "samples/Phantom.h"
#include "zx/ZxField3.h"

#include <string>

namespace cli {

/// `zxalign phantom`: a made-up stack whose slices are displaced in a known way.
class PhantomCommand : public Command {
public:
  void declare(CLI::App& options) override;
  void run(Console& console) override;

private:
  std::string m_output;
  std::string m_truth; ///< name of the table of the true transforms; empty for none
  samples::PhantomOptions m_options;
};

/// Renders a phantom into a field in memory: 8-bit grey, one unit per voxel. Throws Failure when it does not
/// fit in memory, Stopped when the user stopped it.
McHandle<ZxField3> renderPhantom(const samples::Phantom& phantom);

} // namespace cli
