// What each part of the editor says has its effect in the others, once.
#include "EditorTest.h"
#include "zxalign/QxAlignToolBar.h"
#include "zxalign/QxAlignTransformToolBar.h"
#include "zxalign/QxAutoAlignToolBar.h"
#include "zxalign/QxViewAlignSlicesCoronal.h"
#include "zxalign/QxViewAlignSlicesSagittal.h"

#include <QLabel>

namespace {

class EditorWiringTest : public EditorTest {
protected:
  void SetUp() override
  {
    EditorTest::SetUp();
    menus = editor->menuSet();
    view = editor->drawArea();
    modes = child<QxAutoAlignToolBar>("autoAlignToolBar");
    numbers = child<QxAlignTransformToolBar>("transformToolBar");
    slices = child<QxAlignToolBar>("alignToolBar");
  }
  QString zoom() { return child<QLabel>("zoom")->text(); }
  bool isItemChecked(const char* name) { return item(name)->isChecked(); }

  QxAlignMenuBar* menus = nullptr;
  QxDrawAlignSlices* view = nullptr;
  QxAutoAlignToolBar* modes = nullptr;
  QxAlignTransformToolBar* numbers = nullptr;
  QxAlignToolBar* slices = nullptr;
};

} // namespace

TEST_F(EditorWiringTest, NumbersOfTheTransformToolBarAreEditsOfTheCurrentSlice)
{
  Q_EMIT numbers->transXChanged(7);
  Q_EMIT numbers->transYChanged(-5);
  Q_EMIT numbers->rotChanged(12.5f);
  Q_EMIT numbers->flipChanged(true);
  EXPECT_TRUE(isAt(current(), SliceXForm(7, -5, 12.5f, true)));
  EXPECT_TRUE(isAt(current() + 1, SliceXForm())); // deliberately alone, whatever "Transform all" says
  EXPECT_EQ(undoDepth(), 4);
  EXPECT_TRUE(module->isModified());
}

TEST_F(EditorWiringTest, MenuItemsReachTheModule)
{
  setTransform(2, SliceXForm(1, 2, 3, false));
  setTransform(current(), SliceXForm(4, 5, 6, true));
  Q_EMIT menus->saveSignal();
  EXPECT_FALSE(module->isModified());
  Q_EMIT menus->resetSignal();
  EXPECT_TRUE(isAt(current(), SliceXForm()));
  EXPECT_TRUE(isAt(2, SliceXForm(1, 2, 3, false)));
  Q_EMIT menus->resetAllSignal();
  EXPECT_TRUE(isAt(2, SliceXForm()));
  Q_EMIT menus->readSignal();
  EXPECT_TRUE(isAt(2, SliceXForm(1, 2, 3, false)));
  EXPECT_TRUE(isAt(current(), SliceXForm(4, 5, 6, true)));
  EXPECT_EQ(undoDepth(), 3);
  Q_EMIT menus->transformAllSignal();
  EXPECT_FALSE(module->transformsAll());
  Q_EMIT menus->fixReferenceSignal();
  EXPECT_TRUE(module->isReferenceFixed());
  EXPECT_FALSE(child<QToolButton>("lower")->isEnabled());
  EXPECT_FALSE(item("transformAllAction")->isEnabled());
}

TEST_F(EditorWiringTest, MenuMarksFollowWhatIsSwitchedElsewhere)
{
  const auto marks = [&] {
    std::string all;
    for (const char* name : {"transformAllAction", "fixReferenceAction", "transformParametersAction",
                             "chessAction", "invertAction"})
      all += item(name)->isChecked() ? '1' : '0';
    return all;
  };
  EXPECT_EQ(marks(), "10001");
  editor->transformAll();
  editor->fixReference();
  editor->showTransformToolBar(true);
  editor->changeViewMode(2);
  EXPECT_EQ(marks(), "01110");
  item("fixReferenceAction")->trigger();
  child<QToolBar>("transformToolBar")->toggleViewAction()->trigger();
  EXPECT_FALSE(module->isReferenceFixed());
  EXPECT_EQ(marks(), "00010");

  press(0); // closed: scripts go to the module
  module->setTransformAll(true);
  module->setReferenceFixed(true);
  press(0);
  EXPECT_EQ(marks(), "11010");
  EXPECT_FALSE(child<QToolButton>("upper")->isEnabled());

  module->change([&] { module->portData.disconnect(); });
  item("fixReferenceAction")->trigger(); // refused: there is no pair
  EXPECT_EQ(marks(), "11010");
}

