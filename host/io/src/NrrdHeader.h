#pragma once

#include "ParameterText.h"

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace io {

/// The text header of an NRRD file, taken apart but not yet interpreted.
class NrrdHeader {
public:
  /// One axis's "space directions"; not there for an axis that lies outside of space.
  struct Direction {
    bool present = false;
    std::array<double, 3> vector{0, 0, 0};
  };

  /// Reads the header. Throws Error for a file that is none, and for a header without an end.
  static NrrdHeader read(const std::string& path);

  /// What stands behind a field, named in lower case without blanks ("datafile"); empty when it is missing.
  const std::string& field(const std::string& name) const;
  bool has(const std::string& name) const { return m_fields.contains(name); }
  /// An integer field; the default when it is missing. Throws Error for anything else.
  std::int64_t integer(const std::string& name, std::int64_t missing) const;
  /// One word per axis, empty when the field is missing. Quoted words may hold blanks and lose their quotes.
  /// Throws Error when their number is not that of the axes.
  std::vector<std::string> words(const std::string& name, std::size_t axes) const;
  /// The first word of a field, quoted or not; empty when it is missing.
  std::string firstWord(const std::string& name) const;
  /// One number per axis.
  std::vector<double> numbers(const std::string& name, std::size_t axes) const;
  std::vector<Direction> directions(std::size_t axes) const;
  /// The "space origin", 0 when it is missing.
  std::array<double, 3> spaceOrigin() const;

  const std::string& path() const noexcept { return m_path; }
  /// The key/value pairs, with \n and \\ resolved.
  const TextPairs& pairs() const noexcept { return m_pairs; }
  /// The lines behind "data file: LIST".
  const std::vector<std::string>& list() const noexcept { return m_list; }
  /// Bytes of the header, its blank line included: where attached data begin.
  std::uint64_t bytes() const noexcept { return m_bytes; }

private:
  void parseLine(const std::string& line);
  Direction parseVector(const std::string& text) const;
  std::vector<std::string> split(const std::string& text) const;

  std::string m_path;
  std::map<std::string, std::string> m_fields;
  TextPairs m_pairs;
  std::vector<std::string> m_list;
  std::uint64_t m_bytes = 0;
};

} // namespace io
