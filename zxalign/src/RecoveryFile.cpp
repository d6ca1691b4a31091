#include "RecoveryFile.h"

#include "zx/ZxMessage.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QUuid>

#include <cmath>

namespace {

constexpr const char* formatName = "zxalign recovery";
constexpr int formatVersion = 1;
constexpr qint64 largestFile = 1 << 28;

QString folder()
{
  const QString state = qEnvironmentVariable("XDG_STATE_HOME");
  return (QDir::isAbsolutePath(state) ? state : QDir::homePath() + "/.local/state") + "/zxalign/recovery";
}

/// JSON knows no NaN and no infinity.
double finite(float v) { return std::isfinite(v) ? static_cast<double>(v) : 0.0; }

QJsonArray encodeSlice(const SliceInfo& slice)
{
  QJsonArray landmarks;
  for (const QPoint& p : slice.landmarks) landmarks.append(QJsonArray{p.x(), p.y()});
  return {finite(slice.translationX), finite(slice.translationY), finite(slice.rotation), slice.flip,
          landmarks};
}

bool decodeSlice(const QJsonArray& array, SliceInfo& slice)
{
  if (array.size() != 5 || !array[3].isBool() || !array[4].isArray()) return false;
  for (int i = 0; i < 3; ++i)
    if (!array[i].isDouble()) return false;
  slice.setXForm(SliceXForm(static_cast<float>(array[0].toDouble()), static_cast<float>(array[1].toDouble()),
                            static_cast<float>(array[2].toDouble()), array[3].toBool()));
  const QJsonArray landmarks = array[4].toArray();
  for (const QJsonValue& landmark : landmarks) {
    const QJsonArray p = landmark.toArray();
    if (p.size() != 2) return false;
    slice.landmarks.append(QPoint(p[0].toInt(), p[1].toInt()));
  }
  return true;
}

bool decodeState(const QJsonObject& object, const ZxDims& dims, AlignState& state)
{
  const QJsonArray slices = object["alignment"].toArray();
  if (dims.slices < 2 || slices.size() != dims.slices) return false;
  state.slices.resize(static_cast<std::size_t>(dims.slices));
  for (int i = 0; i < dims.slices; ++i)
    if (!decodeSlice(slices[i].toArray(), state.slices[static_cast<std::size_t>(i)])) return false;
  state.currentSlice = object["currentSlice"].toInt(-1);
  state.side = object["side"].toInt();
  const int reference = state.currentSlice - state.side;
  return (state.side == 1 || state.side == -1) && state.currentSlice >= 0 &&
         state.currentSlice < dims.slices && reference >= 0 && reference < dims.slices;
}

std::optional<RecoveryContent> readContent(const QString& path)
{
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly) || file.size() > largestFile) return std::nullopt;
  return decodeRecovery(file.readAll());
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

QString RecoveryKey::fileStem() const
{
  const QByteArray text = QByteArray::fromStdString(path) + '\n' + QByteArray::number(dims.width) + ' ' +
                          QByteArray::number(dims.height) + ' ' + QByteArray::number(dims.slices);
  return QString::fromLatin1(QCryptographicHash::hash(text, QCryptographicHash::Sha1).toHex().left(16));
}

QByteArray encodeRecovery(const RecoveryContent& content)
{
  QJsonArray slices;
  for (const SliceInfo& slice : content.state.slices) slices.append(encodeSlice(slice));
  const ZxDims& dims = content.key.dims;
  // A path is bytes, which need not be text.
  const QString path =
      QString::fromLatin1(QByteArray::fromStdString(content.key.path).toPercentEncoding("/"));
  return QJsonDocument(QJsonObject{{"format", formatName},
                                   {"version", formatVersion},
                                   {"time", content.time},
                                   {"path", path},
                                   {"size", QJsonArray{dims.width, dims.height, dims.slices}},
                                   {"currentSlice", content.state.currentSlice},
                                   {"side", content.state.side},
                                   {"alignment", slices}})
      .toJson(QJsonDocument::Compact);
}

std::optional<RecoveryContent> decodeRecovery(const QByteArray& bytes)
{
  const QJsonObject object = QJsonDocument::fromJson(bytes).object();
  if (object["format"].toString() != formatName || object["version"].toInt() != formatVersion)
    return std::nullopt;
  const QJsonArray size = object["size"].toArray();
  if (size.size() != 3) return std::nullopt;
  RecoveryContent content;
  content.key.path = QByteArray::fromPercentEncoding(object["path"].toString().toLatin1()).toStdString();
  content.key.dims = {size[0].toInt(), size[1].toInt(), size[2].toInt()};
  content.time = object["time"].toString();
  if (!decodeState(object, content.key.dims, content.state)) return std::nullopt;
  return content;
}

RecoveryFile::RecoveryFile(const QString& path) : m_path(path), m_lock(path + ".lock")
{
  m_lock.setStaleLockTime(
      0); // An alignment may be edited for days: only the end of its program voids a lock.
}

std::unique_ptr<RecoveryFile> RecoveryFile::create(const RecoveryKey& key)
{
  const QString name = key.fileStem() + '-' + QUuid::createUuid().toString(QUuid::WithoutBraces) + ".json";
  return std::unique_ptr<RecoveryFile>(new RecoveryFile(folder() + '/' + name));
}

std::unique_ptr<RecoveryFile> RecoveryFile::findOrphan(const RecoveryKey& key, RecoveryContent& content)
{
  const QFileInfoList files =
      QDir(folder()).entryInfoList({key.fileStem() + "-*.json"}, QDir::Files, QDir::Time); // newest first
  for (const QFileInfo& info : files) {
    std::unique_ptr<RecoveryFile> file(new RecoveryFile(info.filePath()));
    // Looked at again under the lock: its owner may just have removed it.
    if (!file->m_lock.tryLock(0) || !QFile::exists(file->m_path)) continue;
    const std::optional<RecoveryContent> read = readContent(file->m_path);
    if (!read)
      putAside(file->m_path);
    else if (read->key == key) {
      content = *read;
      return file;
    }
  }
  return nullptr;
}

QString RecoveryFile::write(const QByteArray& bytes)
{
  if (!QDir().mkpath(folder())) return "the folder cannot be made";
  if (!m_lock.isLocked() && !m_lock.tryLock(0)) return "its lock cannot be made";
  QSaveFile file(m_path);
  if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit()) return {};
  return file.errorString();
}

void RecoveryFile::remove() { QFile::remove(m_path); }
