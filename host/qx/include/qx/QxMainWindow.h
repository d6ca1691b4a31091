#pragma once

#include <QMainWindow>
#include <QStringList>

class QMenu;
class QStackedLayout;
class QxCloseGuard;
class QxConsole;
class QxController;
class QxFileCommands;
class QxFileQueue;
class QxHelp;
class QxMessageBar;
class QxPoolActions;
class QxPoolPanel;
class QxPoolWatcher;
class QxPortPanel;
class QxVolumePage;
class QxWorkArea;
class ZxObject;

/// The main window of the desktop program. Its centre is a stack of pages: page 0 is the everyday page, and
/// editors of modules add pages of their own (see QxCentralPage).
///
/// While it lives it is the program's work area, message console and controller. Docks: "poolDock",
/// "portsDock", "consoleDock". Shortcuts of the window that editors use, too, are given to the current page
/// as long as that is not page 0.
class QxMainWindow : public QMainWindow {
  Q_OBJECT
public:
  /// Takes up the layout of the last session. There is one at a time.
  explicit QxMainWindow(QWidget* parent = nullptr);
  ~QxMainWindow() override;

  /// The main window, or null in a program that has none.
  static QxMainWindow* getTheMainWindow() noexcept;

  /// The pages of the centre. A page that is deleted leaves the stack by itself.
  QStackedLayout* getCentralLayout() const noexcept { return m_centre; }

  /// Opens volumes in the background, as if they had been dropped on the window.
  void open(const QStringList& files);
  /// True while files are read or written, or wait for it.
  bool isReadingOrWriting() const;
  /// Selects an object of the pool: its ports are shown, and the volume that it stands for.
  void select(const ZxObject* object);

public Q_SLOTS:
  /// Gives the docks the places that they had at first.
  void resetLayout();
  /// The preferences dialog, modal.
  void showPreferences();

protected:
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

private:
  void makeCentre();
  void makeDocks();
  void makeMenus();
  void fillFileMenu(QMenu* menu);
  void fillExplorerMenu(QMenu* menu);
  void fillWindowMenu(QMenu* menu);
  void connectParts();
  void restoreLayout();
  void placeDocks();
  void followSelection();
  void followPage(int page);
  void showTitle();
  /// Gives the focus to the pool, the ports, the page, the console in turn.
  void goToNextPane();
  QDockWidget* makeDock(const char* name, const QString& title, QWidget* content);

  // All of these are children of the window.
  QxPoolWatcher* m_watcher;
  QxWorkArea* m_workArea;
  QxFileQueue* m_fileQueue;
  QxFileCommands* m_files;
  QStackedLayout* m_centre = nullptr;
  QxMessageBar* m_messageBar = nullptr;
  QxVolumePage* m_page = nullptr;
  QxPoolPanel* m_pool = nullptr;
  QxPortPanel* m_ports = nullptr;
  QxConsole* m_console = nullptr;
  QDockWidget* m_poolDock = nullptr;
  QDockWidget* m_portsDock = nullptr;
  QDockWidget* m_consoleDock = nullptr;
  QxController* m_controller = nullptr;
  QxPoolActions* m_actions = nullptr;
  QxHelp* m_help = nullptr;
  QxCloseGuard* m_closeGuard = nullptr;
};
