#include "qx/QxPictureFile.h"

#include "zx/ZxWriteAll.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageWriter>
#include <QSaveFile>

std::string qxWritePicture(const QImage& picture, const std::string& fileName)
{
  const auto problem = [&](const QString& reason) {
    return fileName + " could not be written: " + reason.toStdString() + ".";
  };
  const QFileInfo target(QFile::decodeName(fileName.c_str()));
  if (target.exists() && !target.isFile()) return problem(QStringLiteral("it is no regular file"));
  // In memory first: encoders print words of their own where they cannot write.
  QByteArray encoded;
  QBuffer buffer(&encoded);
  QImageWriter writer(&buffer, target.suffix().toLatin1());
  if (!writer.write(picture)) return problem(writer.errorString());
  QSaveFile file(target.filePath());
  const std::string_view bytes(encoded.constData(), static_cast<std::size_t>(encoded.size()));
  const auto mode = QIODevice::WriteOnly | QIODevice::Unbuffered;
  if (file.open(mode) && zxWriteAll(file, bytes) && file.commit()) return {};
  return problem(file.errorString());
}
