#pragma once

#include "zx/ZxCommand.h"

class ZxAlignSlices;

/// One command of the module for scripts.
struct AlignCommand : ZxCommandHelp {
  enum class Needs {
    Nothing,
    Editor ///< without an open editor the command does nothing and succeeds
  };
  Needs needs;
  int (*run)(ZxAlignSlices& module, Tcl_Interp* interp, ZxArguments arguments);
  std::string_view alias = {}; ///< a second name, or empty
  std::string_view countError =
      {}; ///< what is said to a wrong number of arguments, where not Tcl's own words

  bool isCalled(std::string_view word) const noexcept
  {
    return word == name || (!alias.empty() && word == alias);
  }
};

/// All commands in the order in which names are compared.
std::span<const AlignCommand> alignCommands();
