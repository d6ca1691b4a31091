#include "qx/QxPictureFile.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageWriter>
#include <QSaveFile>

std::string qxWritePicture(const QImage& picture, const std::string& fileName)
{
  const QString name = QFile::decodeName(fileName.c_str());
  // In memory first: encoders print words of their own where they cannot write.
  QByteArray encoded;
  QBuffer buffer(&encoded);
  QImageWriter writer(&buffer, QFileInfo(name).suffix().toLatin1());
  if (!writer.write(picture)) return writer.errorString().toStdString();
  QSaveFile file(name);
  if (file.open(QIODevice::WriteOnly) && file.write(encoded) == encoded.size() && file.commit()) return {};
  return file.errorString().toStdString();
}
