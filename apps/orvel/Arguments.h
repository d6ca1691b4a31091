#pragma once

#include <span>
#include <string>
#include <vector>

namespace orvel {

/// What the command line asks for.
struct Arguments {
  enum class Mode { Window, Batch, Help, Version };
  Mode mode = Mode::Window;
  std::string script; ///< empty: none
  /// Volumes to open in the window; with -b the arguments of the script.
  std::vector<std::string> words;
  std::string problem; ///< one sentence when the command line makes no sense

  static Arguments parse(std::span<char* const> words);
  static const char* usage();
};

} // namespace orvel
