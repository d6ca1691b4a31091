#include "zx/ZxObject.h"

#include "zx/ZxObjectPool.h"

const McTypeInfo& ZxObject::getClassTypeId()
{
  static const McTypeInfo type("ZxObject", {});
  return type;
}

void ZxObject::setLabel(McString label)
{
  ZxObjectPool& pool = ZxObjectPool::getThePool();
  if (label == m_label) return;
  const bool isInPool = pool.contains(this);
  m_label = isInPool ? pool.freeLabel(label.str(), this) : std::move(label);
  if (isInPool) pool.changed();
}
