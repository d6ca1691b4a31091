#include "zx/ZxObject.h"

#include "zx/ZxObjectPool.h"

const McTypeInfo& ZxObject::getClassTypeId()
{
  static const McTypeInfo type("ZxObject", {});
  return type;
}

void ZxObject::setLabel(McString label)
{
  if (label == m_label) return;
  m_label = m_inPool ? McString(ZxObjectPool::getThePool().freeLabel(label.str(), *this)) : std::move(label);
  changed();
}

void ZxObject::changed()
{
  if (m_inPool) ZxObjectPool::getThePool().tellChanged(this);
}
