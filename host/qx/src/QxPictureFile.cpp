#include "qx/QxPictureFile.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageWriter>
#include <QSaveFile>

std::string qxWritePicture(const QImage& picture, const std::string& fileName)
{
  QSaveFile file(QFile::decodeName(fileName.c_str()));
  QImageWriter writer(&file, QFileInfo(file.fileName()).suffix().toLatin1());
  if (file.open(QIODevice::WriteOnly) && writer.write(picture) && file.commit()) return {};
  return (file.error() != QFileDevice::NoError ? file.errorString() : writer.errorString()).toStdString();
}
