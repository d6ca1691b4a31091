#pragma once

#include <string>
#include <vector>

namespace orvel {

/// Shows the window, opens files in it, runs a script (if it has a name) when it is there, and returns the
/// exit status when the window has been closed.
int runWindow(const std::string& script, const std::vector<std::string>& files);

} // namespace orvel
