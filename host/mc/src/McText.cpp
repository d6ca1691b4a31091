#include "mc/McText.h"

#include <array>
#include <charconv>
#include <cmath>

namespace mc {
namespace {

/// Ample for any double with fixed decimals: 309 digits before the point.
using NumberText = std::array<char, 400>;

template <class... Format>
std::string numberText(Format... format)
{
  NumberText text;
  const auto result = std::to_chars(text.data(), text.data() + text.size(), format...);
  return std::string(text.data(), result.ptr);
}

template <class T>
std::optional<T> parseNumber(std::string_view text)
{
  T value{};
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
  return value;
}

template <class T>
std::optional<T> parseFinite(std::string_view text)
{
  const std::optional<T> value = parseNumber<T>(text);
  return value && std::isfinite(*value) ? value : std::nullopt;
}

} // namespace

std::string fixed(double value, int decimals)
{
  return numberText(value, std::chars_format::fixed, decimals);
}

std::string shortest(float value) { return numberText(value); }
std::string shortest(double value) { return numberText(value); }

std::optional<double> parseReal(std::string_view text) { return parseFinite<double>(text); }
std::optional<float> parseFloat(std::string_view text) { return parseFinite<float>(text); }
std::optional<int> parseInteger(std::string_view text) { return parseNumber<int>(text); }

std::string_view trimmed(std::string_view text)
{
  constexpr std::string_view blank = " \t\r\n";
  const std::size_t first = text.find_first_not_of(blank);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blank) - first + 1);
}

std::vector<std::string_view> split(std::string_view text, char separator)
{
  std::vector<std::string_view> parts;
  std::size_t begin = 0;
  for (std::size_t end; (end = text.find(separator, begin)) != std::string_view::npos; begin = end + 1)
    parts.push_back(text.substr(begin, end - begin));
  parts.push_back(text.substr(begin));
  return parts;
}

} // namespace mc
