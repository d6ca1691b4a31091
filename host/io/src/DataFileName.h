#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace io {

/// A file name of a header as a path: relative names count from the folder of the header. Throws Error when
/// there is no such file.
std::string besideHeader(const std::string& header, const std::string& name);

/// A path with another ending instead of its last one.
std::string withEnding(const std::string& path, const std::string& ending);
/// The name without its folder.
std::string fileName(const std::string& path);

/// The names that a pattern with one number, like "slice%03d.raw", gives for first, first + step, ... last,
/// beside a header. Throws Error for another pattern, an impossible count, and a file that is missing.
std::vector<std::string> expandPattern(const std::string& header, const std::string& pattern,
                                       std::int64_t first, std::int64_t last, std::int64_t step);

/// True when the name of a data file is no name, but says that a list of names follows: "LIST", "LIST 2".
bool saysList(const std::string& text);
/// The words of a line between blanks.
std::vector<std::string> splitWords(const std::string& line);
/// The text without blanks at both ends.
std::string trimmed(const std::string& text);

/// Whole-word numbers. False for anything else, also for numbers out of range.
bool parseInteger(const std::string& word, std::int64_t& value) noexcept;
bool parseReal(const std::string& word, double& value) noexcept;

} // namespace io
