#include "qx/ZxHTML.h"

ZxHTML* ZxHTML::getTheBrowser()
{
  static ZxHTML browser;
  return &browser;
}

bool ZxHTML::load(const QString&) { return false; }

void ZxHTML::home() {}
