#pragma once

class ZxModule;
class ZxObject;

/// Hears of changes in the object pool, for as long as it lives. Calls come from inside the change, maybe in
/// the middle of a module's pass: an observer takes a note and does its work later.
class ZxPoolObserver {
public:
  ZxPoolObserver();
  virtual ~ZxPoolObserver();
  ZxPoolObserver(const ZxPoolObserver&) = delete;
  ZxPoolObserver& operator=(const ZxPoolObserver&) = delete;

  /// The object is in the pool.
  virtual void objectAdded(ZxObject*) {}
  /// The object has left the pool; it lives until this call has returned.
  virtual void objectRemoved(ZxObject*) {}
  /// Label, data or the unsaved mark of an object of the pool have changed.
  virtual void objectChanged(ZxObject*) {}
  /// Values, connections, visibility, sensitivity or labels of the ports of a module have changed.
  virtual void portsChanged(ZxModule*) {}
};
