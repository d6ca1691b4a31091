// The editor window: which pair is edited, automatic alignment, and closing.
#include "AlignModuleKeeper.h"
#include "AlignSavePrompt.h"
#include "mc/McRound.h"
#include "zx/ZxMessage.h"
#include "zx/ZxWorkArea.h"
#include "zxalign/AlignRecovery.h"
#include "zxalign/QxAlignSlices.h"
#include "zxalign/QxAlignUndoRedo.h"
#include "zxalign/QxAutoAlignToolBar.h"
#include "zxalign/QxDrawAlignSlices.h"
#include "zxalign/QxOrthoViewManager.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignSlices.h"

#include <cstdlib>

namespace {

/// The busy indicator of the work area, for as long as it lives.
class Busy {
public:
  Busy() { ZxWorkArea::getTheWorkArea()->setBusy(true); }
  ~Busy() { ZxWorkArea::getTheWorkArea()->setBusy(false); }
  Busy(const Busy&) = delete;
  Busy& operator=(const Busy&) = delete;
};

} // namespace

void QxAlignSlices::sliceChange(float slice)
{
  const int s = mc::addHalfAndTrunc(static_cast<double>(slice));
  if (s == m_module->getEditableSlice()) return;
  const bool isBelow = slice <= -0.5f; // which the rounding towards zero would hide
  if (!acceptsEdit() || isBelow || !isInStack(s)) return updateToolbar();
  if (m_module->isReferenceFixed())
    passReference(s);
  else
    goTo(s);
}

void QxAlignSlices::goTo(int slice)
{
  updateTransformLowerUpperSliceInfo(slice);
  updateViews();
  m_module->updateQuality();
}

void QxAlignSlices::passReference(int slice)
{
  const int reference = m_module->getReferenceSlice();
  const int current = m_module->getEditableSlice();
  if (slice == reference) {
    // A step onto the reference jumps over it; further jumps, and those out of the stack, are refused.
    slice = std::abs(current - slice) == 1 ? 2 * reference - current : -1;
    if (!isInStack(slice)) return updateToolbar();
  }
  m_module->setSlice(slice);
  m_orthoViews->setSliceNumberAxial(slice);
  updateViews();
  m_module->updateQuality();
}

void QxAlignSlices::updateTransformLowerUpperSliceInfo(int slice)
{
  if (!isInStack(slice) || numSlices() < 2) return;
  const int reference = slice - m_module->getEditableSide();
  if (!isInStack(reference)) {
    const QxDrawAlignSlices::UpdateSuppression suppression(m_drawArea);
    changeSide(reference < 0 ? -1 : 1);
  }
  m_module->setReferenceSlice(slice - m_module->getEditableSide());
  m_module->setSlice(slice);
  m_orthoViews->setSliceNumberAxial(slice);
}

void QxAlignSlices::setEditableSlice(int side)
{
  if ((side != 1 && side != -1) || side == m_module->getEditableSide()) return;
  if (acceptsEdit() || numSlices() == 0) changeSide(side);
}

void QxAlignSlices::changeSide(int side)
{
  if (side != m_module->getEditableSide()) {
    m_module->setEditableSide(side);
    if (!m_module->isReferenceFixed() && hasPair()) {
      const int current = m_module->getEditableSlice();
      m_module->setSlice(m_module->getReferenceSlice());
      m_module->setReferenceSlice(current);
      m_orthoViews->setSliceNumberAxial(m_module->getEditableSlice());
      m_module->mapSlices();
      updateViews();
      m_module->updateQuality();
    }
    updateToolbar();
  }
  showSide();
}

void QxAlignSlices::transformAll()
{
  if (!m_module->isRunning()) m_module->setTransformAll(!m_module->transformsAll());
  showFlags(); // The menu has changed its check mark by itself.
}

void QxAlignSlices::fixReference()
{
  if (!acceptsEdit()) return showFlags();
  const bool fixed = !m_module->isReferenceFixed();
  m_module->setReferenceFixed(fixed);
  showFlags();
  if (!fixed) updateTransformLowerUpperSliceInfo(m_module->getEditableSlice());
  keepReferenceInStack();
  if (fixed) return;
  m_module->mapSlices();
  updateViews();
  m_module->updateQuality();
}

