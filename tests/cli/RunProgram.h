#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace test {

/// The program as it was built, run as a process of its own.
struct Run {
  std::vector<std::string> arguments;
  std::map<std::string, std::string> environment; ///< beside or instead of what the test has
  std::string folder;                             ///< working folder
  long largestFile = -1;                          ///< limit of a file's size in bytes; -1 for none
  long largestMemory = -1;                        ///< limit of the address space in bytes; -1 for none
};

struct Outcome {
  int status = -1; ///< exit status, or 128 + the signal that ended the program
  std::string out;
  std::string err;
};

/// Runs the program to its end. Standard output and error are no terminals.
Outcome run(const Run& run);

/// Runs the program on a terminal of its own and sends it the interruption of Ctrl+C as soon as its output
/// holds the text. What it prints is in Outcome::out.
Outcome runInterrupted(const Run& run, const std::string& at);

/// Runs the program and sends it a signal as soon as the condition holds, which is asked again and again with
/// the number of its process. It may end before that.
Outcome runUntil(const Run& run, const std::function<bool(pid_t)>& condition, int signal);

/// A new folder that is removed with its contents.
class Folder {
public:
  Folder();
  ~Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  const std::string& path() const noexcept { return m_path; }
  std::string file(const std::string& name) const { return m_path + "/" + name; }
  /// Names and sizes of all that is in it, hidden files too.
  std::map<std::string, std::uintmax_t> contents() const;

private:
  std::string m_path;
};

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& bytes);

/// A folder or file of the shared test data; empty when there are none.
std::string sharedData(const std::string& name);

} // namespace test
