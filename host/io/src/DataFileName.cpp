#include "DataFileName.h"

#include "FileError.h"
#include "NumberPattern.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <limits>
#include <optional>

namespace io {

namespace {

constexpr const char* blanks = " \t\r\n\v\f";
constexpr std::int64_t mostFiles = 1'000'000;

template <class T>
bool parseNumber(const std::string& word, T& value) noexcept
{
  const char* begin = word.data();
  const char* const end = begin + word.size();
  if (begin != end && *begin == '+') ++begin;
  T number{};
  const auto [at, error] = std::from_chars(begin, end, number);
  if (error != std::errc() || at != end) return false;
  value = number;
  return true;
}

} // namespace

std::string besideHeader(const std::string& header, const std::string& name)
{
  const std::filesystem::path path = std::filesystem::path(header).parent_path() / name;
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored))
    cannotRead(header, "its data file \"" + name + "\" is missing");
  return path.string();
}

std::string withEnding(const std::string& path, const std::string& ending)
{
  const std::size_t dot = path.rfind('.'), slash = path.rfind('/');
  const bool hasDot = dot != std::string::npos && (slash == std::string::npos || dot > slash);
  return path.substr(0, hasDot ? dot : path.size()) + ending;
}

std::string fileName(const std::string& path) { return std::filesystem::path(path).filename().string(); }

std::vector<std::string> expandPattern(const std::string& header, const std::string& pattern,
                                       std::int64_t first, std::int64_t last, std::int64_t step)
{
  const std::optional<NumberPattern> parts = NumberPattern::parse(pattern);
  if (!parts) cannotRead(header, "the pattern of its data files has not exactly one number of the kind %03d");
  if (first < 0 || last < first || last > std::numeric_limits<int>::max() || step < 1 ||
      (last - first) / step >= mostFiles)
    cannotRead(header, "the numbers of its data files make no sense");
  std::vector<std::string> names;
  for (std::int64_t number = first; number <= last; number += step)
    names.push_back(besideHeader(header, parts->name(static_cast<int>(number))));
  return names;
}

std::vector<std::string> splitWords(const std::string& line)
{
  std::vector<std::string> words;
  std::size_t end = 0;
  while (true) {
    const std::size_t start = line.find_first_not_of(blanks, end);
    if (start == std::string::npos) return words;
    end = std::min(line.find_first_of(blanks, start), line.size());
    words.push_back(line.substr(start, end - start));
  }
}

std::string trimmed(const std::string& text)
{
  const std::size_t start = text.find_first_not_of(blanks);
  if (start == std::string::npos) return {};
  return text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

bool saysList(const std::string& text) { return text == "LIST" || text.starts_with("LIST "); }

bool parseInteger(const std::string& word, std::int64_t& value) noexcept { return parseNumber(word, value); }
bool parseReal(const std::string& word, double& value) noexcept { return parseNumber(word, value); }

} // namespace io
