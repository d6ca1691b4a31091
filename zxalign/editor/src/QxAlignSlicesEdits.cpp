// The editor window: changes of transforms and landmarks, and the previews of the result.
#include "AlignBorderPreviews.h"
#include "AlignModuleKeeper.h"
#include "mc/McRound.h"
#include "zxalign/AlignOptions.h"
#include "zxalign/QxAlignSlices.h"
#include "zxalign/QxAlignSlicesOptionsDialog.h"
#include "zxalign/QxAlignUndoRedo.h"
#include "zxalign/QxDrawAlignSlices.h"
#include "zxalign/QxOrthoViewManager.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignSlices.h"

#include <cstdlib>

namespace {

/// To the nearest whole number, halves away from zero.
int roundAwayFromZero(float v) { return mc::truncToInt(v > 0.0f ? v + 0.5f : v - 0.5f); }

} // namespace

bool QxAlignSlices::canEdit() const { return hasPair() && !m_module->isRunning(); }

bool QxAlignSlices::acceptsEdit()
{
  if (canEdit()) return true;
  if (hasPair()) {
    showSide();
    updateViews();
  }
  return false;
}

void QxAlignSlices::saveState() { m_undoRedo->saveState(); }

void QxAlignSlices::reset()
{
  if (!acceptsEdit()) return;
  saveState();
  currentSlice().setXForm(SliceXForm());
  m_module->mapSlices();
  updateViews();
  const int current = m_module->getEditableSlice();
  m_orthoViews->updateView(current, current, OrthoOrientation::Both, 0, 0, false, false, false);
  m_module->updateQuality();
}

void QxAlignSlices::resetAll()
{
  if (!acceptsEdit()) return;
  saveState();
  for (SliceInfo& slice : m_module->slices()) slice.setXForm(SliceXForm());
  m_module->mapSlices();
  updateViews();
  m_orthoViews->updateView();
  m_module->updateQuality();
}

void QxAlignSlices::read()
{
  if (!acceptsEdit()) return;
  const bool wasModified = m_module->isModified();
  saveState();
  m_module->setModified(wasModified); // What is read is stored.
  m_drawArea->clearSelection();       // There may be fewer landmarks now.
  m_module->readTransform();
  updateViews();
  m_orthoViews->updateView();
  m_module->updateQuality();
}

void QxAlignSlices::save()
{
  if (acceptsEdit()) m_module->saveAlignment();
}

void QxAlignSlices::apply()
{
  if (canEdit()) m_module->apply(false);
}

void QxAlignSlices::mirror()
{
  if (!acceptsEdit()) return;
  saveState();
  currentSlice().flip = !currentSlice().flip;
  updateViews();
  updateOrthoViews(0, 0, false, false, true, false);
  m_module->updateQuality();
}

void QxAlignSlices::writeTransform(const SliceXForm& xform)
{
  if (!acceptsEdit()) return;
  saveState();
  currentSlice().setXForm(xform);
  updateViews();
  m_module->updateQuality();
}

void QxAlignSlices::toolBarTranslateX(int t)
{
  if (!acceptsEdit()) return;
  SliceXForm xform = currentSlice();
  xform.translationX = static_cast<float>(t);
  writeTransform(xform);
}

void QxAlignSlices::toolBarTranslateY(int t)
{
  if (!acceptsEdit()) return;
  SliceXForm xform = currentSlice();
  xform.translationY = static_cast<float>(t);
  writeTransform(xform);
}

void QxAlignSlices::toolBarRotate(float r)
{
  if (!acceptsEdit()) return;
  SliceXForm xform = currentSlice();
  xform.rotation = r;
  writeTransform(xform);
}

void QxAlignSlices::toolBarFlip(bool b)
{
  if (!acceptsEdit()) return;
  SliceXForm xform = currentSlice();
  xform.flip = b;
  writeTransform(xform);
}

void QxAlignSlices::translate(float x, float y, bool wholeStack)
{
  if (!acceptsEdit()) return;
  saveState();
  const float dx = x - currentSlice().translationX;
  const float dy = y - currentSlice().translationY;
  m_module->translate(x, y, wholeStack);
  updateToolbar();
  updateOrthoViews(roundAwayFromZero(dx), roundAwayFromZero(dy), true, false, false, wholeStack);
}

