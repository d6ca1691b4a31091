#include "Program.h"

#include <csignal>

int main(int argc, char** argv)
{
  // A file beyond the size limit is a failed write with a reason, not the end of the program.
  std::signal(SIGXFSZ, SIG_IGN);
  return orvel::runProgram(argc, argv);
}
