#include "zx/ZxCommand.h"

#include "ZxFormat.h"
#include "zx/ZxInterpreter.h"

#include <tcl.h>

#include <cmath>

static_assert(kZxOk == TCL_OK && kZxError == TCL_ERROR);

int zxResult(Tcl_Interp* interp, const std::string& text)
{
  Tcl_SetObjResult(interp, Tcl_NewStringObj(text.data(), static_cast<int>(text.size())));
  return kZxOk;
}

int zxListResult(Tcl_Interp* interp, std::span<const std::string> elements)
{
  return zxResult(interp, ZxInterpreter::makeList(elements));
}

int zxError(Tcl_Interp* interp, const std::string& sentence)
{
  zxResult(interp, sentence);
  return kZxError;
}

int zxWrongArguments(Tcl_Interp* interp, std::span<char* const> words, std::string_view arguments)
{
  const std::vector<std::string> used(words.begin(), words.end());
  std::string usage = ZxInterpreter::makeList(used);
  if (!arguments.empty()) usage += " " + std::string(arguments);
  Tcl_SetErrorCode(interp, "TCL", "WRONGARGS", nullptr);
  return zxError(interp, "wrong # args: should be \"" + usage + "\"");
}

int zxUnknown(Tcl_Interp* interp, const std::string& what, const char* word,
              std::span<const ZxCommandHelp> known)
{
  std::string names;
  for (std::size_t i = 0; i < known.size(); ++i) {
    const char* separator = i == 0 ? "" : i + 1 < known.size() ? ", " : " or ";
    names += separator + std::string(known[i].name);
  }
  return zxError(interp, what + " \"" + word + "\": should be " + names);
}

std::string zxHelpText(std::span<const ZxCommandHelp> commands)
{
  std::string text;
  for (const ZxCommandHelp& command : commands) {
    std::string usage(command.name);
    if (!command.arguments.empty()) usage += " " + std::string(command.arguments);
    constexpr std::size_t column = 34;
    usage += usage.size() < column ? std::string(column - usage.size(), ' ') : "  ";
    text += (text.empty() ? "" : "\n") + usage + std::string(command.help);
  }
  return text;
}

void Tcl_VaSetResult(Tcl_Interp* interp, const char* format, ...)
{
  std::va_list arguments;
  va_start(arguments, format);
  const std::string text = zxFormat(format, arguments);
  va_end(arguments);
  zxResult(interp, text);
}

std::optional<int> zxGetInt(Tcl_Interp* interp, const char* word)
{
  int value = 0;
  if (Tcl_GetInt(interp, word, &value) != TCL_OK) return std::nullopt;
  return value;
}

std::optional<float> zxGetFloat(Tcl_Interp* interp, const char* word)
{
  double value = 0;
  if (Tcl_GetDouble(interp, word, &value) != TCL_OK) return std::nullopt;
  const auto narrow = static_cast<float>(value);
  if (std::isfinite(narrow)) return narrow;
  zxError(interp, "expected a number of single precision but got \"" + std::string(word) + "\"");
  return std::nullopt;
}

std::optional<int> zxGetIndex(Tcl_Interp* interp, const char* word, int count, const char* what)
{
  const std::optional<int> index = zxGetInt(interp, word);
  if (!index || (*index >= 0 && *index < count)) return index;
  zxError(interp, "there is no " + std::string(what) + " " + word + ": they are counted from 0 to " +
                      std::to_string(count - 1));
  return std::nullopt;
}
