#pragma once

#include "kernels/Affine.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// A set of mappings in fixed point. Look-ups take no memory and may be made by several threads at once.
class MappingSet {
public:
  /// Empties the set; its memory stays.
  void clear();
  /// Adds a mapping, one that is there already once. May take memory.
  void insert(const kernels::Affine16& mapping);
  /// True when exactly this mapping is in the set.
  bool contains(const kernels::Affine16& mapping) const;

private:
  struct Slot {
    bool used = false;
    kernels::Affine16 mapping;
  };

  /// Where a mapping is, or where it would be.
  std::size_t find(const kernels::Affine16& mapping) const;
  void grow();

  std::vector<Slot> m_slots = std::vector<Slot>(1024); // a power of two, at most half of them used
  std::size_t m_used = 0;
};
