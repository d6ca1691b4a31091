#pragma once

#include "mc/McHandable.h"
#include "mc/McString.h"
#include "mc/McTypeInfo.h"

/// Everything that the object pool can hold: data and modules. Owned by handles.
class ZxObject : public McHandable {
public:
  static const McTypeInfo& getClassTypeId();
  virtual const McTypeInfo& getTypeId() const { return getClassTypeId(); }
  bool isOfType(const McTypeInfo& type) const { return getTypeId().isDerivedFrom(type); }

  const McString& getLabel() const noexcept { return m_label; }
  void setLabel(McString label) { m_label = std::move(label); }

private:
  McString m_label;
};
