#pragma once

#include "zx/ZxObject.h"

#include <string_view>
#include <vector>

/// The objects of a session, in the order in which they were added. Owns them through handles.
class ZxObjectPool {
public:
  static ZxObjectPool& getThePool();

  /// Adds an object unless it is there already; a label that is taken gets a number.
  void add(ZxObject* object);
  /// Removes an object and disconnects every module from it.
  void remove(ZxObject* object);
  /// Removes everything, modules first.
  void clear();
  bool contains(const ZxObject* object) const noexcept;
  ZxObject* find(std::string_view label) const noexcept;
  const std::vector<McHandle<ZxObject>>& objects() const noexcept { return m_objects; }

  /// Adds a new module of a registered class, or returns null when there is no such class.
  ZxObject* create(std::string_view typeName);

private:
  ZxObjectPool() = default;
  std::vector<McHandle<ZxObject>> m_objects;
};
