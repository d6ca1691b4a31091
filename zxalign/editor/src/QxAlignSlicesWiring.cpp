// The editor window: what each of its parts says, and to whom.
#include "zxalign/QxAlignMenuBar.h"
#include "zxalign/QxAlignSlices.h"
#include "zxalign/QxAlignToolBar.h"
#include "zxalign/QxAlignTransformToolBar.h"
#include "zxalign/QxAlignUndoRedo.h"
#include "zxalign/QxAutoAlignToolBar.h"
#include "zxalign/QxDrawAlignSlices.h"
#include "zxalign/QxOrthoViewManager.h"
#include "zxalign/ZxAlignSlices.h"

#include <QAction>

// The order of these connections is the order in which the slots of one signal run.

void QxAlignSlices::connectMenus()
{
  using Menus = QxAlignMenuBar;
  using Window = QxAlignSlices;
  using View = QxDrawAlignSlices;
  const Menus* menus = m_menus;
  connect(menus, &Menus::resetAllSignal, this, &Window::resetAll);
  connect(menus, &Menus::resetSignal, this, &Window::reset);
  connect(menus, &Menus::transformAllSignal, this, &Window::transformAll);
  connect(menus, &Menus::fixReferenceSignal, this, &Window::fixReference);
  connect(menus, &Menus::readSignal, this, &Window::read);
  connect(menus, &Menus::saveSignal, this, &Window::save);
  connect(menus, &Menus::cancelSignal, this, &Window::cancel);
  connect(menus, &Menus::showParametersSignal, this, &Window::showParameters);
  connect(menus, &Menus::alignModeChanged, this, &Window::changeAlignMode);
  connect(menus, &Menus::doItSignal, this, &Window::doAutoAlign);
  connect(menus, &Menus::doAllSignal, this, &Window::doAllAutoAlign);
  connect(menus, &Menus::transformToolBarSignal, this, &Window::showTransformToolBar);
  connect(menus, &Menus::zoomInSignal, m_alignToolBar, &QxAlignToolBar::zoomIn);
  connect(menus, &Menus::zoomOutSignal, m_alignToolBar, &QxAlignToolBar::zoomOut);
  connect(menus, &Menus::alignModeChanged, m_autoAlignToolBar, &QxAutoAlignToolBar::changeAlignMode);
  connect(menus, &Menus::redGreenSignal, m_drawArea, &View::redGreen);
  connect(menus, &Menus::chessSignal, this, &Window::chess);
  connect(menus, &Menus::avgSignal, m_drawArea, &View::avg);
  connect(menus, &Menus::invertSignal, m_drawArea, &View::invert);
  connect(menus, &Menus::alignModeChanged, m_drawArea, &View::changeAlignMode);
  connect(menus, &Menus::removeLandmarkSignal, m_drawArea, &View::removeLandmark);
  connect(menus, &Menus::addLandmarkSignal, m_drawArea, &View::addLandmark);
  connect(menus, &Menus::coronalSignal, this, &Window::showCoronalView);
  connect(menus, &Menus::sagittalSignal, this, &Window::showSagittalView);
}

