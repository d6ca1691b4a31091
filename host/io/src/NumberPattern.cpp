#include "NumberPattern.h"

#include <charconv>

namespace io {
namespace {

bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

/// Reads the conversion that follows a percent sign; text begins behind it afterwards.
bool parseConversion(std::string_view& text, NumberPattern& pattern)
{
  if (text.starts_with('0')) {
    pattern.fill = '0';
    text.remove_prefix(1);
  }
  std::size_t digits = 0;
  while (digits < text.size() && isDigit(text[digits])) ++digits;
  if (digits > 1 || digits == text.size() || text[digits] != 'd') return false;
  if (digits == 1) pattern.width = text[0] - '0';
  text.remove_prefix(digits + 1);
  return true;
}

std::string_view takeDigits(std::string_view& text) noexcept
{
  std::size_t n = 0;
  while (n < text.size() && isDigit(text[n])) ++n;
  const std::string_view digits = text.substr(0, n);
  text.remove_prefix(n);
  return digits;
}

/// -1, 0, 1 for two numbers of any length.
int compareNumbers(std::string_view a, std::string_view b) noexcept
{
  a.remove_prefix(std::min(a.find_first_not_of('0'), a.size()));
  b.remove_prefix(std::min(b.find_first_not_of('0'), b.size()));
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  return a.compare(b);
}

} // namespace

std::optional<NumberPattern> NumberPattern::parse(std::string_view text)
{
  NumberPattern pattern;
  bool found = false;
  while (!text.empty()) {
    const char c = text.front();
    text.remove_prefix(1);
    if (c != '%' || text.starts_with('%')) {
      (found ? pattern.after : pattern.before) += c;
      if (c == '%') text.remove_prefix(1);
    } else if (found || !parseConversion(text, pattern)) {
      return std::nullopt;
    } else {
      found = true;
    }
  }
  return found ? std::optional(pattern) : std::nullopt;
}

std::string NumberPattern::name(int number) const
{
  const std::string digits = std::to_string(number);
  const std::size_t length = static_cast<std::size_t>(width);
  const std::string filling(length > digits.size() ? length - digits.size() : 0, fill);
  return before + filling + digits + after;
}

int NumberPattern::numberIn(std::string_view fileName) const
{
  if (fileName.size() < before.size() + after.size()) return -1;
  std::string_view digits = fileName.substr(before.size(), fileName.size() - before.size() - after.size());
  digits.remove_prefix(std::min(digits.find_first_not_of(' '), digits.size()));
  int number = -1;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return result.ec == std::errc{} && number >= 0 && name(number) == fileName ? number : -1;
}

bool naturalLess(std::string_view a, std::string_view b) noexcept
{
  std::string_view restA = a;
  std::string_view restB = b;
  while (!restA.empty() && !restB.empty()) {
    if (isDigit(restA.front()) && isDigit(restB.front())) {
      const int order = compareNumbers(takeDigits(restA), takeDigits(restB));
      if (order != 0) return order < 0;
    } else {
      const auto byteA = static_cast<unsigned char>(restA.front());
      const auto byteB = static_cast<unsigned char>(restB.front());
      if (byteA != byteB) return byteA < byteB;
      restA.remove_prefix(1);
      restB.remove_prefix(1);
    }
  }
  if (restA.empty() != restB.empty()) return restA.empty();
  return a < b;
}

} // namespace io
