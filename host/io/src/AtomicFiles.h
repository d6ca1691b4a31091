#pragma once

#include <string>
#include <vector>

namespace io {

/// Files of one folder that appear together or not at all.
///
/// Each is written under its name with a hidden prefix; commit() renames them into place. What has the prefix
/// and was not committed is removed by the destructor, so a failure or a stop leaves the folder as it was.
class AtomicFiles {
public:
  explicit AtomicFiles(std::string folder);
  ~AtomicFiles();
  AtomicFiles(const AtomicFiles&) = delete;
  AtomicFiles& operator=(const AtomicFiles&) = delete;

  /// The path to write to for a file that is to be called name.
  std::string temporary(const std::string& name) const { return m_folder + m_prefix + name; }
  /// Puts all files written so far on the disk and gives them their names; the one called last is the last
  /// one: a header that says where the data are comes after them. Throws Error, a full disk shows here too,
  /// and so does a stop that came before the first name was given.
  void commit(const std::string& last);

private:
  std::vector<std::string> names() const;
  void flush(const std::vector<std::string>& names) const;
  void rename(const std::string& name) const;

  std::string m_folder; ///< ends in '/', or empty for the current folder
  std::string m_prefix;
};

} // namespace io