void QxAlignSlices::rotate(float angle, bool wholeStack)
{
  if (!acceptsEdit()) return;
  saveState();
  m_module->rotate(angle, wholeStack);
  updateToolbar();
  updateOrthoViews(0, 0, false, true, false, wholeStack);
}

void QxAlignSlices::moveByKey(int dx, int dy)
{
  if (!acceptsEdit()) return;
  saveState();
  m_module->translateAll(static_cast<float>(dx), static_cast<float>(dy));
  updateToolbar();
  updateOrthoViews(dx, dy, true, false, false, false);
  m_module->updateQuality();
}

// The numbers in the toolbar stay as they are, deliberately: while a key repeats they would only flicker.
void QxAlignSlices::turnByKey(float degrees)
{
  if (!acceptsEdit()) return;
  saveState();
  m_module->rotateAll(degrees);
  updateOrthoViews(0, 0, false, true, false, false);
  m_module->updateQuality();
}

void QxAlignSlices::addPoint(QPoint point)
{
  if (!acceptsEdit()) return;
  saveState();
  m_module->addPoint(point);
  m_drawArea->updateViewport();
}

void QxAlignSlices::removePoint(int index)
{
  if (!acceptsEdit()) return;
  saveState();
  m_module->removePoint(index);
  m_drawArea->updateViewport();
}

void QxAlignSlices::movePoints(QPoint offset, int index)
{
  if (!acceptsEdit()) return;
  saveState();
  m_module->movePoints(offset, index);
  m_drawArea->updateViewport();
}

void QxAlignSlices::showParameters()
{
  if (m_options || !canEdit()) return;
  const AlignModuleKeeper keeper(m_module);
  const QPointer<QxAlignSlices> alive(this);
  m_options = new QxAlignSlicesOptionsDialog(this, "Options", true);
  AlignOptions options(*m_module, *m_options);
  options.show(m_chessFieldSize);
  if (m_module->alignSettings().automaticOrigin) calcNewImageSize(true, false);
  using Dialog = QxAlignSlicesOptionsDialog;
  connect(m_options, &Dialog::calcNewSizeSignal, this, &QxAlignSlices::calcNewImageSize);
  connect(m_options, &Dialog::showBorderSignal, this, &QxAlignSlices::showBorder);
  connect(m_options, &Dialog::changeBorderSizeSignal, this, &QxAlignSlices::changeBorderSize);
  const bool accepted = m_options->exec() == QDialog::Accepted;
  if (!alive || !m_options) return; // The main window has gone meanwhile.
  if (accepted && options.apply()) setChessFieldSize(options.chessFieldSize());
  updateToolbar();
  m_previews->takeBack();
  m_previews->clear();
  delete m_options.data();
}

void QxAlignSlices::calcNewImageSize(bool autoSize, bool showBorder)
{
  if (!hasPair()) return;
  int width = 0, height = 0;
  m_module->calcMinBox(&width, &height);
  if (m_options) m_options->setImageSize(width, height);
  m_previews->takeBack();
  if (showBorder) previewSize(width, height, autoSize);
}

void QxAlignSlices::showBorder(bool autoSize, bool showBorder, int newx, int newy)
{
  if (!hasPair()) return;
  const ZxDims& dims = m_module->sliceData().getDims();
  if (newx < dims.width && newy < dims.height) return;
  if (showBorder)
    previewSize(newx, newy, autoSize);
  else
    m_previews->takeBack();
}

void QxAlignSlices::changeBorderSize(int newx, int newy)
{
  if (!hasPair()) return;
  m_previews->takeBack();
  const ZxDims& dims = m_module->sliceData().getDims();
  if (newx >= dims.width && newy >= dims.height) previewSize(newx, newy, false);
}

void QxAlignSlices::previewSize(int width, int height, bool automaticOrigin)
{
  const ZxDims& dims = m_module->sliceData().getDims();
  AlignBorderPreviews::Frame frame{static_cast<float>(width) / static_cast<float>(dims.width),
                                   static_cast<float>(height) / static_cast<float>(dims.height)};
  if (automaticOrigin) {
    int x[2], y[2];
    m_module->calculateOrigin(x, y, dims.width, dims.height);
    frame.originX = x[0];
    frame.originY = y[0];
  }
  m_previews->show(frame);
}