TEST_F(EditorWiringTest, UndoIsOfferedWhereThereIsAHistory)
{
  Q_EMIT view->translated(3, 4, false);
  editor->undoRedo()->undo();
  Q_EMIT view->translated(5, 4, false);
  EXPECT_TRUE(item("undoAction")->isEnabled() && item("redoAction")->isEnabled());
  {
    QxAlignSlices late(module.get());
    for (const char* name : {"undoActionOfEditor", "redoActionOfEditor"})
      EXPECT_TRUE(late.findChild<QAction*>(name)->isEnabled()) << name;
  }
  connect(module->portReference, greyStack({24, 18, 7})); // replaces the alignment
  EXPECT_FALSE(item("undoAction")->isEnabled() || item("redoAction")->isEnabled());
  EXPECT_EQ(undoDepth(), 0);
}

TEST_F(EditorWiringTest, MenuItemsReachTheViews)
{
  Q_EMIT menus->zoomInSignal();
  EXPECT_EQ(zoom(), "2:1 ");
  EXPECT_EQ(view->zoom(), 2.0f);
  Q_EMIT menus->zoomOutSignal();
  EXPECT_EQ(view->zoom(), 1.0f);
  Q_EMIT menus->redGreenSignal();
  EXPECT_EQ(view->viewMode(), QxDrawAlignSlices::RedGreen);
  Q_EMIT menus->chessSignal();
  EXPECT_EQ(view->viewMode(), QxDrawAlignSlices::Checkerboard);
  Q_EMIT menus->avgSignal();
  EXPECT_EQ(view->viewMode(), QxDrawAlignSlices::Average);
  Q_EMIT menus->invertSignal();
  EXPECT_EQ(view->viewMode(), QxDrawAlignSlices::InvertedOverlay);
  Q_EMIT menus->transformToolBarSignal(true);
  EXPECT_TRUE(numbers->isVisible());
  EXPECT_EQ(editor->getVisibleToolbar().size(), 3);
  Q_EMIT menus->transformToolBarSignal(false);
  EXPECT_FALSE(numbers->isVisible());
  Q_EMIT menus->coronalSignal(true);
  Q_EMIT menus->sagittalSignal(true);
  EXPECT_TRUE(editor->getOrthoViewManager()->getCoronalView());
  EXPECT_TRUE(editor->getOrthoViewManager()->getSagittalView());
  Q_EMIT menus->coronalSignal(false);
  EXPECT_FALSE(editor->getOrthoViewManager()->getCoronalView());
}

TEST_F(EditorWiringTest, TheAlignModeIsTheSameEverywhereWhoeverChoosesIt)
{
  const char* const items[] = {"gravityAction", "leastSquaresAction", "landmarksAction",
                               "edgeDetectionAction"};
  const char* const buttons[] = {"alignCenters", "alignGray", "alignLandmarks", "alignEdgeDetection"};
  const auto agree = [&](int mode) {
    EXPECT_EQ(editor->getAlignMode(), mode);
    for (int i = 0; i < 4; ++i) {
      EXPECT_EQ(isItemChecked(items[i]), i == mode) << items[i];
      EXPECT_EQ(isChecked(buttons[i]), i == mode) << buttons[i];
    }
  };
  for (const int mode : {2, 0, 3, 1, 1, 2}) {
    item(items[mode])->trigger();
    agree(mode);
    click(buttons[(mode + 1) % 4]);
    agree((mode + 1) % 4);
    editor->changeAlignMode(7); // a plug-in's, which has no button
    EXPECT_EQ(editor->getAlignMode(), 7);
    for (const char* button : buttons) EXPECT_FALSE(isChecked(button));
    editor->changeAlignMode(mode); // as a script does
    agree(mode);
  }
}

