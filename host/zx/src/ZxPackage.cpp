#include "zx/ZxPackage.h"

#include "zx/ZxDSO.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <vector>

namespace fs = std::filesystem;

namespace {

/// Where packages may lie, in order.
std::vector<fs::path> packageFolders()
{
  std::vector<fs::path> folders;
  if (const char* path = std::getenv("ZX_PACKAGE_PATH")) {
    const std::string text = path;
    for (std::size_t begin = 0; begin <= text.size();) {
      const std::size_t end = std::min(text.find(':', begin), text.size());
      if (end > begin) folders.emplace_back(text.substr(begin, end - begin));
      begin = end + 1;
    }
  }
  std::error_code ignored;
  const fs::path bin = fs::read_symlink("/proc/self/exe", ignored).parent_path();
  folders.push_back(bin / ZX_PACKAGES_FROM_BIN);
  folders.push_back(bin.parent_path() / "lib");
  return folders;
}

/// The folders of the packages that were loaded, by name.
std::map<std::string, fs::path>& loadedPackages()
{
  static std::map<std::string, fs::path> packages;
  return packages;
}

using InitFunction = void (*)();
using BuildIdFunction = int (*)();

} // namespace

std::string ZxPackage::load(const std::string& name)
{
  if (loadedPackages().count(name)) return {};
  const std::string fileName = "lib" + name + ".so";
  std::error_code ignored;
  fs::path file;
  for (const fs::path& folder : packageFolders())
    if (file.empty() && fs::is_regular_file(folder / fileName, ignored)) file = folder / fileName;
  if (file.empty())
    return "The package " + name + " was not found: no " + fileName +
           " beside the program or in ZX_PACKAGE_PATH.";

  ZxDSO library;
  if (library.open(file.c_str()) != 0)
    return "The package " + name + " could not be loaded: " + library.getError() + ".";
  const std::string entry = "orvelpackage_" + name;
  const auto buildId = reinterpret_cast<BuildIdFunction>(library.getSymbol(entry.c_str()));
  const auto init = reinterpret_cast<InitFunction>(library.getSymbol((entry + "_init").c_str()));
  if (!buildId || !init) return "The library " + file.string() + " is no package: it lacks " + entry + ".";
  if (buildId() != kZxBuildId)
    return "The package " + file.string() + " was built for another version of the program.";
  init();
  loadedPackages()[name] = file.parent_path();
  return {};
}

std::vector<std::string> ZxPackage::loaded()
{
  std::vector<std::string> names;
  for (const auto& [name, folder] : loadedPackages()) names.push_back(name);
  return names;
}

std::string ZxPackage::folder(const std::string& name)
{
  const auto it = loadedPackages().find(name);
  return it == loadedPackages().end() ? std::string() : it->second.string();
}
