#pragma once

#include "ParameterText.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace io {

/// The text header of a MetaImage file, taken apart but not yet interpreted.
class MetaImageHeader {
public:
  /// Our own field for the unit of lengths: that of the format takes three names only.
  static constexpr const char* unitField = "VoxelSizeUnit";

  /// Reads the lines up to "ElementDataFile", and the names behind it where it is "LIST". Throws Error for a
  /// file that is no such header.
  static MetaImageHeader read(const std::string& path);

  /// What stands behind a field of the format; empty when it is missing.
  const std::string& field(const std::string& name) const;
  /// The first of several names for one field that is there; empty when none is.
  const std::string& firstOf(std::initializer_list<const char*> names) const;
  bool isTrue(const std::string& name, bool missing) const;
  /// An integer field; the default when it is missing. Throws Error for anything else.
  std::int64_t integer(const std::string& name, std::int64_t missing) const;
  /// Numbers between blanks; nothing where the text is no such list.
  static std::vector<double> numbers(const std::string& text);

  const std::string& path() const noexcept { return m_path; }
  /// What stands behind names that the format does not define, with our own escapes resolved.
  const TextPairs& pairs() const noexcept { return m_pairs; }
  /// The lines behind "ElementDataFile = LIST".
  const std::vector<std::string>& list() const noexcept { return m_list; }
  /// Bytes of the header: where local data begin.
  std::uint64_t bytes() const noexcept { return m_bytes; }

  /// One pair as header lines of a length that every reader of the format takes. Names that the format
  /// defines get a prefix; what is too long is cut into numbered parts. index tells pairs apart.
  static std::string pairLines(const std::string& key, const std::string& value, std::size_t index);

private:
  bool parseLine(const std::string& line);
  void addPair(const std::string& key, const std::string& value);

  std::string m_path;
  std::map<std::string, std::string> m_fields;
  TextPairs m_pairs;
  std::string m_partStem; ///< of the parts that are being put together
  std::string m_parts;
  std::vector<std::string> m_list;
  std::uint64_t m_bytes = 0;
};

} // namespace io
