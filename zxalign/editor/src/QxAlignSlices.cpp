// The editor window: its parts and what is shown of the module. Wiring, edits and navigation have files of
// their own.
#include "zxalign/QxAlignSlices.h"

#include "AlignBorderPreviews.h"
#include "AlignKeyboard.h"
#include "AlignModuleKeeper.h"
#include "mc/McRound.h"
#include "qx/QxMainWindow.h"
#include "zxalign/AlignOptions.h"
#include "zxalign/QxAlignMenuBar.h"
#include "zxalign/QxAlignSlicesOptionsDialog.h"
#include "zxalign/QxAlignToolBar.h"
#include "zxalign/QxAlignTransformToolBar.h"
#include "zxalign/QxAlignUndoRedo.h"
#include "zxalign/QxAutoAlignToolBar.h"
#include "zxalign/QxDrawAlignSlices.h"
#include "zxalign/QxOrthoViewManager.h"
#include "zxalign/QxPairQualityDock.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignSlices.h"

#include <QKeyEvent>
#include <QStackedLayout>

#include <algorithm>
#include <utility>

QxAlignSlices::QxAlignSlices(ZxAlignSlices* module)
  : QMainWindow(nullptr, Qt::SubWindow), m_module(module),
    m_drawArea(new QxDrawAlignSlices(this, "drawArea")),
    m_previews(std::make_unique<AlignBorderPreviews>(*m_drawArea)),
    m_keyboard(std::make_unique<AlignKeyboard>(*this))
{
  setObjectName("QxAlignSlices");
  setWindowTitle("Slice Aligner");
  setFocusPolicy(Qt::StrongFocus);
  createToolBars();
  m_menus = new QxAlignMenuBar(this);
  m_orthoViews =
      mcMake<QxOrthoViewManager>(this, m_module->getDataLattice(), m_module->usesMaxIntProjection());
  if (hasPair()) m_orthoViews->setSliceNumberAxial(m_module->getEditableSlice());
  connectMenus();
  connectToolBars();
  connectDrawArea();
  makeHistory();
  placeInMainWindow();
  createPanels();
  showSide();
  showHistory();
  updateViews();
}

QxAlignSlices::~QxAlignSlices()
{
  m_keyboard.reset();
  leaveMainWindow();
  m_module->forgetEditor(this);
  m_drawArea->setUndoRedo(nullptr);
  m_undoRedo.reset();
  delete m_options.data();
  delete m_menus.data();
  m_previews.reset();
  m_orthoViews = {};
}

void QxAlignSlices::createToolBars()
{
  m_alignToolBar = new QxAlignToolBar(this, "alignToolBar");
  m_alignToolBar->setSlicesRange(0, std::max(0, numSlices() - 1));
  m_alignToolBar->setSlice(m_module->getEditableSlice(), m_module->getReferenceSlice());
  m_autoAlignToolBar = new QxAutoAlignToolBar(this, "autoAlignToolBar");
  m_autoAlignToolBar->setDrawArea(m_drawArea);
  m_transformToolBar = new QxAlignTransformToolBar(this, "transformToolBar");
  m_transformToolBar->hide();
}

void QxAlignSlices::placeInMainWindow()
{
  if (QxMainWindow* host = QxMainWindow::getTheMainWindow()) host->getCentralLayout()->addWidget(this);
  setCentralWidget(m_drawArea);
  addToolBar(m_alignToolBar);
  addToolBar(m_autoAlignToolBar);
  m_transformToolBar->hide();
}

void QxAlignSlices::createPanels()
{
  auto* pairQuality = new QxPairQualityDock(*this);
  addDockWidget(Qt::BottomDockWidgetArea, pairQuality);
  // The orthogonal views need the height, and have the width.
  setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
  pairQuality->hide();
  connect(pairQuality, &QDockWidget::visibilityChanged, this, [this] { m_orthoViews->keepInWindow(); });
  QToolBar* panels = addToolBar("Panels");
  panels->setObjectName("panelToolBar");
  panels->addAction(pairQuality->toggleViewAction());
  addToolBarBreak(); // The toolbar of the orthogonal views gets a row of its own.
}