void QxAlignSlices::keepReferenceInStack()
{
  int slice = m_module->getEditableSlice();
  const int reference = slice - m_module->getEditableSide();
  if (reference < 0) slice = 1;
  if (reference >= numSlices()) slice = numSlices() - 2;
  m_module->setReferenceSlice(slice - m_module->getEditableSide());
  m_module->setSlice(slice);
  m_orthoViews->setSliceNumberAxial(slice);
  updateViews();
}

void QxAlignSlices::doAutoAlign()
{
  if (!acceptsEdit()) return;
  const AlignModuleKeeper keeper(m_module);
  {
    const Busy busy;
    {
      const QxDrawAlignSlices::UpdateSuppression suppression(m_drawArea);
      saveState();
      m_module->doLayout(m_alignMode);
    }
    updateViews();
    updateOrthoViews(0, 0, false, false, false, false);
  }
  m_module->updateQuality();
}

void QxAlignSlices::doAllAutoAlign()
{
  if (!acceptsEdit()) return;
  const AlignModuleKeeper keeper(m_module);
  saveState();
  const int reference = m_module->getReferenceSlice();
  if (m_drawArea->getEditMode() != EditTransform) m_autoAlignToolBar->editTransform();
  changeSide(1);
  const int total = numSlices() - 1;
  const int done =
      m_module->runOverStack(m_alignMode, reference, [this](const ZxAlignPair& pair) { selectPair(pair); });
  if (done == total && reference == 0) changeSide(-1);
  updateViews();
  m_orthoViews->updateView();
  m_module->updateQuality();
}

void QxAlignSlices::selectPair(const ZxAlignPair& pair)
{
  if (pair.side != m_module->getEditableSide()) changeSide(pair.side);
  const QxDrawAlignSlices::UpdateSuppression suppression(m_drawArea);
  if (m_module->isReferenceFixed())
    passReference(pair.editable);
  else
    goTo(pair.editable);
}

const ZxObject* QxAlignSlices::editedObject() const { return m_module; }

bool QxAlignSlices::canClose()
{
  if (!m_module->isEditorOpen()) return true;
  if (m_asksToClose) return false; // The question is on the screen already.
  const AlignModuleKeeper keeper(m_module);
  return askToClose() != CloseAnswer::Stay;
}

void QxAlignSlices::closePage()
{
  if (m_module->isEditorOpen()) leave();
}

bool QxAlignSlices::cancel()
{
  if (m_asksToClose) return false;
  const AlignModuleKeeper keeper(m_module);
  const QPointer<QxAlignSlices> alive(this);
  const CloseAnswer answer = askToClose();
  if (alive && answer == CloseAnswer::Close) leave();
  if (alive && answer == CloseAnswer::Undecided) m_module->editorClosed(); // The window stays where it is.
  ZxWorkArea::getTheWorkArea()->setProgressText("%s", "");
  return answer != CloseAnswer::Stay;
}

QxAlignSlices::CloseAnswer QxAlignSlices::askToClose()
{
  m_discards = false;
  if (m_module->isRunning()) {
    ZxMessage::getTheMsg()->printf("Slices are being aligned: stop that before the editor is closed.");
    return CloseAnswer::Stay;
  }
  if (!m_module->isModified() || !hasPair()) return CloseAnswer::Close;
  m_asksToClose = true;
  const QPointer<QxAlignSlices> alive(this);
  const McHandle<ZxSpatialData> asked(m_module->sliceData().getSpatialData());
  const QString name = QString::fromStdString(m_module->sliceData().getInputDataName().str());
  const AlignSaveAnswer answer = askToSaveAlignment(this, name);
  if (!alive) return CloseAnswer::Undecided;
  m_asksToClose = false;
  // Not an answer for another input that has come meanwhile.
  if (answer == AlignSaveAnswer::Cancel || m_module->sliceData().getSpatialData() != asked.get())
    return CloseAnswer::Stay;
  if (answer == AlignSaveAnswer::None) return CloseAnswer::Undecided;
  if (answer == AlignSaveAnswer::Save) save();
  if (answer == AlignSaveAnswer::Save && m_module->isModified())
    return CloseAnswer::Stay; // A message says why.
  m_discards = answer == AlignSaveAnswer::DontSave;
  return CloseAnswer::Close;
}

void QxAlignSlices::leave()
{
  if (m_discards) m_module->recovery().forget();
  m_discards = false;
  setActive(false);
  m_module->editorClosed();
  ZxWorkArea::getTheWorkArea()->setProgressText("%s", "");
}
