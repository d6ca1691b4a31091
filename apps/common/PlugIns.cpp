#include "PlugIns.h"

#include "zx/ZxInterpreter.h"
#include "zx/ZxPackage.h"
#include "zxalign/ZxAlignControl.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace apps {
namespace {

/// The entry that a file NAME.plugin describes: its line is an entry whose library lies in the same folder.
/// As it stands when it is no such entry.
std::string entryOf(const fs::path& file)
{
  std::ifstream stream(file);
  std::string line;
  std::getline(stream, line);
  auto items = ZxInterpreter::splitList(line.c_str());
  if (!items || items->size() != 3) return line;
  items->back() = (file.parent_path() / items->back()).string();
  return ZxInterpreter::makeList(*items);
}

/// The plug-ins that lie beside the package, in the order of their names.
std::vector<std::string> installedPlugIns()
{
  std::error_code ignored;
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry :
       fs::directory_iterator(fs::path(ZxPackage::folder("zxalign")) / "plugins", ignored))
    if (entry.path().extension() == ".plugin") files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  std::vector<std::string> entries;
  for (const fs::path& file : files) entries.push_back(entryOf(file));
  return entries;
}

} // namespace

std::string announcePlugIns(const std::vector<std::string>& wanted)
{
  static bool done = false;
  if (done) return {};
  done = true;
  ZxInterpreter& interpreter = ZxInterpreter::getTheInterpreter();
  if (const char* script = std::getenv("ZX_STARTUP"); script && *script) {
    std::string problem = interpreter.evalFile(script);
    if (!problem.empty()) return problem;
  }
  // A list put before or behind another one is their sum, and malformed when one of them is.
  std::string list = ZxInterpreter::makeList(installedPlugIns());
  if (const char* listed = interpreter.getVar(kZxAlignPlugInVariable)) list += std::string(" ") + listed;
  list += " " + ZxInterpreter::makeList(wanted);
  interpreter.setVar(kZxAlignPlugInVariable, list.c_str());
  return {};
}

} // namespace apps
