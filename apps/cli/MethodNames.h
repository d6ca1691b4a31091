#pragma once

#include "zxalign/ZxAlignControl.h"

#include <string>

namespace cli {

/// The id of an automatic method that is asked for by its short name ("least-squares"), its registered name
/// or its id. Throws Failure, which lists what there is, for any other.
int findMethod(const ZxAlignControl& control, const std::string& text);

/// The short name of a method, or the registered one where it has none.
std::string methodName(const ZxAlignControl& control, int id);

/// True for the name that methodName() gives to a method of the package itself, false for one of a plug-in.
bool isBuiltIn(const std::string& name);

/// All of them in the order of registration: "least-squares (1), MyMethod (4)".
std::string methodList(const ZxAlignControl& control);

} // namespace cli
