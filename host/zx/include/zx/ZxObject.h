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
  /// Sets the label. In the pool labels are unique: one that is taken gets a number.
  void setLabel(McString label);

private:
  McString m_label;
};
