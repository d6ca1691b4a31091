#pragma once

#include <string>

/// Commands as the console evaluates them.
namespace QxTcl {

struct Result {
  bool ok = false;
  std::string text; ///< what the command returned, or what is wrong
};
Result eval(const std::string& command);

} // namespace QxTcl
