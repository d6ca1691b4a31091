#include "zx/ZxWriteAll.h"

#include <QIODevice>

bool zxWriteAll(QIODevice& file, std::string_view bytes)
{
  while (!bytes.empty()) {
    const qint64 written = file.write(bytes.data(), static_cast<qint64>(bytes.size()));
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}
