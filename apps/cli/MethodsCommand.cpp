#include "MethodsCommand.h"

#include "AlignModule.h"
#include "Console.h"
#include "MethodNames.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace cli {

void MethodsCommand::declare(CLI::App& options)
{
  options.footer("Each line holds the id, the registered name and the short name, where there is one. "
                 "zxalign align --method takes any of the three.");
}

void MethodsCommand::run(Console& console)
{
  AlignModule module(console);
  const std::vector<ZxAlignControl::Method> methods = module.control().methods();
  std::size_t width = 0;
  for (const ZxAlignControl::Method& method : methods) width = std::max(width, method.name.size());
  for (const ZxAlignControl::Method& method : methods) {
    const std::string shortName = methodName(module.control(), method.id);
    std::string line = std::to_string(method.id) + " " + method.name;
    if (shortName != method.name) line += std::string(width - method.name.size() + 1, ' ') + shortName;
    console.result(line);
  }
}

} // namespace cli