void QxAlignSlices::leaveMainWindow()
{
  QxMainWindow* host = QxMainWindow::getTheMainWindow();
  if (host && host->getCentralLayout()->currentWidget() == this) host->getCentralLayout()->setCurrentIndex(0);
}

McDArray<SliceInfo>& QxAlignSlices::getTransform() { return m_module->slices(); }

QxAlignUndoRedo* QxAlignSlices::undoRedo() const noexcept { return m_undoRedo.get(); }

QxOrthoViewManager* QxAlignSlices::getOrthoViewManager() const noexcept { return m_orthoViews.get(); }

QxAlignMenuBar* QxAlignSlices::menuSet() const noexcept { return m_menus; }

QxAlignSlicesOptionsDialog* QxAlignSlices::optionsDialog() const noexcept { return m_options; }

int QxAlignSlices::getDrawAreaWidth() const { return m_drawArea->rect().width(); }

int QxAlignSlices::getDrawAreaHeight() const { return m_drawArea->rect().height(); }

QList<QToolBar*> QxAlignSlices::getVisibleToolbar() const
{
  QList<QToolBar*> bars{m_alignToolBar, m_autoAlignToolBar, m_transformToolBar};
  bars.removeIf([](const QToolBar* bar) { return !bar->isVisible(); });
  return bars;
}

int QxAlignSlices::numSlices() const { return m_module->numSlices(); }

SliceInfo& QxAlignSlices::currentSlice() { return m_module->getSlice(m_module->getEditableSlice()); }

bool QxAlignSlices::hasPair() const
{
  const int n = numSlices();
  return n > 0 && m_module->getSlices().size() == static_cast<std::size_t>(n) &&
         isInStack(m_module->getEditableSlice()) && isInStack(m_module->getReferenceSlice());
}

void QxAlignSlices::updateViews()
{
  if (hasPair())
    showSlicePair();
  else
    m_drawArea->forgetPair();
  updateToolbar();
  showFlags();
}

void QxAlignSlices::showSlicePair()
{
  ZxAlignData& slices = m_module->sliceData();
  const bool colour = slices.isColorField();
  struct Image {
    unsigned char* display;
    unsigned char* grey;
    SliceInfo* info;
    std::optional<SliceXForm> placed;
  };
  Image first{colour ? slices.getEditableColorPtr() : slices.getEditableSlicePtr(),
              slices.getEditableSlicePtr(), &currentSlice(), slices.getEditableProjection()};
  Image second{colour ? slices.getReferenceColorPtr() : slices.getReferenceSlicePtr(),
               slices.getReferenceSlicePtr(), &m_module->getSlice(m_module->getReferenceSlice()),
               slices.getReferenceProjection()};
  if (m_module->getEditableSide() == 1) std::swap(first, second); // First is the lower slice of the pair.
  m_drawArea->paintSlice(slices.getDims().width, slices.getDims().height, first.display, second.display,
                         first.grey, second.grey, *first.info, *second.info, colour ? 4 : 1,
                         m_module->getEditableSlice());
  m_drawArea->setPlaced(first.placed, second.placed);
}

void QxAlignSlices::updateToolbar()
{
  if (hasPair()) {
    const SliceInfo& slice = currentSlice();
    m_transformToolBar->setTransX(mc::truncToInt(slice.translationX));
    m_transformToolBar->setTransY(mc::truncToInt(slice.translationY));
    m_transformToolBar->setRot(slice.rotation);
    m_transformToolBar->setFlip(slice.flip);
  }
  m_alignToolBar->setSlice(m_module->getEditableSlice(), m_module->getReferenceSlice());
}

void QxAlignSlices::updateOrthoViews(int dx, int dy, bool translated, bool rotated, bool mirrored,
                                     bool wholeStack)
{
  if (!hasPair()) return;
  const int last = numSlices() - 1;
  int from = m_module->getEditableSlice();
  int to = from;
  if (wholeStack) {
    from = 0;
    to = last;
  } else if (m_module->transformsAll() && !m_module->isReferenceFixed() && !mirrored) {
    if (m_module->getEditableSide() == 1)
      to = last;
    else
      from = 0;
  }
  m_orthoViews->updateView(from, to, OrthoOrientation::Both, dx, dy, translated, rotated, mirrored);
}

