#include "zx/ZxTextTable.h"

#include "mc/McText.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace {

/// Far above any row of a table; a file that is no text is refused before it fills the memory.
constexpr std::size_t kLongestLine = 1000;

enum class Line { Read, End, NoText, Unreadable };

Line nextLine(std::istream& in, std::string& line)
{
  line.clear();
  for (int c; (c = in.get()) != std::istream::traits_type::eof();) {
    if (c == '\n') return Line::Read;
    if (c == '\0' || line.size() == kLongestLine) return Line::NoText;
    line += static_cast<char>(c);
  }
  if (in.bad()) return Line::Unreadable;
  return line.empty() ? Line::End : Line::Read;
}

std::string unreadable(const std::string& path, const char* how)
{
  return path + how + std::strerror(errno) + ".";
}

/// Takes the lines of a table as they come.
class Reader {
public:
  Reader(std::string_view header, const std::function<std::string(std::string_view)>& row)
    : m_header(header), m_row(row)
  {
  }
  /// What is wrong with a line, or nothing.
  std::string take(std::string_view line)
  {
    const std::string_view text = mc::trimmed(line);
    if (text.empty() || text.front() == '#') return {};
    if (m_headerSeen) return m_row(text);
    m_headerSeen = text == m_header;
    return m_headerSeen ? std::string() : "the header row " + std::string(m_header) + " is expected";
  }

private:
  std::string_view m_header;
  const std::function<std::string(std::string_view)>& m_row;
  bool m_headerSeen = false;
};

} // namespace

std::string zxReadTable(const std::string& path, std::string_view header, const std::string& what,
                        const std::function<std::string(std::string_view row)>& row)
{
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) return path + " is a folder, not a table.";
  std::ifstream in(path, std::ios::binary);
  if (!in) return unreadable(path, " could not be opened: ");
  Reader reader(header, row);
  std::string line;
  for (int number = 1;; ++number) {
    const Line state = nextLine(in, line);
    if (state == Line::End) return {};
    if (state == Line::Unreadable) return unreadable(path, " could not be read: ");
    const std::string problem = state == Line::NoText ? "this is no table of " + what : reader.take(line);
    if (!problem.empty()) return path + ", line " + std::to_string(number) + ": " + problem + ".";
  }
}
