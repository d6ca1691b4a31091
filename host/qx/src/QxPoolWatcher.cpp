#include "QxPoolWatcher.h"

QxPoolWatcher::QxPoolWatcher(QObject* parent) : QObject(parent) {}

void QxPoolWatcher::objectRemoved(ZxObject* object)
{
  Q_EMIT removed(object);
  note();
}

void QxPoolWatcher::note()
{
  if (m_noted) return;
  m_noted = true;
  QMetaObject::invokeMethod(
      this,
      [this] {
        m_noted = false;
        Q_EMIT changed();
      },
      Qt::QueuedConnection);
}
