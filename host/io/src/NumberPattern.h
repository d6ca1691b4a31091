#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace io {

/// A file name with one place for a number, written like "slice_%04d.tif". "%%" stands for a percent sign.
struct NumberPattern {
  std::string before;
  std::string after;
  int width = 0;   ///< digits at least
  char fill = ' '; ///< what a shorter number is filled up with: ' ' or '0'

  /// The name with a number >= 0 in its place.
  std::string name(int number) const;
  /// The number in a name of this pattern, or -1.
  int numberIn(std::string_view fileName) const;

  /// A name whose percent signs are all "%%" or part of exactly one of %d, %4d, %04d; else nothing.
  static std::optional<NumberPattern> parse(std::string_view text);
};

/// Order of names in which numbers count as numbers: "a2" before "a10", "a02" before "a2".
bool naturalLess(std::string_view a, std::string_view b) noexcept;

} // namespace io
