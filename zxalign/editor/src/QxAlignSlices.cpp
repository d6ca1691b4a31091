#include "zxalign/QxAlignSlices.h"

#include "zxalign/ZxAlignSlices.h"

QxAlignSlices::QxAlignSlices(ZxAlignSlices* module) : m_module(module) {}

QxAlignSlices::~QxAlignSlices() = default;

McDArray<SliceInfo>& QxAlignSlices::getTransform() { return m_module->slices(); }

int QxAlignSlices::getDrawAreaWidth() const { return centralWidget() ? centralWidget()->width() : width(); }

int QxAlignSlices::getDrawAreaHeight() const
{
  return centralWidget() ? centralWidget()->height() : height();
}

QxAlignUndoRedo* QxAlignSlices::undoRedo() const noexcept { return {}; }
QxOrthoViewManager* QxAlignSlices::getOrthoViewManager() const noexcept { return {}; }
QxAlignMenuBar* QxAlignSlices::menuSet() const noexcept { return {}; }
QList<QToolBar*> QxAlignSlices::getVisibleToolbar() const { return {}; }
void QxAlignSlices::setChessFieldSize(int) {}
void QxAlignSlices::updateViews() {}
void QxAlignSlices::setSliceInfo(const SliceInfo&) {}
void QxAlignSlices::repaintSliceView() {}
void QxAlignSlices::suspendUpdates() {}
void QxAlignSlices::resumeUpdates() {}
void QxAlignSlices::showPair() {}
void QxAlignSlices::undoEmpty() {}
void QxAlignSlices::undoNotEmpty() {}
void QxAlignSlices::redoEmpty() {}
void QxAlignSlices::redoNotEmpty() {}
void QxAlignSlices::updateToolbar() {}
void QxAlignSlices::updateOrthoViews(int, int, bool, bool, bool, bool) {}
void QxAlignSlices::updateTransformLowerUpperSliceInfo(int) {}
void QxAlignSlices::reInit() {}
void QxAlignSlices::changeViewMode(int) {}
void QxAlignSlices::changeEditMode(int) {}
void QxAlignSlices::enableButtons() {}
void QxAlignSlices::disableButtons() {}
void QxAlignSlices::draw() {}
void QxAlignSlices::reset() {}
void QxAlignSlices::resetAll() {}
void QxAlignSlices::transformAll() {}
void QxAlignSlices::fixReference() {}
void QxAlignSlices::read() {}
void QxAlignSlices::save() {}
void QxAlignSlices::apply() {}
bool QxAlignSlices::cancel() { return true; }
void QxAlignSlices::changeAlignMode(int) {}
void QxAlignSlices::showParameters() {}
void QxAlignSlices::doAutoAlign() {}
void QxAlignSlices::doAllAutoAlign() {}
void QxAlignSlices::sliceChange(float) {}
void QxAlignSlices::setActive(bool) {}
void QxAlignSlices::addPoint(QPoint) {}
void QxAlignSlices::removePoint(int) {}
void QxAlignSlices::movePoints(QPoint, int) {}
void QxAlignSlices::setEditableSlice(int) {}
void QxAlignSlices::setEditMode(int) {}
void QxAlignSlices::mirror() {}
void QxAlignSlices::chess() {}
void QxAlignSlices::showTransformToolBar(bool) {}
void QxAlignSlices::showCoronalView(bool) {}
void QxAlignSlices::showSagittalView(bool) {}
void QxAlignSlices::orthoViewZoomIn() {}
void QxAlignSlices::orthoViewZoomOut() {}
void QxAlignSlices::viewZoomIn() {}
void QxAlignSlices::viewZoomOut() {}
void QxAlignSlices::setSagittalViewSliceNumber(int) {}
int QxAlignSlices::getSagittalViewSliceNumber() { return 0; }
void QxAlignSlices::setCoronalViewSliceNumber(int) {}
int QxAlignSlices::getCoronalViewSliceNumber() { return 0; }
void QxAlignSlices::setOrthoViewLineWidth(int) {}
void QxAlignSlices::setUseMaxIntProjection(bool) {}
int QxAlignSlices::getEditMode() { return 0; }
void QxAlignSlices::toolBarTranslateX(int) {}
void QxAlignSlices::toolBarTranslateY(int) {}
void QxAlignSlices::toolBarRotate(float) {}
void QxAlignSlices::toolBarFlip(bool) {}
void QxAlignSlices::translate(float, float, bool) {}
void QxAlignSlices::rotate(float, bool) {}
void QxAlignSlices::calcNewImageSize(bool, bool) {}
void QxAlignSlices::showBorder(bool, bool, int, int) {}
void QxAlignSlices::changeBorderSize(int, int) {}
void QxAlignSlices::keyPressEvent(QKeyEvent*) {}
void QxAlignSlices::keyReleaseEvent(QKeyEvent*) {}
bool QxAlignSlices::canClose() { return true; }
