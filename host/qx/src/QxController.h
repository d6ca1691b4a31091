#pragma once

#include "zx/ZxController.h"

#include <QObject>

class QWidget;
class QxPoolWatcher;
class QxViewerWindow;
class QxVolumePage;
class ZxObject;

/// The viewers of the window: 0 is that of page 0, 4 a window of its own, made when it is first wanted.
class QxController : public QObject, public ZxController {
  Q_OBJECT
public:
  /// Makes itself the program's controller for as long as it lives.
  QxController(QxVolumePage* page, QxPoolWatcher* watcher, QWidget* window);
  ~QxController() override;

  ZxViewer* viewer(int number, int create = 0) override;
  /// What the viewers show.
  void setObject(ZxObject* object);

Q_SIGNALS:
  void extraViewerShown(bool shown);

private:
  /// Viewer 0: hidden it leaves its page empty.
  class MainViewer : public ZxViewer {
  public:
    explicit MainViewer(QxVolumePage* page) : m_page(page) {}
    void show(int raise) override;
    void hide() override;
    bool isShown() const override;

  private:
    QxVolumePage* m_page;
  };

  MainViewer m_main;
  QxPoolWatcher* m_watcher;
  QWidget* m_window;
  QxViewerWindow* m_extra = nullptr; // child of the window
  ZxObject* m_object = nullptr;
};
