#pragma once

#include <QMainWindow>

class QStackedLayout;

/// The main window of the desktop program. Its centre is a stack of pages: page 0 is the everyday page, and
/// editors of modules add pages of their own.
class QxMainWindow : public QMainWindow {
  Q_OBJECT
public:
  explicit QxMainWindow(QWidget* parent = nullptr);
  ~QxMainWindow() override;

  /// The main window, or null in a program that has none.
  static QxMainWindow* getTheMainWindow() noexcept;

  /// The pages of the centre. A page that is deleted leaves the stack by itself.
  QStackedLayout* getCentralLayout() const noexcept { return m_centre; }

private:
  QStackedLayout* m_centre; // child of the central widget
};
