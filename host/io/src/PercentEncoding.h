#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <string_view>

namespace io {

/// Replaces every character that isPlain(c) refuses by "%XX", its two hexadecimal digits.
template <class IsPlain>
std::string percentEncode(std::string_view text, IsPlain isPlain)
{
  constexpr char digits[] = "0123456789ABCDEF";
  std::string out;
  for (const char c : text) {
    if (isPlain(c)) {
      out += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      out += {'%', digits[byte / 16], digits[byte % 16]};
    }
  }
  return out;
}

/// Undoes percentEncode(); nothing when a '%' is not followed by two hexadecimal digits.
inline std::optional<std::string> percentDecode(std::string_view text)
{
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      out += text[i];
      continue;
    }
    unsigned value = 0;
    const std::string_view digits = text.substr(i + 1, 2);
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, value, 16);
    if (digits.size() != 2 || error != std::errc{} || stop != end) return std::nullopt;
    out += static_cast<char>(value);
    i += 2;
  }
  return out;
}

} // namespace io
