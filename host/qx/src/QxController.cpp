#include "QxController.h"

#include "QxPoolWatcher.h"
#include "QxViewerWindow.h"
#include "QxVolumePage.h"

namespace {
constexpr int mainViewer = 0;
constexpr int extraViewer = 4;
} // namespace

void QxController::MainViewer::show(int) { m_page->setViewerShown(true); }
void QxController::MainViewer::hide() { m_page->setViewerShown(false); }
bool QxController::MainViewer::isShown() const { return m_page->isViewerShown(); }

QxController::QxController(QxVolumePage* page, QxPoolWatcher* watcher, QWidget* window)
  : QObject(window), m_main(page), m_watcher(watcher), m_window(window)
{
  connect(watcher, &QxPoolWatcher::removed, this, [this](ZxObject* gone) {
    if (gone == m_object) m_object = nullptr;
  });
  setTheController(this);
}

QxController::~QxController()
{
  if (getTheController() == this) setTheController(nullptr);
}

ZxViewer* QxController::viewer(int number, int create)
{
  if (number == mainViewer) return &m_main;
  if (number != extraViewer) return nullptr;
  if (!m_extra && create) {
    m_extra = new QxViewerWindow(m_watcher, m_window);
    m_extra->setObject(m_object);
    connect(m_extra, &QxViewerWindow::shown, this, &QxController::extraViewerShown);
  }
  return m_extra;
}

void QxController::setObject(ZxObject* object)
{
  m_object = object;
  if (m_extra) m_extra->setObject(object);
}
