#pragma once

#include "Command.h"
#include "PlugInOptions.h"

namespace cli {

/// `zxalign methods`: lists the automatic methods in the order of registration, those of plug-ins included:
/// id, registered name and, where it has one, the short name.
class MethodsCommand : public Command {
public:
  void declare(CLI::App& options) override;
  void run(Console& console) override;

private:
  PlugInOptions m_plugIns;
};

} // namespace cli
