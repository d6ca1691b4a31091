#include "qx/QxPictureFile.h"

#include "zx/ZxWriteAll.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageWriter>

std::string qxWritePicture(const QImage& picture, const std::string& fileName)
{
  const QString name = QFile::decodeName(fileName.c_str());
  // In memory first: encoders print words of their own where they cannot write.
  QByteArray encoded;
  QBuffer buffer(&encoded);
  QImageWriter writer(&buffer, QFileInfo(name).suffix().toLatin1());
  if (!writer.write(picture)) return writer.errorString().toStdString();
  // Not QSaveFile: it would put a file into the place of a device.
  QFile file(name);
  const bool isNew = !file.exists();
  if (file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
      zxWriteAll(file, {encoded.constData(), static_cast<std::size_t>(encoded.size())}))
    return {};
  const std::string reason = file.errorString().toStdString();
  if (isNew) file.remove();
  return reason;
}
