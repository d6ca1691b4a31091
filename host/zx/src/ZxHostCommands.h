#pragma once

#include "zx/ZxCommand.h"

class ZxInterpreter;

/// The commands of the host itself.
std::span<const ZxCommand<ZxInterpreter>> zxHostCommands();
