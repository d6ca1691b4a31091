#pragma once

#include <string>
#include <vector>

namespace apps {

/// Evaluates the start-up script that the environment variable ZX_STARTUP names, and lists for the package
/// the plug-ins that lie beside it, those that the script has listed, and those that are wanted besides
/// ("NAME SYMBOL LIBRARY" each, a list of the interpreter). Done once in the life of the program, after the
/// package was loaded and before the first module is made.
///
/// Empty, or one sentence about the script.
std::string announcePlugIns(const std::vector<std::string>& wanted = {});

} // namespace apps
