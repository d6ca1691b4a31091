#pragma once

#include "mc/McPrimType.h"

/// One voxel of any type: its values side by side. Refers to them, does not own them.
class McTypedElement {
public:
  McTypedElement(const void* values, McPrimType type, int numValues) noexcept
    : m_values(values), m_type(type), m_numValues(numValues)
  {
  }
  /// Length of the vector of the values: the absolute value for one. NaN when one of them is.
  double length() const noexcept;

private:
  const void* m_values;
  McPrimType m_type;
  int m_numValues;
};
