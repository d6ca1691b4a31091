#pragma once

#include "zx/ZxObject.h"

#include <QWidget>

class QLabel;
class QMenu;
class QxPoolTree;
class QxPoolWatcher;

/// The list of the objects of the pool, with a menu of what can be done with the selected ones.
class QxPoolPanel : public QWidget {
  Q_OBJECT
public:
  QxPoolPanel(QxPoolWatcher* watcher, QWidget* parent);

  std::vector<ZxObject*> selectedObjects() const;
  /// The object whose ports are shown: the only selected one, or null.
  ZxObject* selectedObject() const;
  /// Selects an object, also one that has just been put into the pool.
  void select(const ZxObject* object);
  void rename(const ZxObject* object);

Q_SIGNALS:
  void selectionChanged();
  /// The menu of the selected objects is wanted at a place on the screen.
  void menuRequested(const QPoint& place);
  /// An object was double-clicked, or Return was pressed on it.
  void activated(ZxObject* object);

private:
  void showHint();

  QxPoolTree* m_tree; // child
  QLabel* m_hint;     // child
};
