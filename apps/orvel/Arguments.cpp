#include "Arguments.h"

namespace orvel {
namespace {

using Words = std::vector<std::string>;

/// Takes one option and what belongs to it from the front; false when the rest is no options.
bool takeOption(Arguments& result, Words& words)
{
  if (words.empty() || words[0].size() < 2 || words[0][0] != '-') return false;
  const std::string option = words[0];
  words.erase(words.begin());
  if (option == "--") return false;
  if (option == "-h" || option == "--help")
    result.mode = Arguments::Mode::Help;
  else if (option == "--version")
    result.mode = Arguments::Mode::Version;
  else if (option != "-b" && option != "-s")
    result.problem = "There is no option " + option + " (see orvel --help).";
  else if (words.empty() || words[0].empty())
    result.problem = "The option " + option + " needs the name of a script (see orvel --help).";
  else if (!result.script.empty())
    result.problem = "Only one script can be run (see orvel --help).";
  else {
    result.script = words[0];
    words.erase(words.begin());
    if (option == "-b") result.mode = Arguments::Mode::Batch;
  }
  // What follows the script of -b is the script's own business.
  return result.problem.empty() && result.mode == Arguments::Mode::Window;
}

} // namespace

Arguments Arguments::parse(std::span<char* const> words)
{
  Arguments result;
  result.words.assign(words.begin(), words.end());
  while (takeOption(result, result.words)) {
  }
  if (result.mode != Mode::Window) return result;
  for (const std::string& word : result.words)
    if (word.empty() && result.problem.empty()) result.problem = "The name of a file is empty.";
  return result;
}

const char* Arguments::usage()
{
  return "Shows image stacks and aligns their slices.\n"
         "\n"
         "orvel [-s SCRIPT] [--] [FILE...]   opens the window, and in it each file or folder of slices\n"
         "orvel -b SCRIPT [ARGUMENT...]      runs a script without a window\n"
         "\n"
         "  -b SCRIPT    runs a Tcl script and ends with its exit status: 0, that of its quit, 1 after an\n"
         "               error, 130 when it was stopped; the script finds its arguments in argv\n"
         "  -s SCRIPT    runs a Tcl script when the window has opened\n"
         "  -h, --help   prints this\n"
         "  --version    prints the version\n"
         "\n"
         "The command help lists the commands of scripts; it works at the prompt of the window, too.\n";
}

} // namespace orvel
