#pragma once

#include <string>
#include <vector>

namespace orvel {

/// Runs a script without showing a window. Messages go to standard error, progress too where that is a
/// terminal; Ctrl+C stops the script. Returns the exit status of the program.
int runBatch(const std::string& script, const std::vector<std::string>& arguments);

} // namespace orvel
