#include "Text.h"

namespace cli {
namespace {

char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

} // namespace

std::string wrapped(std::string_view text, std::size_t indent)
{
  constexpr std::size_t width = 100;
  std::string result;
  std::size_t column = indent;
  for (const std::string_view word : split(text, ' ')) {
    if (!result.empty() && column + 1 + word.size() > width) {
      result += "\n" + std::string(indent, ' ');
      column = indent;
    } else if (!result.empty()) {
      result += ' ';
      ++column;
    }
    result += word;
    column += word.size();
  }
  return result;
}

bool hasEnding(std::string_view name, std::string_view ending)
{
  if (name.size() < ending.size()) return false;
  const std::string_view tail = name.substr(name.size() - ending.size());
  for (std::size_t i = 0; i < ending.size(); ++i)
    if (lowered(tail[i]) != lowered(ending[i])) return false;
  return true;
}

} // namespace cli
