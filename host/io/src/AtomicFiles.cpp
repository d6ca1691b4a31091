#include "AtomicFiles.h"

#include "FileError.h"
#include "zx/ZxWorkArea.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace io {
namespace fs = std::filesystem;
namespace {

/// Closes a file descriptor.
class Descriptor {
public:
  explicit Descriptor(const std::string& path) : m_fd(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
  ~Descriptor()
  {
    if (m_fd >= 0) close(m_fd);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int get() const noexcept { return m_fd; }

private:
  int m_fd;
};

std::string lastSystemError() { return std::generic_category().message(errno); }

std::string uniquePrefix()
{
  static std::atomic<int> count{0};
  return ".zx-" + std::to_string(getpid()) + '-' + std::to_string(count++) + '-';
}

} // namespace

AtomicFiles::AtomicFiles(std::string folder) : m_folder(std::move(folder)), m_prefix(uniquePrefix()) {}

AtomicFiles::~AtomicFiles()
{
  std::error_code ignored;
  for (const std::string& name : names()) fs::remove(temporary(name), ignored);
}

std::vector<std::string> AtomicFiles::names() const
{
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator it(m_folder.empty() ? "." : m_folder, error), end; !error && it != end;
       it.increment(error)) {
    const std::string name = it->path().filename().string();
    if (name.starts_with(m_prefix)) names.push_back(name.substr(m_prefix.size()));
  }
  std::sort(names.begin(), names.end());
  return names;
}

void AtomicFiles::flush(const std::vector<std::string>& names) const
{
  // One call for the whole file system is much faster than one for each of hundreds of slices.
  constexpr std::size_t few = 8;
  for (const std::string& name : names) {
    const Descriptor file(temporary(name));
    const int failed = names.size() > few ? syncfs(file.get()) : fsync(file.get());
    if (file.get() < 0 || failed) cannotWrite(m_folder + name, lastSystemError());
    if (names.size() > few) return;
  }
}

void AtomicFiles::rename(const std::string& name) const
{
  if (std::rename(temporary(name).c_str(), (m_folder + name).c_str()) != 0) {
    cannotWrite(m_folder + name, lastSystemError());
  }
}

void AtomicFiles::commit(const std::string& last)
{
  const std::vector<std::string> all = names();
  flush(all);
  if (!ZxWorkArea::getTheWorkArea()->beginLastStep()) throw Interrupted();
  for (const std::string& name : all) {
    if (name != last) rename(name);
  }
  if (std::binary_search(all.begin(), all.end(), last)) rename(last);
}

} // namespace io
