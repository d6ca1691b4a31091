#pragma once

#include <QObject>

class QAction;
class QMainWindow;
class QMenu;
class QStackedLayout;

/// The menu of the help: what it shows depends on the page that is current and on the packages.
///
/// A page gives help of its own by a slot `menuUsersguide()` of the page or of an object below it.
class QxHelp : public QObject {
  Q_OBJECT
public:
  QxHelp(QStackedLayout* pages, QMainWindow* window);
  void fill(QMenu* menu);

public Q_SLOTS:
  /// The help of the current page, or the first page of all help.
  void showContents();
  void showAbout();

private:
  /// The object of the current page that shows its help, or null.
  QObject* helperOfPage() const;
  void addModulePages(QMenu* menu);

  QStackedLayout* m_pages;
  QMainWindow* m_window;   // parent
  QList<QAction*> m_added; // for the modules that were known when the menu was opened last
};
