#pragma once

#include "zx/ZxObject.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// The objects of a session, in the order in which they were added. Owns them through handles.
class ZxObjectPool {
public:
  static ZxObjectPool& getThePool();

  /// Adds an object unless it is there already; a label that is taken gets a number.
  void add(ZxObject* object);
  /// Removes an object and disconnects every module from it. False, and a line on the message console, when
  /// the object is in use by a job (ZxData::isInUse()).
  bool remove(ZxObject* object);
  /// Removes everything, modules first.
  void clear();
  bool contains(const ZxObject* object) const noexcept;
  ZxObject* find(std::string_view label) const noexcept;
  const std::vector<McHandle<ZxObject>>& objects() const noexcept { return m_objects; }

  /// Adds a new module of a registered class, or returns null when there is no such class.
  ZxObject* create(std::string_view typeName);

  /// Calls a function after every change of the pool (an object added, removed, renamed), for as long as its
  /// number is not given back.
  int addListener(std::function<void()> changed);
  void removeListener(int number);

private:
  friend class ZxObject;
  struct Listener {
    int number;
    std::function<void()> changed;
  };

  ZxObjectPool() = default;
  /// A label that no object but this one has, made from the one that is wanted.
  std::string freeLabel(const std::string& wanted, const ZxObject* object) const;
  void changed();

  std::vector<McHandle<ZxObject>> m_objects;
  std::vector<Listener> m_listeners;
  int m_nextNumber = 0;
};
