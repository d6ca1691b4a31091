#pragma once

#include <QMainWindow>

/// The help browser: a window that shows HTML pages of the installation, with back, forward, home and search.
class ZxHTML : public QMainWindow {
  Q_OBJECT
public:
  /// The browser of the program, made when it is first asked for.
  static ZxHTML* getTheBrowser();

  /// Shows a page. False, with a message, when it cannot be read.
  bool load(const QString& path);
  /// Shows the first page of the program's help.
  void home();
};
