#pragma once

#include <filesystem>

namespace cli {

/// A path that is the same for the same file, however it was written: absolute, without links. Works for
/// files yet to be made.
std::filesystem::path uniquePath(const std::filesystem::path& path);

} // namespace cli
