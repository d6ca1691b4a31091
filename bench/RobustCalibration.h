#pragma once

#include <filesystem>

namespace bench {

/// Prints how often a confidence is right, as a table of Markdown: on the volumes that its coefficients were
/// fitted to, and on others that the fit has never seen. Right is what lies within 4 % of the width.
void printCalibration(const std::filesystem::path& folder);

/// Prints the coefficients that fit the first of those volumes best: what stands in the method's
/// Confidence.cpp.
void printFit(const std::filesystem::path& folder);

} // namespace bench
