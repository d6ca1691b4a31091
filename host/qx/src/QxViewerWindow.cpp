#include "QxViewerWindow.h"

#include "QxVolumePage.h"
#include "zx/ZxSkin.h"

#include <QVBoxLayout>

QxViewerWindow::QxViewerWindow(QxPoolWatcher* watcher, QWidget* parent)
  : QWidget(parent, Qt::Window), m_page(new QxVolumePage(watcher, this))
{
  setObjectName("extraViewer");
  setWindowTitle(QString::fromStdString(ZxSkin::getGlobalInstance()->getCaption("Main")) + tr(" - Viewer"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(m_page);
  resize(640, 560);
}

void QxViewerWindow::setObject(ZxObject* object) { m_page->setObject(object); }

void QxViewerWindow::show(int raise)
{
  QWidget::show();
  if (!raise) return;
  QWidget::raise();
  activateWindow();
}

void QxViewerWindow::showEvent(QShowEvent* event)
{
  QWidget::showEvent(event);
  Q_EMIT shown(true);
}

void QxViewerWindow::hideEvent(QHideEvent* event)
{
  QWidget::hideEvent(event);
  Q_EMIT shown(false);
}
