#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

struct Tcl_Interp;

/// The Tcl interpreter of the process: holds the variables through which scripts and programs steer the host
/// and its packages, and evaluates start-up scripts.
///
/// Made when it is first asked for, and used by the thread that asked: that of the objects. Text is UTF-8.
/// The number format of the process stays that of the locale "C".
class ZxInterpreter {
public:
  static ZxInterpreter& getTheInterpreter();

  /// The text of a global variable, valid until it is changed; null when it is not set.
  const char* getVar(const char* name) const;
  /// Sets a global variable. False where Tcl refuses it, as for a name in a namespace that does not exist.
  bool setVar(const char* name, const char* value);

  /// Evaluates a script file at global level. Empty, or one sentence that names the file, the line and what
  /// is wrong. What the script had done before stays done.
  std::string evalFile(const std::string& fileName);

  /// The elements of a list; none for a text that is no well-formed list.
  static std::optional<std::vector<std::string>> splitList(const char* list);
  /// A list of these elements, quoted where they need it.
  static std::string makeList(std::span<const std::string> elements);

private:
  ZxInterpreter();

  struct Delete {
    void operator()(Tcl_Interp* interp) const;
  };
  std::unique_ptr<Tcl_Interp, Delete> m_interp;
};
