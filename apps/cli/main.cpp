#include "Program.h"

#include <malloc.h>
#include <sys/resource.h>

#include <csignal>

namespace {

/// Each arena of the allocator reserves 64 MB of address space, which a limit counts as memory. Without one
/// threads had better have their own.
void saveAddressSpace()
{
#ifdef M_ARENA_MAX
  rlimit limit{};
  if (getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY) mallopt(M_ARENA_MAX, 2);
#endif
}

} // namespace

int main(int argc, char** argv)
{
  saveAddressSpace();
  // A file beyond the size limit is a failed write with a reason, not the end of the program.
  std::signal(SIGXFSZ, SIG_IGN);
  return cli::runProgram(argc, argv);
}
