#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Numbers and words as text, the same under every locale.
namespace mc {

/// With a fixed number of decimals: fixed(3.14159, 2) is "3.14".
std::string fixed(double value, int decimals);
/// The shortest text that reads back as the same number.
std::string shortest(float value);
std::string shortest(double value);

/// The number that a text is, without anything before or after it; empty when it is none or not finite.
std::optional<double> parseReal(std::string_view text);
std::optional<float> parseFloat(std::string_view text);
std::optional<int> parseInteger(std::string_view text);

/// Without blanks, tabs and line ends at both ends.
std::string_view trimmed(std::string_view text);
/// The parts between separators; "a,,b" has three.
std::vector<std::string_view> split(std::string_view text, char separator);

} // namespace mc
