#pragma once

#include <string>
#include <string_view>

/// A string of bytes (UTF-8 by convention). Owns its characters.
class McString {
public:
  McString() = default;
  McString(const char* text) : m_text(text ? text : "") {}
  McString(std::string text) noexcept : m_text(std::move(text)) {}
  McString(std::string_view text) : m_text(text) {}

  const char* getString() const noexcept { return m_text.c_str(); }
  const std::string& str() const noexcept { return m_text; }
  std::size_t length() const noexcept { return m_text.size(); }
  bool isEmpty() const noexcept { return m_text.empty(); }

  operator std::string_view() const noexcept { return m_text; }
  friend bool operator==(const McString& a, const McString& b) noexcept { return a.m_text == b.m_text; }
  friend bool operator==(const McString& a, const char* b) noexcept { return a.m_text == b; }

private:
  std::string m_text;
};