void QxAlignSlices::connectToolBars()
{
  using Window = QxAlignSlices;
  using View = QxDrawAlignSlices;
  using Numbers = QxAlignTransformToolBar;
  connect(m_transformToolBar, &Numbers::transXChanged, this, &Window::toolBarTranslateX);
  connect(m_transformToolBar, &Numbers::transYChanged, this, &Window::toolBarTranslateY);
  connect(m_transformToolBar, &Numbers::rotChanged, this, &Window::toolBarRotate);
  connect(m_transformToolBar, &Numbers::flipChanged, this, &Window::toolBarFlip);
  // The window's own menu of its toolbars hides this one, too.
  connect(m_transformToolBar->toggleViewAction(), &QAction::triggered, m_menus.data(),
          &QxAlignMenuBar::showTransformParameters);
  connect(m_alignToolBar, &QxAlignToolBar::sliceChanged, this, &Window::sliceChange);
  connect(m_alignToolBar, &QxAlignToolBar::zoomChanged, m_drawArea, &View::setZoom);

  using Modes = QxAutoAlignToolBar;
  const Modes* modes = m_autoAlignToolBar;
  connect(modes, &Modes::alignModeChanged, this, &Window::changeAlignMode);
  connect(modes, &Modes::doSignal, this, &Window::doAutoAlign);
  connect(modes, &Modes::doAllSignal, this, &Window::doAllAutoAlign);
  connect(modes, &Modes::alignModeChanged, m_menus.data(), &QxAlignMenuBar::changeMode);
  connect(modes, &Modes::alignModeChanged, m_drawArea, &View::changeAlignMode);
  connect(modes, &Modes::editModeChanged, m_drawArea, &View::setEditMode);
  connect(modes, &Modes::sliceToDisplayChanged, m_drawArea, &View::setEditableSlice);
  connect(modes, &Modes::editModeChanged, this, &Window::setEditMode);
  connect(modes, &Modes::sliceToDisplayChanged, this, &Window::setEditableSlice);
  connect(modes, &Modes::mirrorSignal, this, &Window::mirror);
}

void QxAlignSlices::connectDrawArea()
{
  using Window = QxAlignSlices;
  using View = QxDrawAlignSlices;
  // Twice, deliberately; the second time changes nothing.
  for (int i = 0; i < 2; ++i) connect(m_drawArea, &View::click, this, qOverload<>(&QWidget::setFocus));
  connect(m_drawArea, &View::translated, this, &Window::translate);
  connect(m_drawArea, &View::rotated, this, &Window::rotate);
  connect(m_drawArea, &View::addPoint, this, &Window::addPoint);
  connect(m_drawArea, qOverload<int>(&View::removePoint), this, &Window::removePoint);
  connect(m_drawArea, &View::movePoints, this, &Window::movePoints);
  connect(this, &Window::chessSignal, m_drawArea, &View::chess);
  connect(m_drawArea, &View::enableRemove, m_menus.data(), &QxAlignMenuBar::enableLandmarkRemove);
  connect(m_drawArea, &View::zoomStepRequested, this,
          [this](int direction) { direction > 0 ? viewZoomIn() : viewZoomOut(); });
}

void QxAlignSlices::makeHistory()
{
  // What is replaced may be the sender of the signal that has led here.
  if (m_undoRedo) m_undoRedo.release()->deleteLater();
  m_undoRedo = std::make_unique<QxAlignUndoRedo>(this, 100);
  m_drawArea->setUndoRedo(m_undoRedo.get());
  connectHistory();
}

void QxAlignSlices::connectHistory()
{
  using History = QxAlignUndoRedo;
  using Menus = QxAlignMenuBar;
  const History* history = m_undoRedo.get();
  const Menus* menus = m_menus;
  connect(menus, &Menus::undoSignal, history, &History::undo);
  connect(menus, &Menus::redoSignal, history, &History::redo);
  connect(history, &History::undoEmpty, menus, &Menus::undoEmpty);
  connect(history, &History::redoEmpty, menus, &Menus::redoEmpty);
  connect(history, &History::undoNotEmpty, menus, &Menus::undoNotEmpty);
  connect(history, &History::redoNotEmpty, menus, &Menus::redoNotEmpty);
  // A state is saved before every change, also by the view, which moves landmarks by itself.
  connect(history, &History::undoNotEmpty, this, [this] { m_module->setModified(true); });
  connect(history, &History::undoNotEmpty, this, &QxAlignSlices::edited);
  connect(history, &History::redoNotEmpty, this, &QxAlignSlices::edited);
}

void QxAlignSlices::showHistory()
{
  // Scripts save states without a window, too.
  if (m_module->history().canUndo()) m_menus->undoNotEmpty();
  if (m_module->history().canRedo()) m_menus->redoNotEmpty();
}
