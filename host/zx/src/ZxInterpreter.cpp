#include "zx/ZxInterpreter.h"

#include <tcl.h>

#include <algorithm>
#include <clocale>
#include <filesystem>

namespace {

struct TclFree {
  void operator()(void* memory) const { Tcl_Free(static_cast<char*>(memory)); }
};

/// Evaluates a file, whose bytes are UTF-8 whatever the locale says.
int evalScript(Tcl_Interp* interp, const std::string& fileName)
{
  Tcl_DString text;
  Tcl_ExternalToUtfDString(nullptr, fileName.c_str(), -1, &text);
  Tcl_Obj* path = Tcl_NewStringObj(Tcl_DStringValue(&text), Tcl_DStringLength(&text));
  Tcl_DStringFree(&text);
  Tcl_IncrRefCount(path);
  const int status = Tcl_FSEvalFileEx(interp, path, "utf-8");
  Tcl_DecrRefCount(path);
  return status;
}

} // namespace

ZxInterpreter& ZxInterpreter::getTheInterpreter()
{
  static ZxInterpreter instance;
  return instance;
}

ZxInterpreter::ZxInterpreter()
{
  Tcl_FindExecutable(nullptr);
  m_interp.reset(Tcl_CreateInterp());
  // Without Tcl's script library only the commands that are written in Tcl are missing.
  if (Tcl_Init(m_interp.get()) != TCL_OK) Tcl_ResetResult(m_interp.get());
  // Tcl takes up the user's locale; reals would be read and printed with its comma.
  std::setlocale(LC_NUMERIC, "C");
}

void ZxInterpreter::Delete::operator()(Tcl_Interp* interp) const { Tcl_DeleteInterp(interp); }

const char* ZxInterpreter::getVar(const char* name) const
{
  return Tcl_GetVar(m_interp.get(), name, TCL_GLOBAL_ONLY);
}

bool ZxInterpreter::setVar(const char* name, const char* value)
{
  return Tcl_SetVar(m_interp.get(), name, value, TCL_GLOBAL_ONLY) != nullptr;
}

std::string ZxInterpreter::evalFile(const std::string& fileName)
{
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(fileName, ignored))
    return "The start-up script " + fileName + " is no file.";
  if (evalScript(m_interp.get(), fileName) == TCL_OK) return {};
  const std::string line = std::to_string(Tcl_GetErrorLine(m_interp.get()));
  std::string reason = Tcl_GetStringResult(m_interp.get());
  reason.resize(std::min(reason.size(), reason.find('\n')));
  Tcl_ResetResult(m_interp.get());
  return "The start-up script " + fileName + " failed in line " + line + ": " + reason + ".";
}

std::optional<std::vector<std::string>> ZxInterpreter::splitList(const char* list)
{
  int count = 0;
  const char** elements = nullptr;
  if (Tcl_SplitList(nullptr, list, &count, &elements) != TCL_OK) return std::nullopt;
  const std::unique_ptr<const char*, TclFree> owner(elements);
  return std::vector<std::string>(elements, elements + count);
}

std::string ZxInterpreter::makeList(std::span<const std::string> elements)
{
  std::vector<const char*> texts;
  for (const std::string& element : elements) texts.push_back(element.c_str());
  const std::unique_ptr<char, TclFree> list(Tcl_Merge(static_cast<int>(texts.size()), texts.data()));
  return list.get();
}
