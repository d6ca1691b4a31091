#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct Tcl_Interp;

/// Result codes of commands, those of the interpreter.
inline constexpr int kZxOk = 0;
inline constexpr int kZxError = 1;

/// The words of a command after its name. UTF-8; they live until the command returns.
using ZxArguments = std::span<char* const>;

/// What a command is called and takes.
struct ZxCommandHelp {
  std::string_view name;
  /// As in a usage: "FILE ?FORMAT?" is one or two, "NAME ?NAME ...?" one or more.
  std::string_view arguments;
  std::string_view help; ///< one line

  /// True when so many arguments fit.
  constexpr bool accepts(std::size_t count) const noexcept
  {
    std::size_t least = 0;
    std::size_t most = 0;
    for (std::size_t i = 0; i < arguments.size();) {
      const std::size_t end = std::min(arguments.find(' ', i), arguments.size());
      const std::string_view word = arguments.substr(i, end - i);
      if (word.find("...") != std::string_view::npos) return count >= least;
      ++most;
      if (word.front() != '?') ++least;
      i = end + 1;
    }
    return least <= count && count <= most;
  }
};

/// A command of the objects of a class; a class keeps its commands in a table.
template <class Object>
struct ZxCommand : ZxCommandHelp {
  /// Sets the result of the interpreter and returns kZxOk or kZxError.
  int (*run)(Object& object, Tcl_Interp* interp, ZxArguments arguments);
};

/// True when no two commands of a table have the same name.
template <class Table>
constexpr bool zxNamesUnique(const Table& table)
{
  for (auto a = std::begin(table); a != std::end(table); ++a)
    for (auto b = std::begin(table); b != a; ++b)
      if (a->name == b->name) return false;
  return true;
}

/// Sets the result of a command that succeeds.
int zxResult(Tcl_Interp* interp, const std::string& text);
/// The same for a list.
int zxListResult(Tcl_Interp* interp, std::span<const std::string> elements);
/// Sets the sentence of a command that fails.
int zxError(Tcl_Interp* interp, const std::string& sentence);
/// Fails with: wrong # args: should be "<words> <arguments>".
int zxWrongArguments(Tcl_Interp* interp, std::span<char* const> words, std::string_view arguments);
/// Fails with: <what> "<word>": should be <names>.
int zxUnknown(Tcl_Interp* interp, const std::string& what, const char* word,
              std::span<const ZxCommandHelp> known);
/// One line for each command: its usage and its help.
std::string zxHelpText(std::span<const ZxCommandHelp> commands);
/// Adds the entries of a table to a list of what an object knows.
template <class Table>
void zxAppendHelp(std::vector<ZxCommandHelp>& list, const Table& table)
{
  list.insert(list.end(), std::begin(table), std::end(table));
}
/// Sets a formatted result.
[[gnu::format(printf, 2, 3)]] void Tcl_VaSetResult(Tcl_Interp* interp, const char* format, ...);

/// The number that a word is, read as the interpreter reads numbers; else its error is the result. Reals are
/// finite and fit into single precision.
std::optional<int> zxGetInt(Tcl_Interp* interp, const char* word);
std::optional<float> zxGetFloat(Tcl_Interp* interp, const char* word);
/// The same for an index from 0 to count - 1; what names the things that are counted.
std::optional<int> zxGetIndex(Tcl_Interp* interp, const char* word, int count, const char* what);

/// Runs the command that words[at] names when it is in a table; nothing when it is not. The words before it
/// name the object.
template <class Object>
std::optional<int> zxRunCommand(std::span<const ZxCommand<Object>> table, Object& object, Tcl_Interp* interp,
                                std::span<char* const> words, std::size_t at)
{
  for (const ZxCommand<Object>& command : table) {
    if (words[at] != command.name) continue;
    const ZxArguments arguments = words.subspan(at + 1);
    if (!command.accepts(arguments.size()))
      return zxWrongArguments(interp, words.first(at + 1), command.arguments);
    return command.run(object, interp, arguments);
  }
  return std::nullopt;
}
