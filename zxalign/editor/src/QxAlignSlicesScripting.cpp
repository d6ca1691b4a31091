// The editor window: what scripts ask of it beyond the slots that people use.
#include "qx/QxPictureFile.h"
#include "zxalign/QxAlignSlices.h"
#include "zxalign/QxAutoAlignToolBar.h"
#include "zxalign/QxDrawAlignSlices.h"
#include "zxalign/QxOrthoViewManager.h"
#include "zxalign/QxViewAlignSlicesOrthogonalCommonToolBar.h"

#include <QCoreApplication>
#include <QLayout>
#include <QToolBar>

void QxAlignSlices::chooseEditMode(int mode)
{
  if (mode == EditTransform) return m_autoAlignToolBar->editTransform();
  if (mode == EditLandmarks) return m_autoAlignToolBar->editLandmarks();
  setEditMode(mode);
  m_drawArea->setEditMode(mode);
}

void QxAlignSlices::chooseViewMode(int mode) { changeViewMode(mode); }

void QxAlignSlices::showEdit()
{
  updateToolbar();
  updateOrthoViews(0, 0, false, false, false, false);
}

void QxAlignSlices::inhibitRedraw(int delta) { m_drawArea->addSuppression(delta); }

void QxAlignSlices::setOrthoViewZWindow(int halfWidth)
{
  if (halfWidth >= 0) m_orthoViews->setZRange(halfWidth);
  m_orthoViews->setShowZRange(halfWidth >= 0);
}

void QxAlignSlices::setOrthoViewAutoUpdate(bool on)
{
  if (auto* bar = m_orthoViews->getToolBar()) bar->setAutoUpdate(on);
}

void QxAlignSlices::updateOrthogonalViews()
{
  if (auto* bar = m_orthoViews->getToolBar()) bar->updateView(); // which computes also without "Auto update"
}

std::string QxAlignSlices::snapshot(const std::string& fileName)
{
  QList<QToolBar*> bars = findChildren<QToolBar*>(Qt::FindDirectChildrenOnly); // those of the panels as well
  bars.removeIf([](const QToolBar* bar) { return bar->isHidden(); }); // also in a window that nobody sees
  for (QToolBar* bar : bars) bar->hide();
  if (layout()) layout()->activate();
  // The fourth byte of what is on the screen says nothing; a picture is opaque.
  const QImage picture = grab().toImage().convertToFormat(QImage::Format_RGB32);
  for (QToolBar* bar : bars) bar->show();
  const std::string reason = qxWritePicture(picture, fileName);
  return reason.empty() ? reason : fileName + " could not be written: " + reason + ".";
}