void QxAlignSlices::reInit()
{
  m_previews->takeBack();
  m_previews->clear();
  m_alignToolBar->setSlicesRange(0, std::max(0, numSlices() - 1));
  m_module->undoRedo().clear(); // of another input, or of before a reference was read
  makeHistory();
  m_menus->undoEmpty();
  m_menus->redoEmpty();
  m_drawArea->clearSelection();
  showSide();
  updateViews();
  m_drawArea->updateViewport();
  m_orthoViews->init(m_module->getDataLattice(), m_module->usesMaxIntProjection());
  if (hasPair()) m_orthoViews->setSliceNumberAxial(m_module->getEditableSlice());
}

void QxAlignSlices::setSliceInfo(const SliceInfo& info)
{
  if (hasPair()) m_drawArea->transform(info);
}

void QxAlignSlices::repaintSliceView()
{
  // What nobody sees is painted only when it is asked for its picture.
  if (m_drawArea->viewport()->isVisible())
    m_drawArea->viewport()->repaint();
  else
    m_drawArea->viewport()->grab();
}

void QxAlignSlices::suspendUpdates() { m_drawArea->suppressUpdates(); }

void QxAlignSlices::resumeUpdates() { m_drawArea->resumeUpdates(); }

void QxAlignSlices::showPair()
{
  m_drawArea->clearSelection(); // Other records may have fewer landmarks.
  showSide();
  if (hasPair()) m_orthoViews->setSliceNumberAxial(m_module->getEditableSlice());
  updateViews();
  m_orthoViews->updateView();
  m_drawArea->updateViewport();
}

void QxAlignSlices::showSide()
{
  // The echo finds the module on that side already and ends there.
  if (m_module->getEditableSide() < 0)
    m_autoAlignToolBar->lower();
  else
    m_autoAlignToolBar->upper();
}

void QxAlignSlices::showFlags()
{
  const bool fixed = m_module->isReferenceFixed();
  m_menus->showTransformAll(m_module->transformsAll());
  m_menus->showFixReference(fixed);
  if (fixed != std::exchange(m_showsFixedReference, fixed)) m_drawArea->setFixReference(fixed);
  if (fixed)
    disableButtons();
  else
    enableButtons();
}

void QxAlignSlices::undoEmpty() { m_menus->undoEmpty(); }

void QxAlignSlices::undoNotEmpty()
{
  m_menus->undoNotEmpty();
  Q_EMIT edited();
}

void QxAlignSlices::redoEmpty() { m_menus->redoEmpty(); }

void QxAlignSlices::redoNotEmpty()
{
  m_menus->redoNotEmpty();
  Q_EMIT edited();
}

void QxAlignSlices::changeViewMode(int mode)
{
  switch (mode) { // By the menu, whose check marks follow.
  case QxDrawAlignSlices::RedGreen:
    return m_menus->redGreen();
  case QxDrawAlignSlices::Checkerboard:
    return m_menus->chess();
  case QxDrawAlignSlices::Average:
    return m_menus->avg();
  case QxDrawAlignSlices::InvertedOverlay:
    return m_menus->invert();
  default:
    return;
  }
}

void QxAlignSlices::changeEditMode(int mode)
{
  if (mode == 0)
    m_autoAlignToolBar->editTransform();
  else
    m_autoAlignToolBar->editLandmarks();
}

void QxAlignSlices::enableButtons()
{
  m_autoAlignToolBar->enableButtons();
  m_menus->enableTransformAll();
}

void QxAlignSlices::disableButtons()
{
  m_autoAlignToolBar->disableButtons();
  m_menus->disableTransformAll();
}

void QxAlignSlices::draw() { m_drawArea->updateViewport(); }

void QxAlignSlices::setChessFieldSize(int size)
{
  m_chessFieldSize = size;
  m_drawArea->updateChessFieldSize(size);
}

void QxAlignSlices::chess() { Q_EMIT chessSignal(m_chessFieldSize); }

