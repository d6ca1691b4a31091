#include "qx/ZxResource.h"

#include "ZxIconEngine.h"
#include "zx/ZxMessage.h"

#include <QFile>
#include <QFileInfo>

QIcon ZxResource::readIcon(const char* name)
{
  const QString base = QFileInfo(QString::fromUtf8(name)).completeBaseName();
  QFile file(":/qx/icons/" + base + ".svg");
  if (base.isEmpty() || !file.open(QIODevice::ReadOnly)) {
    ZxMessage::getTheMsg()->printf("There is no icon \"%s\".", name);
    return {};
  }
  return QIcon(new ZxIconEngine(base, file.readAll()));
}
