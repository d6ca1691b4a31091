#pragma once

#include <string>
#include <vector>

/// Number of the interface that packages are built against. A package returns the number that it was built
/// with; the host loads only its own.
inline constexpr int kZxBuildId = 1;

/// Loads packages: shared libraries that register classes with the type system.
class ZxPackage {
public:
  /// Loads the package of that name and calls its entry point `orvelpackage_<name>_init`. Loading it again
  /// does nothing. Looks in the folders of the environment variable ZX_PACKAGE_PATH (separated by ':'), then
  /// in the program's own library folders.
  ///
  /// Returns an empty string, or one sentence that says what is wrong.
  static std::string load(const std::string& name);

  /// The names of the packages that were loaded.
  static std::vector<std::string> loaded();
  /// The folder from which a package was loaded, where what belongs to it lies; empty when it was not loaded.
  static std::string folder(const std::string& name);
};
