#include "TableFile.h"

#include "Text.h"
#include "io/Error.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace cli {
namespace {

/// Far above any row of a table; a file that is no text is refused before it fills the memory.
constexpr std::size_t kLongestLine = 1000;

std::string reasonOf(int error) { return std::strerror(error); }

/// The next line, of a length within reason. False at the end of the file.
bool nextLine(std::istream& in, std::string& line, const std::string& what, const TablePosition& where)
{
  line.clear();
  for (int c; (c = in.get()) != std::istream::traits_type::eof();) {
    if (c == '\n') return true;
    if (c == '\0' || line.size() == kLongestLine) where.refuse("this is no table of " + what);
    line += static_cast<char>(c);
  }
  if (in.bad()) throw io::Error(where.path + " could not be read: " + reasonOf(errno) + ".");
  return !line.empty();
}

std::ifstream openTable(const std::string& path)
{
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) throw io::Error(path + " is a folder, not a table.");
  std::ifstream in(path, std::ios::binary);
  if (!in) throw io::Error(path + " could not be opened: " + reasonOf(errno) + ".");
  return in;
}

} // namespace

void TablePosition::refuse(const std::string& reason) const
{
  throw io::Error(path + ", line " + std::to_string(line) + ": " + reason + ".");
}

void readTable(const std::string& path, std::string_view header, const std::string& what,
               const std::function<void(std::string_view, const TablePosition&)>& row)
{
  std::ifstream in = openTable(path);
  bool headerSeen = false;
  std::string line;
  TablePosition where{path, 1};
  for (; nextLine(in, line, what, where); ++where.line) {
    const std::string_view text = trimmed(line);
    if (text.empty() || text.front() == '#') continue;
    if (headerSeen)
      row(text, where);
    else if (text == header)
      headerSeen = true;
    else
      where.refuse("the header row " + std::string(header) + " is expected");
  }
}

} // namespace cli
