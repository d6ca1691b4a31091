#include "zx/ZxObject.h"

const McTypeInfo& ZxObject::getClassTypeId()
{
  static const McTypeInfo type("ZxObject", {});
  return type;
}
