#pragma once

#include "Session.h"
#include "qx/QxMainWindow.h"

#include <QAction>
#include <QMenu>
#include <QString>
#include <QWidget>

#include <functional>

/// The running program, and hands that find its controls by their object names. Whatever is not as expected
/// ends the program with a sentence: there is no picture of half a scene.
class Stage {
public:
  /// Shows the main window at the size of the pictures.
  Stage();

  QxMainWindow& window() { return m_session.window(); }

  /// A widget or an action below the main window.
  template <class T = QWidget>
  T& find(const char* name)
  {
    T* const found = window().findChild<T*>(name);
    if (!found) fail(QString("There is no \"%1\".").arg(name));
    return *found;
  }

  /// Opens a file and waits until it is selected.
  void open(const QString& file);
  /// Evaluates a script; its result.
  QString script(const QString& text);
  /// Shows or hides a dock of the main window.
  void showDock(const char* name, bool shown);
  /// Opens a menu of the menu bar, does something, and closes the menu.
  void whileMenuIsOpen(const char* menu, const std::function<void(QMenu& menu)>& act);
  /// Does something inside the dialog or menu that another call opens and waits for, then closes it.
  static void whileOpen(const std::function<void()>& open, const std::function<void(QWidget& opened)>& act);

  /// Lets everything happen that is due.
  static void settle();
  static void waitFor(const char* what, const std::function<bool()>& condition);
  [[noreturn]] static void fail(const QString& sentence);

private:
  orvel::Session m_session;
};