TEST_F(EditorWiringTest, TheEditedSideIsTheSameEverywhereWhoeverChoosesIt)
{
  const auto agree = [&](int expected) {
    EXPECT_EQ(side(), expected);
    EXPECT_EQ(view->getEditableSlice(), expected);
    EXPECT_EQ(isChecked("upper"), expected == 1);
    EXPECT_EQ(isChecked("lower"), expected == -1);
    EXPECT_EQ(reference(), current() - expected);
  };
  for (int i = 0; i < 3; ++i) {
    click("lower");
    agree(-1);
    editor->setEditableSlice(1); // as a script does
    agree(1);
    editor->setEditableSlice(1);
    editor->setEditableSlice(5); // no side at all
    agree(1);
  }
  editor->setEditableSlice(-1);
  agree(-1);
  click("upper");
  agree(1);
}

TEST_F(EditorWiringTest, EditModesReachViewWindowAndMenus)
{
  click("editLandmarks");
  EXPECT_EQ(view->getEditMode(), 3);
  EXPECT_EQ(editor->getEditMode(), 3);
  EXPECT_EQ(editor->getAlignMode(), 2);
  EXPECT_TRUE(item("addLandmarkAction")->isEnabled());
  EXPECT_FALSE(item("removeLandmarkAction")->isEnabled());
  Q_EMIT view->enableRemove(true);
  EXPECT_TRUE(item("removeLandmarkAction")->isEnabled());
  editor->changeEditMode(0);
  EXPECT_EQ(view->getEditMode(), 1);
  EXPECT_FALSE(item("addLandmarkAction")->isEnabled());
}

TEST_F(EditorWiringTest, WhatTheViewReportsBecomesOneEditEach)
{
  const int e = current();
  Q_EMIT view->translated(3.5f, -2.0f, false);
  EXPECT_TRUE(isAt(e, SliceXForm(3.5f, -2, 0, false)));
  EXPECT_TRUE(isAt(e + 1, SliceXForm(3.5f, -2, 0, false))); // follows
  EXPECT_TRUE(isAt(e - 1, SliceXForm()));
  Q_EMIT view->translated(4.5f, -2.0f, true);
  EXPECT_TRUE(isAt(e - 1, SliceXForm(1, 0, 0, false))); // the whole stack
  Q_EMIT view->rotated(30.0f, false);
  EXPECT_FLOAT_EQ(slice().rotation, 30.0f);
  EXPECT_FLOAT_EQ(module->getSlice(e - 1).rotation, 0.0f);
  EXPECT_EQ(undoDepth(), 3);
  Q_EMIT view->addPoint(QPoint(5, 6));
  Q_EMIT view->movePoints(QPoint(1, -1), 2);
  for (const SliceInfo& s : module->getSlices()) {
    ASSERT_EQ(s.landmarks.size(), 3u);
    EXPECT_EQ(s.landmarks[2], QPoint(6, 5));
  }
  Q_EMIT view->removePoint(0);
  EXPECT_EQ(slice().landmarks.size(), 2u);
  click("mirror");
  EXPECT_TRUE(slice().flip);
  EXPECT_EQ(undoDepth(), 7);
}

TEST_F(EditorWiringTest, AMoveBesideAFixedReferenceChangesOneColumnOfAProjection)
{
  module->setUseMaxIntProjection(true);
  Q_EMIT menus->coronalSignal(true);
  Q_EMIT menus->fixReferenceSignal();
  const McTypedData2D& image = editor->getOrthoViewManager()->getCoronalView()->image();
  const auto column = [&image](int z) { return std::vector(image.row(z), image.row(z) + image.rowBytes()); };
  const auto moved = column(current()), next = column(current() + 1);
  Q_EMIT view->translated(3.0f, 0.0f, false);
  EXPECT_NE(column(current()), moved);
  EXPECT_EQ(column(current() + 1), next) << "that slice has not moved";
}

