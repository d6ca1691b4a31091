#pragma once

#include "io/Error.h"

#include <string>

namespace io {

/// Throws Error: `Cannot read "stack.nrrd": <reason>.` The reason may quote what stands in a damaged file: it
/// is brought to one line of bearable length.
[[noreturn]] void cannotRead(const std::string& path, const std::string& reason);

/// Throws Error: `Cannot write "stack.nrrd": <reason>.`
[[noreturn]] void cannotWrite(const std::string& path, const std::string& reason);

} // namespace io
