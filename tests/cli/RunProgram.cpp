#include "RunProgram.h"

#include <gtest/gtest.h>

#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace test {
namespace fs = std::filesystem;
namespace {

int statusOf(pid_t child)
{
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

/// What the child does between fork and the program; ends in the program or in status 127.
[[noreturn]] void become(const Run& run)
{
  setenv("ZX_PACKAGE_PATH", ZX_TEST_PACKAGES, 1);
  // As from a terminal, also where the tests run under nohup or in the background of a script.
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, SIG_DFL);
  for (const auto& [name, value] : run.environment) setenv(name.c_str(), value.c_str(), 1);
  if (!run.folder.empty() && chdir(run.folder.c_str()) != 0) _exit(127);
  if (run.largestFile >= 0) {
    const auto bytes = static_cast<rlim_t>(run.largestFile);
    const rlimit limit{bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  if (run.largestMemory >= 0) {
    const auto bytes = static_cast<rlim_t>(run.largestMemory);
    const rlimit limit{bytes, bytes};
    setrlimit(RLIMIT_AS, &limit);
  }
  std::vector<char*> arguments;
  std::string program = ZX_TEST_PROGRAM;
  arguments.push_back(program.data());
  std::vector<std::string> copies = run.arguments;
  for (std::string& argument : copies) arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  execv(program.c_str(), arguments.data());
  _exit(127);
}

} // namespace

Outcome run(const Run& run)
{
  return runUntil(
      run, [](pid_t) { return false; }, 0);
}

Outcome runUntil(const Run& run, const std::function<bool(pid_t)>& condition, int signal)
{
  const Folder output;
  const std::string out = output.file("out"), err = output.file("err");
  const pid_t child = fork();
  if (child == 0) {
    if (!std::freopen(out.c_str(), "w", stdout) || !std::freopen(err.c_str(), "w", stderr)) _exit(127);
    become(run);
  }
  siginfo_t ended{};
  while (signal != 0 && waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 &&
         ended.si_pid == 0) {
    if (!condition(child)) continue;
    kill(child, signal);
    break;
  }
  Outcome outcome;
  outcome.status = statusOf(child);
  outcome.out = readFile(out);
  outcome.err = readFile(err);
  return outcome;
}

Outcome runInterrupted(const Run& run, const std::string& at)
{
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) become(run);
  Outcome outcome;
  bool sent = false;
  char buffer[4096];
  // The read ends with an error when the child has closed its side.
  for (ssize_t n; (n = read(terminal, buffer, sizeof buffer)) > 0;) {
    outcome.out.append(buffer, static_cast<std::size_t>(n));
    if (sent || outcome.out.find(at) == std::string::npos) continue;
    kill(child, SIGINT);
    sent = true;
  }
  close(terminal);
  outcome.status = statusOf(child);
  EXPECT_TRUE(sent) << outcome.out;
  return outcome;
}

Folder::Folder()
{
  std::string name = (fs::temp_directory_path() / ("zxalign-test-" + std::string(6, 'X'))).string();
  m_path = mkdtemp(name.data()) ? name : "";
  EXPECT_FALSE(m_path.empty());
}

Folder::~Folder()
{
  std::error_code ignored;
  fs::remove_all(m_path, ignored);
}

std::map<std::string, std::uintmax_t> Folder::contents() const
{
  std::map<std::string, std::uintmax_t> found;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(m_path))
    found[fs::relative(entry.path(), m_path).string()] = entry.is_regular_file() ? entry.file_size() : 0;
  return found;
}

std::string readFile(const std::string& path)
{
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

void writeFile(const std::string& path, const std::string& bytes)
{
  std::ofstream(path, std::ios::binary) << bytes;
}

std::string sharedData(const std::string& name)
{
  const char* set = std::getenv("ZX_TEST_DATA");
  const fs::path root = set ? fs::path(set) : fs::path(ZX_SOURCE_DIR) / ".." / "shared" / "data";
  std::error_code ignored;
  return fs::exists(root / name, ignored) ? (root / name).string() : "";
}

} // namespace test