TEST_F(EditorWiringTest, UndoAndRedoAreOfferedWhenThereIsSomething)
{
  EXPECT_FALSE(item("undoAction")->isEnabled() || item("redoAction")->isEnabled());
  Q_EMIT view->translated(3.0f, 4.0f, false);
  EXPECT_TRUE(item("undoAction")->isEnabled());
  item("undoAction")->trigger();
  EXPECT_TRUE(isAt(current(), SliceXForm()));
  EXPECT_FALSE(item("undoAction")->isEnabled());
  EXPECT_TRUE(item("redoAction")->isEnabled());
  item("redoAction")->trigger();
  EXPECT_TRUE(isAt(current(), SliceXForm(3, 4, 0, false)));
  EXPECT_TRUE(item("undoAction")->isEnabled());
  EXPECT_FALSE(item("redoAction")->isEnabled());
}

TEST_F(EditorWiringTest, UndoBringsBackThePairAndShowsItEverywhere)
{
  goTo(4, 1);
  Q_EMIT view->translated(9.0f, 0.0f, false);
  goTo(2, -1);
  const QImage before = view->viewport()->grab().toImage();
  click("alignLandmarks");
  item("undoAction")->trigger();
  EXPECT_EQ(current(), 4);
  EXPECT_EQ(reference(), 3);
  EXPECT_TRUE(isChecked("upper"));
  EXPECT_EQ(view->getEditableSlice(), 1);
  EXPECT_EQ(editor->getOrthoViewManager()->getSliceNumberAxial(), 4);
  item("redoAction")->trigger();
  EXPECT_EQ(current(), 2);
  EXPECT_TRUE(isChecked("lower"));
  click("alignGray");
  EXPECT_EQ(view->viewport()->grab().toImage(), before);
}

TEST_F(EditorWiringTest, AlignmentIsStartedByMenuAndToolBarAndIsOneEditEach)
{
  editor->changeAlignMode(0);
  const auto starts = [&](const std::function<void()>& start) {
    editor->resetAll();
    for (int k = 0; k < 7; ++k) setTransform(k, SliceXForm(static_cast<float>(5 * k), 0, 0, false));
    const AlignState before = module->currentState();
    module->history().clear();
    start();
    EXPECT_NE(module->getSlices(), before.slices);
    EXPECT_EQ(undoDepth(), 1);
    editor->undoRedo()->undo();
    EXPECT_TRUE(module->currentState() == before);
  };
  starts([&] { Q_EMIT menus->doItSignal(); });
  starts([&] { Q_EMIT menus->doAllSignal(); });
  starts([&] { Q_EMIT modes->doSignal(); });
  starts([&] { Q_EMIT modes->doAllSignal(); });
}

TEST_F(EditorWiringTest, LandmarksAreAddedAndRemovedByTheMenu)
{
  click("editLandmarks");
  Q_EMIT menus->addLandmarkSignal();
  QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->viewport()->rect().center());
  EXPECT_EQ(slice().landmarks.size(), 3u);
  QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->viewport()->rect().center());
  ASSERT_GE(view->selectedLandmark(), 0);
  EXPECT_TRUE(item("removeLandmarkAction")->isEnabled());
  Q_EMIT menus->removeLandmarkSignal();
  EXPECT_EQ(slice().landmarks.size(), 2u);
  EXPECT_FALSE(item("removeLandmarkAction")->isEnabled());
}

TEST_F(EditorWiringTest, TheMenuClosesTheWindow)
{
  Q_EMIT menus->cancelSignal();
  EXPECT_FALSE(module->isEditorOpen());
  EXPECT_EQ(module->portAction.getButtonLabel(0), "Edit");
}

TEST_F(EditorWiringTest, TheSliceSliderAndTheClickInTheView)
{
  Q_EMIT slices->sliceChanged(5.4f);
  EXPECT_EQ(current(), 5);
  slices->setFocus();
  Q_EMIT view->click();
  EXPECT_EQ(QApplication::focusWidget(), editor);
}
