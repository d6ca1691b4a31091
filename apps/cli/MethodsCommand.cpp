#include "MethodsCommand.h"

#include "AlignModule.h"
#include "Console.h"
#include "MethodNames.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace cli {

void MethodsCommand::declare(CLI::App& options)
{
  m_plugIns.declare(options);
  options.footer("Each line holds the id, the registered name and the short name, where there is one. "
                 "zxalign align --method takes any of the three.");
}

void MethodsCommand::run(Console& console)
{
  AlignModule module(console, m_plugIns);
  const std::vector<ZxAlignControl::Method> methods = module.control().methods();
  const auto shortNameOf = [&](const auto& method) { return methodName(module.control(), method.id); };
  std::size_t width = 0; // of the names that have something beside them
  for (const ZxAlignControl::Method& method : methods)
    if (shortNameOf(method) != method.name) width = std::max(width, method.name.size());
  for (const ZxAlignControl::Method& method : methods) {
    const std::string shortName = shortNameOf(method);
    std::string line = std::to_string(method.id) + " " + method.name;
    if (shortName != method.name) line += std::string(width - method.name.size() + 1, ' ') + shortName;
    console.result(line);
  }
}

} // namespace cli
