#pragma once

#include "zx/ZxObject.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QWidget>

#include <vector>

class McTypeInfo;
class QAction;
class QMainWindow;
class QMenu;
class QxFileCommands;
class QxPoolPanel;
class QxVolumePage;

/// What can be done with the selected objects of the pool, for the menu bar and the list's own menu.
class QxPoolActions : public QObject {
  Q_OBJECT
public:
  QxPoolActions(QxPoolPanel* panel, QxVolumePage* page, QxFileCommands* files, QMainWindow* window);

  QAction* save() const noexcept { return m_save; }
  QAction* saveAs() const noexcept { return m_saveAs; }
  /// Fills the menu bar's menu of the pool, which follows the selection.
  void fillPoolMenu(QMenu* menu);
  /// The modules that can be attached to the selected object, one action each.
  void fillCreateMenu(QMenu* menu);
  void showContextMenu(const QPoint& place);
  /// While work goes on nothing may be attached, removed or renamed under it.
  void follow();

  /// True while a module works, or anything else that no other work may be started in.
  static bool isWorkGoingOn();
  /// Likewise, and says so on the message console.
  static bool isRefused();

Q_SIGNALS:
  /// The user has attached a module.
  void attached(ZxObject* module);

private:
  QAction* makeAction(const char* name, const QString& text, const char* icon, void (QxPoolActions::*slot)());
  void attach(const McTypeInfo& moduleClass);
  void removeSelected();
  /// The pages of the centre, each a QxCentralPage, that edit one of the objects or a module that reads one.
  QList<QPointer<QWidget>> pagesOf(const std::vector<McHandle<ZxObject>>& objects) const;
  void renameSelected();
  void showSelected();
  void saveSelected();
  void saveSelectedAs();
  template <class Save>
  void forSelectedData(Save save);

  QxPoolPanel* m_panel; // these three: of the window
  QxVolumePage* m_page;
  QxFileCommands* m_files;
  QMainWindow* m_window; // parent
  QAction* m_save;       // these five: children
  QAction* m_saveAs;
  QAction* m_remove;
  QAction* m_rename;
  QAction* m_show;
};
