#include "FileError.h"

#include <algorithm>

namespace io {
namespace {

constexpr std::size_t longestReason = 500;

/// The text without control characters: a zero would end the sentence, a line break make two of it.
std::string onOneLine(std::string text)
{
  std::replace_if(
      text.begin(), text.end(), [](char c) { return (c >= '\0' && c < ' ') || c == '\x7f'; }, '?');
  return text;
}

/// The beginning of a text that is too long, without a part of a character in UTF-8 at its end.
std::string shortened(std::string text)
{
  if (text.size() <= longestReason) return text;
  std::size_t end = longestReason;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return text.substr(0, end) + "...";
}

std::string sentence(const char* what, const std::string& path, const std::string& reason)
{
  return onOneLine(std::string(what) + " \"" + path + "\": " + shortened(reason) + ".");
}

} // namespace

void cannotRead(const std::string& path, const std::string& reason)
{
  throw Error(sentence("Cannot read", path, reason));
}

void cannotWrite(const std::string& path, const std::string& reason)
{
  throw Error(sentence("Cannot write", path, reason));
}

} // namespace io
