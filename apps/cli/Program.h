#pragma once

namespace cli {

/// Exit status of the program.
enum ExitStatus { Success = 0, Failed = 1, Interrupted = 130 };

/// The program without main(): parses the arguments, runs the command, and turns whatever goes wrong into one
/// sentence on standard error.
int runProgram(int argc, char** argv);

} // namespace cli
