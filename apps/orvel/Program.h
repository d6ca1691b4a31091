#pragma once

namespace orvel {

/// The program without main(): parses the arguments, opens the window or runs a script. Returns the exit
/// status.
int runProgram(int argc, char** argv);

} // namespace orvel
