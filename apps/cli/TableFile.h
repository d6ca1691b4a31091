#pragma once

#include <functional>
#include <string>
#include <string_view>

/// Tables as text: lines that begin with '#' are remarks, then follows a header row and one row an entry.
namespace cli {

/// Where a row of a table stands, for the sentence about it.
struct TablePosition {
  const std::string& path;
  int line;

  /// Throws io::Error that names file, line and reason.
  [[noreturn]] void refuse(const std::string& reason) const;
};

/// Calls row for every row below the header. Throws io::Error when the file cannot be read, is no text, or
/// has another header; `what` names what a table holds ("transforms").
void readTable(const std::string& path, std::string_view header, const std::string& what,
               const std::function<void(std::string_view row, const TablePosition& where)>& row);

} // namespace cli
