#pragma once

#include <QMainWindow>

class QTextBrowser;
class QxFindBar;
class QxHelpSearch;
class QUrl;

/// The help browser: a window that shows HTML pages of the installation, with back, forward, home, zoom, and
/// search in the page and in all pages of its folder. Showing the window is up to the caller.
class ZxHTML : public QMainWindow {
  Q_OBJECT
public:
  /// The browser of the program, made when it is first asked for.
  static ZxHTML* getTheBrowser();

  /// Shows a page, at the place that "#name" at the end of the path gives. False, with a message and the
  /// former page left as it was, when it cannot be read.
  bool load(const QString& path);
  /// Shows the first page of the program's help.
  void home();
  /// Path of the page that is shown; empty before the first one.
  QString page() const;
  QTextBrowser* browser() const noexcept { return m_browser; }

private:
  ZxHTML();
  void makeToolBar();
  void follow(const QUrl& link);
  void showTitle();

  QTextBrowser* m_browser; // children
  QxFindBar* m_findBar;
  QxHelpSearch* m_search;
};
