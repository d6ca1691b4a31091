#pragma once

#include "ByteStream.h"
#include "StoredVoxels.h"

#include <vector>

namespace io {

/// Characters of a stream one at a time.
class CharacterStream {
public:
  explicit CharacterStream(std::unique_ptr<ByteStream> stream)
    : m_stream(std::move(stream)), m_buffer(1 << 16)
  {
  }
  /// The next character, or -1 at the end.
  int next();
  void finish() { m_stream->finish(); }

private:
  std::unique_ptr<ByteStream> m_stream;
  std::vector<char> m_buffer;
  std::size_t m_at = 0;
  std::size_t m_end = 0;
};

/// The values of decimal numbers, between white space or commas, in this machine's byte order.
class TextStream final : public ByteStream {
public:
  TextStream(std::unique_ptr<ByteStream> text, std::string path, StoredType type)
    : m_text(std::move(text)), m_path(std::move(path)), m_type(type)
  {
  }
  /// size is a multiple of the size of a value.
  std::size_t read(void* dst, std::size_t size) override;
  void finish() override { m_text.finish(); }

private:
  bool nextWord(std::string& word);

  CharacterStream m_text;
  std::string m_path;
  StoredType m_type;
};

/// The bytes of pairs of hexadecimal digits.
class HexStream final : public ByteStream {
public:
  HexStream(std::unique_ptr<ByteStream> text, std::string path)
    : m_text(std::move(text)), m_path(std::move(path))
  {
  }
  std::size_t read(void* dst, std::size_t size) override;
  void finish() override { m_text.finish(); }

private:
  /// The next digit, or -1 at the end.
  int nextDigit();

  CharacterStream m_text;
  std::string m_path;
};

} // namespace io
