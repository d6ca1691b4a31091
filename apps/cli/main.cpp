#include "Program.h"

#include <fcntl.h>
#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <initializer_list>

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

/// The first files to be opened would take the numbers of standard streams that are closed, and receive what
/// is printed. Writing to these fails.
void occupyStandardStreams()
{
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", O_RDONLY) < 0) return;
}

} // namespace

int main(int argc, char** argv)
{
  occupyStandardStreams();
  saveAddressSpace();
  // A file beyond the size limit is a failed write with a reason, not the end of the program.
  std::signal(SIGXFSZ, SIG_IGN);
  return cli::runProgram(argc, argv);
}
