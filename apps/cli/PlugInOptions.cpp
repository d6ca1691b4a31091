#include "PlugInOptions.h"

#include "Failure.h"
#include "zx/ZxInterpreter.h"
#include "zx/ZxPackage.h"
#include "zxalign/ZxAlignControl.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace cli {
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

void PlugInOptions::declare(CLI::App& options)
{
  options
      .add_option("--plugin", m_wanted,
                  "Load further methods: a name, the entry symbol and the library in one argument; can be "
                  "repeated")
      ->expected(1)
      ->take_all()
      ->type_name("\"NAME SYMBOL LIBRARY\"");
}

void PlugInOptions::announce() const
{
  static bool done = false;
  if (done) return;
  done = true;
  ZxInterpreter& interpreter = ZxInterpreter::getTheInterpreter();
  if (const char* script = std::getenv("ZX_STARTUP"); script && *script) {
    const std::string problem = interpreter.evalFile(script);
    if (!problem.empty()) throw Failure(problem);
  }
  // A list put before or behind another one is their sum, and malformed when one of them is.
  std::string list = ZxInterpreter::makeList(installedPlugIns());
  if (const char* listed = interpreter.getVar(kZxAlignPlugInVariable)) list += std::string(" ") + listed;
  list += " " + ZxInterpreter::makeList(m_wanted);
  interpreter.setVar(kZxAlignPlugInVariable, list.c_str());
}

} // namespace cli
