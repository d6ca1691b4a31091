#pragma once

#include "zx/ZxObject.h"
#include "zx/ZxPoolObserver.h"

#include <string>
#include <string_view>
#include <vector>

/// The objects of a session, in the order in which they were added. Owns them through handles, and tells its
/// observers (ZxPoolObserver) of every change.
class ZxObjectPool {
public:
  static ZxObjectPool& getThePool();

  /// Adds an object unless it is there already; a label that is taken gets a number.
  void add(ZxObject* object);
  /// Removes an object and disconnects every module from it. Does nothing for one that is not in the pool.
  /// False, and a line on the message console, for data that a job works with (ZxData::isInUse()).
  bool remove(ZxObject* object);
  /// Removes everything, modules first.
  void clear();
  bool contains(const ZxObject* object) const noexcept;
  ZxObject* find(std::string_view label) const noexcept;
  const std::vector<McHandle<ZxObject>>& objects() const noexcept { return m_objects; }

  /// Adds a new module of a registered class, or returns null when there is no such class.
  ZxObject* create(std::string_view typeName);

private:
  friend class ZxModule;
  friend class ZxObject;
  friend class ZxPoolObserver;
  ZxObjectPool() = default;
  /// A label that no other object and no command has, made from the one that is wanted.
  std::string freeLabel(const std::string& wanted, const ZxObject& object) const;
  void take(const McHandle<ZxObject>& object);
  void tellChanged(ZxObject* object);
  void tellPortsChanged(ZxModule* module);
  /// Calls a function for every observer; one may come or go meanwhile.
  template <class Call>
  void tell(Call call);

  std::vector<McHandle<ZxObject>> m_objects;
  std::vector<ZxPoolObserver*> m_observers;
};
