#include "zx/ZxRecoveryFile.h"

#include "zx/ZxMessage.h"
#include "zx/ZxWriteAll.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSaveFile>
#include <QUuid>

namespace {

constexpr qint64 largestFile = 1 << 28;

QString folder()
{
  const QString state = qEnvironmentVariable("XDG_STATE_HOME");
  return (QDir::isAbsolutePath(state) ? state : QDir::homePath() + "/.local/state") + "/zxalign/recovery";
}

/// The part of a file's name that all files of a key have in common.
QString stemOf(const std::string& key)
{
  const QByteArray hash = QCryptographicHash::hash(QByteArray::fromStdString(key), QCryptographicHash::Sha1);
  return QString::fromLatin1(hash.toHex().left(16));
}

ZxRecoveryFile::Verdict judge(const QString& path, const ZxRecoveryFile::Reader& read)
{
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly) || file.size() > largestFile) return ZxRecoveryFile::Verdict::Damaged;
  return read(file.readAll().toStdString());
}

void putAside(const QString& path)
{
  const QString aside = path + ".damaged";
  QFile::remove(aside);
  QFile::rename(path, aside);
  ZxMessage::getTheMsg()->printf("The recovery file %s is damaged; it is kept as %s.", qPrintable(path),
                                 qPrintable(aside));
}

} // namespace

class ZxRecoveryFile::Private {
public:
  explicit Private(const QString& file) : path(file), lock(file + ".lock")
  {
    lock.setStaleLockTime(0); // Work may go on for days: only the end of its program voids a lock.
  }
  QString path;
  QLockFile lock;
};

ZxRecoveryFile::ZxRecoveryFile(std::unique_ptr<Private> p) : m_private(std::move(p)) {}

ZxRecoveryFile::~ZxRecoveryFile() = default;

std::unique_ptr<ZxRecoveryFile> ZxRecoveryFile::create(const std::string& key)
{
  const QString name = stemOf(key) + '-' + QUuid::createUuid().toString(QUuid::WithoutBraces) + ".json";
  return std::unique_ptr<ZxRecoveryFile>(
      new ZxRecoveryFile(std::make_unique<Private>(folder() + '/' + name)));
}

std::unique_ptr<ZxRecoveryFile> ZxRecoveryFile::findOrphan(const std::string& key, const Reader& read)
{
  const QFileInfoList files =
      QDir(folder()).entryInfoList({stemOf(key) + "-*.json"}, QDir::Files, QDir::Time); // newest first
  for (const QFileInfo& info : files) {
    auto file = std::make_unique<Private>(info.filePath());
    // Looked at again under the lock: its owner may just have removed it.
    if (!file->lock.tryLock(0) || !QFile::exists(file->path)) continue;
    const Verdict verdict = judge(file->path, read);
    if (verdict == Verdict::Wanted)
      return std::unique_ptr<ZxRecoveryFile>(new ZxRecoveryFile(std::move(file)));
    if (verdict == Verdict::Damaged) putAside(file->path);
  }
  return nullptr;
}

std::string ZxRecoveryFile::write(const std::string& bytes)
{
  if (!QDir().mkpath(folder())) return "the folder cannot be made";
  if (!m_private->lock.isLocked() && !m_private->lock.tryLock(0)) return "its lock cannot be made";
  QSaveFile file(m_private->path);
  if (file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && zxWriteAll(file, bytes) && file.commit())
    return {};
  return file.errorString().toStdString();
}

void ZxRecoveryFile::remove() { QFile::remove(m_private->path); }
