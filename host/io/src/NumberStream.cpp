#include "NumberStream.h"

#include "FileError.h"

#include <charconv>
#include <cstring>
#include <string_view>

namespace io {

namespace {

constexpr std::string_view separators = " \t\r\n\v\f,";
/// A double with all digits that it can have, written without an exponent, stays below.
constexpr std::size_t longestNumber = 1200;

template <class T>
bool parseValue(std::string_view word, void* dst)
{
  if (word.starts_with('+')) word.remove_prefix(1);
  T value{};
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  std::memcpy(dst, &value, sizeof value);
  return error == std::errc() && end == word.data() + word.size();
}

bool parse(StoredType type, std::string_view word, void* dst)
{
  switch (type) {
  case StoredType::Int8:
    return parseValue<std::int8_t>(word, dst);
  case StoredType::UInt8:
    return parseValue<std::uint8_t>(word, dst);
  case StoredType::Int16:
    return parseValue<std::int16_t>(word, dst);
  case StoredType::UInt16:
    return parseValue<std::uint16_t>(word, dst);
  case StoredType::Int32:
    return parseValue<std::int32_t>(word, dst);
  case StoredType::UInt32:
    return parseValue<std::uint32_t>(word, dst);
  case StoredType::Int64:
    return parseValue<std::int64_t>(word, dst);
  case StoredType::UInt64:
    return parseValue<std::uint64_t>(word, dst);
  case StoredType::Float:
    return parseValue<float>(word, dst);
  case StoredType::Double:
    return parseValue<double>(word, dst);
  default:
    return false; // no format writes half floats as text
  }
}

} // namespace

int CharacterStream::next()
{
  if (m_at == m_end) {
    m_end = m_stream->read(m_buffer.data(), m_buffer.size());
    m_at = 0;
    if (m_end == 0) return -1;
  }
  return static_cast<unsigned char>(m_buffer[m_at++]);
}

bool TextStream::nextWord(std::string& word)
{
  word.clear();
  for (int c = m_text.next(); c >= 0; c = m_text.next()) {
    const bool separator = separators.find(static_cast<char>(c)) != std::string_view::npos;
    if (separator && !word.empty()) break;
    if (separator) continue;
    word.push_back(static_cast<char>(c));
    if (word.size() > longestNumber) cannotRead(m_path, "its data are no numbers");
  }
  return !word.empty();
}

std::size_t TextStream::read(void* dst, std::size_t size)
{
  const std::size_t valueBytes = sizeOf(m_type);
  std::string word;
  for (std::size_t done = 0; done < size; done += valueBytes) {
    if (!nextWord(word)) return done;
    if (!parse(m_type, word, static_cast<std::byte*>(dst) + done))
      cannotRead(m_path, std::string("its data hold a word that is no value of the type ") + nameOf(m_type));
  }
  return size;
}

int HexStream::nextDigit()
{
  for (int c = m_text.next(); c >= 0; c = m_text.next()) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (separators.find(static_cast<char>(c)) == std::string_view::npos)
      cannotRead(m_path, "its data hold characters that are no hexadecimal digits");
  }
  return -1;
}

std::size_t HexStream::read(void* dst, std::size_t size)
{
  auto* bytes = static_cast<unsigned char*>(dst);
  for (std::size_t i = 0; i < size; ++i) {
    const int high = nextDigit();
    const int low = high < 0 ? -1 : nextDigit();
    if (low < 0) return i;
    bytes[i] = static_cast<unsigned char>(high * 16 + low);
  }
  return size;
}

} // namespace io
