#pragma once

#include <functional>
#include <string>
#include <string_view>

/// Reads a table as text: lines that begin with '#' are remarks, then follow a header row and one row an
/// entry, which row is called with, in their order. row returns what is wrong with a row, a clause without a
/// full stop, or nothing; the first wrong one ends the reading. `what` names what a table holds
/// ("transforms").
///
/// Returns an empty string, or one sentence that names the file, the line and what is wrong: also where the
/// file cannot be read, is no text or has another header.
std::string zxReadTable(const std::string& path, std::string_view header, const std::string& what,
                        const std::function<std::string(std::string_view row)>& row);
