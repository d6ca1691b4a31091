#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace cli {

/// The plug-ins that a command asks for, besides those that are installed beside the package and those that
/// the start-up script lists.
class PlugInOptions {
public:
  void declare(CLI::App& options);

  /// Evaluates the start-up script and lists all plug-ins for the package, once in the life of the program
  /// and before the first module is made. Throws Failure when the script is at fault.
  void announce() const;

private:
  std::vector<std::string> m_wanted; ///< "NAME SYMBOL LIBRARY", a list of the interpreter
};

} // namespace cli
