#pragma once

#include "zx/ZxBox3.h"
#include "zxalign/AlignHistory.h"

#include <QByteArray>
#include <QLockFile>
#include <QString>

#include <memory>
#include <optional>
#include <string>

/// Which data a kept alignment belongs to: their file and their size.
struct RecoveryKey {
  std::string path; ///< absolute, without links; empty when the data have no file
  ZxDims dims;

  /// The same path and size give the same name, others with all likelihood another one.
  QString fileStem() const;
  friend bool operator==(const RecoveryKey& a, const RecoveryKey& b) = default;
};

/// What a recovery file holds.
struct RecoveryContent {
  RecoveryKey key;
  QString time; ///< when it was written, ISO 8601 with the local offset
  AlignState state;
};

/// As JSON: numbers come back exactly. A value that is no number (NaN) comes back as 0.
QByteArray encodeRecovery(const RecoveryContent& content);
/// None where the bytes are damaged or hold another number of slices than they say.
std::optional<RecoveryContent> decodeRecovery(const QByteArray& bytes);

/// One file with the unsaved alignment of one module, in the user's state folder
/// ($XDG_STATE_HOME/zxalign/recovery).
///
/// Every module of every program has a file of its own beside a lock that says that it lives: nobody writes
/// over or removes the file of another. The lock of a program that was killed is void. Written beside its
/// name and renamed into place: a file is whole or not there.
class RecoveryFile {
public:
  /// A new file, which appears with the first write.
  static std::unique_ptr<RecoveryFile> create(const RecoveryKey& key);
  /// The newest file for these data that nobody holds any more; null without one. It is held from now on.
  /// Damaged ones are put aside, after a message.
  static std::unique_ptr<RecoveryFile> findOrphan(const RecoveryKey& key, RecoveryContent& content);

  /// Empty, or what went wrong.
  QString write(const QByteArray& bytes);
  /// Removes the file, if it is there.
  void remove();

private:
  explicit RecoveryFile(const QString& path);

  QString m_path;
  QLockFile m_lock;
};
