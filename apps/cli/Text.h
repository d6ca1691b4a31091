#pragma once

#include "mc/McText.h"

#include <string>
#include <string_view>

/// Texts of the command line.
namespace cli {

using mc::fixed;
using mc::parseFloat;
using mc::parseInteger;
using mc::parseReal;
using mc::shortest;
using mc::split;
using mc::trimmed;

/// The text in lines of at most 100 characters, broken at blanks; every line but the first is indented.
std::string wrapped(std::string_view text, std::size_t indent);
/// True when the name ends like that, in whatever case ("TABLE.CSV" and ".csv").
bool hasEnding(std::string_view name, std::string_view ending);

} // namespace cli
