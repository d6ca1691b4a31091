#pragma once

#include <functional>
#include <memory>
#include <string>

/// One file with unsaved work, in the user's state folder ($XDG_STATE_HOME/zxalign/recovery), which is there
/// again after the program was killed.
///
/// A key names what the work is on. Every owner, in every program, has a file of its own beside a lock that
/// says that it lives: nobody writes over or removes the file of another. The lock of a program that was
/// killed is void. Written beside its name and renamed into place: a file is whole or not there. An object is
/// used by one thread at a time.
class ZxRecoveryFile {
public:
  /// What a reader says of the contents of a file.
  enum class Verdict { Wanted, Other, Damaged };
  using Reader = std::function<Verdict(const std::string& bytes)>;

  /// A new file, which appears with the first write.
  static std::unique_ptr<ZxRecoveryFile> create(const std::string& key);
  /// The newest file of this key that nobody holds any more and that is wanted; null without one. It is held
  /// from now on. Different keys may share a name, by chance: the contents decide. Damaged files are put
  /// aside, after a message.
  static std::unique_ptr<ZxRecoveryFile> findOrphan(const std::string& key, const Reader& read);
  /// Gives the lock back; the file stays.
  ~ZxRecoveryFile();

  /// Empty, or what went wrong.
  std::string write(const std::string& bytes);
  /// Removes the file, if it is there.
  void remove();

private:
  class Private;
  explicit ZxRecoveryFile(std::unique_ptr<Private> p);
  std::unique_ptr<Private> m_private;
};
