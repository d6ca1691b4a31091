#include "qx/QxPictureFile.h"

#include "zx/ZxWriteAll.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageWriter>

std::string qxWritePicture(const QImage& picture, const std::string& fileName)
{
  const auto problem = [&](const QString& reason) {
    return fileName + " could not be written: " + reason.toStdString() + ".";
  };
  const QString name = QString::fromStdString(fileName);
  // In memory first: encoders print words of their own where they cannot write.
  QByteArray encoded;
  QBuffer buffer(&encoded);
  QImageWriter writer(&buffer, QFileInfo(name).suffix().toLatin1());
  if (!writer.write(picture)) return problem(writer.errorString());
  QFile file(name);
  const bool isNew = !file.exists();
  if (file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
      zxWriteAll(file, {encoded.constData(), static_cast<std::size_t>(encoded.size())}))
    return {};
  const QString reason = file.errorString();
  if (isNew) file.remove();
  return problem(reason);
}
