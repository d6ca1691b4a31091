#include "HelpFormatter.h"

#include "Text.h"

namespace cli {

std::string HelpFormatter::make_option(const CLI::Option* option, bool isPositional) const
{
  constexpr std::size_t column = 26;
  std::string name = "  " + make_option_name(option, isPositional);
  if (option->get_type_size() != 0 && !option->get_type_name().empty() && !isPositional)
    name += " " + option->get_type_name();
  std::string description = option->get_description();
  if (!option->get_default_str().empty()) description += " (default: " + option->get_default_str() + ")";
  if (option->get_required() && !isPositional) description += " (required)";
  // A name that is too long for its column has a line of its own.
  const std::string gap =
      name.size() + 1 < column ? std::string(column - name.size(), ' ') : "\n" + std::string(column, ' ');
  return name + gap + wrapped(description, column) + "\n";
}

std::string HelpFormatter::make_option_usage(const CLI::Option* option) const
{
  return make_option_name(option, true) + (option->get_expected_max() > 1 ? "..." : "");
}

} // namespace cli
