#pragma once

#include "io/Error.h"

#include <string>

namespace io {

/// Throws Error: `Cannot read "stack.nrrd": <reason>.`
[[noreturn]] inline void cannotRead(const std::string& path, const std::string& reason)
{
  throw Error("Cannot read \"" + path + "\": " + reason + ".");
}

/// Throws Error: `Cannot write "stack.nrrd": <reason>.`
[[noreturn]] inline void cannotWrite(const std::string& path, const std::string& reason)
{
  throw Error("Cannot write \"" + path + "\": " + reason + ".");
}

} // namespace io
