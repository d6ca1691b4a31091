#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <span>
#include <string>

namespace io {

/// What tells a file from what it was before: another file of its name, another size or time of change.
struct FileStamp {
  std::uint64_t device = 0;
  std::uint64_t number = 0;
  std::int64_t size = 0;
  std::timespec changed{};

  /// That of an open file, or of the file at a path. All 0 where the system does not tell.
  static FileStamp of(int descriptor) noexcept;
  static FileStamp of(const std::string& path) noexcept;
  friend bool operator==(const FileStamp& a, const FileStamp& b) noexcept;
};

/// A file that is open for reading at any place. What the descriptor stands for stays readable when the name
/// is given to another file.
class PlainFile {
public:
  /// Throws Error when the file cannot be opened.
  explicit PlainFile(const std::string& path);
  PlainFile(const PlainFile&) = delete;
  PlainFile& operator=(const PlainFile&) = delete;
  ~PlainFile();

  const FileStamp& stamp() const noexcept { return m_stamp; }
  std::uint64_t size() const noexcept { return static_cast<std::uint64_t>(m_stamp.size); }
  /// Reads bytes from an offset on. Throws Error, also when the file ends before they do.
  void readAt(std::uint64_t offset, std::span<std::byte> bytes) const;
  /// Throws Error when the file is not as it was when it was opened.
  void checkUnchanged() const;

private:
  std::string m_path;
  int m_descriptor;
  FileStamp m_stamp;
};

/// Reads bytes of an open file without moving its position; path is for messages. Throws Error like
/// PlainFile::readAt().
void readAt(int descriptor, const std::string& path, std::uint64_t offset, std::span<std::byte> bytes);

/// The reason for a file that is not as it was.
inline constexpr const char* hasChanged = "it has changed since it was opened";

} // namespace io
