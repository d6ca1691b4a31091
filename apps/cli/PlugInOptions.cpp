#include "PlugInOptions.h"

#include "Failure.h"
#include "common/PlugIns.h"

#include <CLI/CLI.hpp>

namespace cli {

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
  const std::string problem = apps::announcePlugIns(m_wanted);
  if (!problem.empty()) throw Failure(problem);
}

} // namespace cli
