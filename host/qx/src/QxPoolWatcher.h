#pragma once

#include "zx/ZxObject.h"
#include "zx/ZxPoolObserver.h"

#include <QObject>

/// Tells widgets of changes in the object pool: any number of changes in one turn of the event loop as one
/// signal, sent from the event loop and so never from the middle of a change.
class QxPoolWatcher : public QObject, private ZxPoolObserver {
  Q_OBJECT
public:
  explicit QxPoolWatcher(QObject* parent);

Q_SIGNALS:
  /// Something in the pool, an object of it or a port has changed.
  void changed();
  /// An object leaves the pool: nobody may keep a pointer to it. Sent at once.
  void removed(ZxObject* object);

private:
  void objectAdded(ZxObject*) override { note(); }
  void objectRemoved(ZxObject* object) override;
  void objectChanged(ZxObject*) override { note(); }
  void portsChanged(ZxModule*) override { note(); }
  void note();

  bool m_noted = false;
};
