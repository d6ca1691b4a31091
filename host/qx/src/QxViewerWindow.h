#pragma once

#include "zx/ZxController.h"

#include <QWidget>

class QxPoolWatcher;
class QxVolumePage;
class ZxObject;

/// A viewer in a window of its own, beside the main window.
class QxViewerWindow : public QWidget, public ZxViewer {
  Q_OBJECT
public:
  QxViewerWindow(QxPoolWatcher* watcher, QWidget* parent);

  void setObject(ZxObject* object);
  void show(int raise) override;
  void hide() override { QWidget::hide(); }
  bool isShown() const override { return isVisible(); }

Q_SIGNALS:
  void shown(bool on);

protected:
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

private:
  QxVolumePage* m_page; // child
};
