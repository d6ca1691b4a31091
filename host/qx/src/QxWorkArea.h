#pragma once

#include "zx/ZxWorkArea.h"

#include <QElapsedTimer>
#include <QObject>

#include <vector>

class QLabel;
class QProgressBar;
class QPushButton;
class QStatusBar;
class QWidget;

/// The work area of the window: text, progress bar and Stop button in the status line, and the busy cursor.
///
/// While it is busy, what the user does goes to the Stop button and to dialogs that the work itself has
/// opened; Escape is Stop. Everything else waits for nobody: it is dropped, so that no work is started inside
/// another. Children of the status line: "progressText", "progressBar", "stopButton".
class QxWorkArea : public QObject, public ZxWorkArea {
  Q_OBJECT
public:
  /// Adds its widgets to the status line and makes itself the current work area.
  explicit QxWorkArea(QStatusBar* statusBar);
  ~QxWorkArea() override;

  void processPendingEvents() override;
  /// Lets a widget be used while the area is busy, too: one that starts no work.
  void keepUsable(QWidget* widget) { m_usable.push_back(widget); }
  /// Asks the current work to stop; nothing when there is none.
  void stop();
  bool eventFilter(QObject* watched, QEvent* event) override;

protected:
  void show() override;
  void workingChanged() override;
  void busyChanged() override { followBusy(); }
  bool interruptRequested() override { return m_stop; }

private:
  void followBusy();
  bool mayReceive(QObject* watched, QEvent* event);

  QLabel* m_label; // these three: children of the status line
  QProgressBar* m_bar;
  QPushButton* m_button;
  QElapsedTimer m_lastRepaint;
  std::vector<QWidget*> m_usable;
  QString m_textBefore; // what stood there when the work began
  bool m_wasBusy = false;
  bool m_stop = false;
};