void QxAlignSlices::changeAlignMode(int mode)
{
  m_alignMode = mode;
  if (m_showsMode) return; // the echo of what follows
  m_showsMode = true;
  if (mode >= AlignCenters && mode <= AlignEdgeDetection) {
    m_autoAlignToolBar->changeAlignMode(mode);
  } else { // The toolbar has no button for the methods of plug-ins.
    m_autoAlignToolBar->showNoAlignMode();
    m_menus->changeMode(mode);
    m_drawArea->changeAlignMode(mode);
  }
  m_showsMode = false;
}

void QxAlignSlices::setEditMode(int mode)
{
  m_editMode = mode;
  m_menus->enableLandmarkAdd(mode == EditLandmarks);
  m_menus->enableLandmarkRemove(false);
}

int QxAlignSlices::getEditMode() { return m_editMode; }

void QxAlignSlices::showTransformToolBar(bool visible)
{
  m_menus->showTransformParameters(visible);
  if (!visible) {
    removeToolBar(m_transformToolBar);
    m_transformToolBar->hide();
    return;
  }
  addToolBarBreak(Qt::BottomToolBarArea);
  addToolBar(Qt::BottomToolBarArea, m_transformToolBar);
  updateToolbar();
  m_transformToolBar->show();
  // The toolbar has its place when the event loop is back.
  QMetaObject::invokeMethod(
      this, [this] { m_orthoViews->keepInWindow(); }, Qt::QueuedConnection);
}

void QxAlignSlices::showCoronalView(bool visible)
{
  m_orthoViews->showCoronalView(visible);
  m_orthoViews->setUseMaxIntProj(m_module->usesMaxIntProjection());
  if (hasPair()) m_orthoViews->setSliceNumberAxial(m_module->getEditableSlice());
}

void QxAlignSlices::showSagittalView(bool visible)
{
  m_orthoViews->showSagittalView(visible);
  m_orthoViews->setUseMaxIntProj(m_module->usesMaxIntProjection());
  if (hasPair()) m_orthoViews->setSliceNumberAxial(m_module->getEditableSlice());
}

void QxAlignSlices::orthoViewZoomIn() { m_orthoViews->zoomIn(); }

void QxAlignSlices::orthoViewZoomOut() { m_orthoViews->zoomOut(); }

void QxAlignSlices::viewZoomIn() { m_alignToolBar->zoomIn(); }

void QxAlignSlices::viewZoomOut() { m_alignToolBar->zoomOut(); }

void QxAlignSlices::setSagittalViewSliceNumber(int number) { m_orthoViews->setSliceNumberSagittal(number); }

int QxAlignSlices::getSagittalViewSliceNumber() { return m_orthoViews->getSliceNumberSagittal(); }

void QxAlignSlices::setCoronalViewSliceNumber(int number) { m_orthoViews->setSliceNumberCoronal(number); }

int QxAlignSlices::getCoronalViewSliceNumber() { return m_orthoViews->getSliceNumberCoronal(); }

void QxAlignSlices::setOrthoViewLineWidth(int value) { m_orthoViews->setOrthoViewLineWidth(value); }

void QxAlignSlices::setUseMaxIntProjection(bool on)
{
  m_orthoViews->setUseMaxIntProj(on);
  updateViews();
  if (hasPair()) m_module->updateQuality();
}

void QxAlignSlices::setActive(bool visible)
{
  m_keyboard->setActive(visible);
  if (!visible) {
    m_menus->removeMenu();
    return leaveMainWindow();
  }
  showFlags(); // Scripts switch them while the window is closed.
  m_menus->addMenu();
  if (QxMainWindow* host = QxMainWindow::getTheMainWindow()) host->getCentralLayout()->setCurrentWidget(this);
  setFocus(Qt::OtherFocusReason);
}

void QxAlignSlices::keyPressEvent(QKeyEvent* event)
{
  QMainWindow::keyPressEvent(event);
  m_keyboard->press(event);
}

void QxAlignSlices::keyReleaseEvent(QKeyEvent* event) { m_keyboard->release(event); }
