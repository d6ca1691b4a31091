#include "PlainFile.h"

#include "FileError.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace io {
namespace {

FileStamp stampOf(int failed, const struct stat& status) noexcept
{
  if (failed) return {};
  return {status.st_dev, status.st_ino, status.st_size, status.st_mtim};
}

} // namespace

FileStamp FileStamp::of(int descriptor) noexcept
{
  struct stat status {};
  return stampOf(::fstat(descriptor, &status), status);
}

FileStamp FileStamp::of(const std::string& path) noexcept
{
  struct stat status {};
  return stampOf(::stat(path.c_str(), &status), status);
}

bool operator==(const FileStamp& a, const FileStamp& b) noexcept
{
  return a.device == b.device && a.number == b.number && a.size == b.size &&
         a.changed.tv_sec == b.changed.tv_sec && a.changed.tv_nsec == b.changed.tv_nsec;
}

void readAt(int descriptor, const std::string& path, std::uint64_t offset, std::span<std::byte> bytes)
{
  constexpr std::size_t most = std::size_t{1} << 30; // The system reads less than 2 GB at once.
  while (!bytes.empty()) {
    const ssize_t n =
        ::pread(descriptor, bytes.data(), std::min(bytes.size(), most), static_cast<off_t>(offset));
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) cannotRead(path, std::generic_category().message(errno));
    if (n == 0) cannotRead(path, "its data end too early");
    bytes = bytes.subspan(static_cast<std::size_t>(n));
    offset += static_cast<std::uint64_t>(n);
  }
}

PlainFile::PlainFile(const std::string& path)
  : m_path(path), m_descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC))
{
  if (m_descriptor < 0) cannotRead(m_path, std::generic_category().message(errno));
  m_stamp = FileStamp::of(m_descriptor);
}

PlainFile::~PlainFile() { ::close(m_descriptor); }

void PlainFile::readAt(std::uint64_t offset, std::span<std::byte> bytes) const
{
  io::readAt(m_descriptor, m_path, offset, bytes);
}

void PlainFile::checkUnchanged() const
{
  if (!(FileStamp::of(m_descriptor) == m_stamp)) cannotRead(m_path, hasChanged);
}

} // namespace io
