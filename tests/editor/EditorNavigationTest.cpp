#include "EditorTest.h"
#include "qx/QxFullSlider.h"

namespace {

class EditorNavigationTest : public EditorTest {
protected:
  /// Projections of one slice each, of unchanged grey values.
  void projectSingleSlices()
  {
    for (const int i : {0, 1}) module->portMaxIntNumSlices.setValue(i, 1);
    module->portLinearRange.setValue(0, 0);
    module->portLinearRange.setValue(1, 255);
    module->fire();
  }
  float shown() { return child<QxFullSlider>("Slice")->getValue(); }
};

/// Does something at the second question whether the user wants to stop.
class AskingWorkArea : public ZxWorkArea {
public:
  explicit AskingWorkArea(std::function<bool()> answer) : m_answer(std::move(answer))
  {
    setTheWorkArea(this);
  }
  ~AskingWorkArea() override { setTheWorkArea(m_before); }

private:
  ZxWorkArea* m_before = getTheWorkArea();
  bool interruptRequested() override { return ++m_questions >= 2 && m_answer(); }
  std::function<bool()> m_answer;
  int m_questions = 0;
};

} // namespace

TEST_F(EditorNavigationTest, SlicesOutsideTheStackAreRefused)
{
  const int e = current();
  for (const float s : {-1.0f, 7.0f, 1e9f, -1e9f}) {
    editor->sliceChange(s);
    EXPECT_EQ(current(), e) << s;
  }
  EXPECT_EQ(shown(), static_cast<float>(e));
}

TEST_F(EditorNavigationTest, WithAFixedReferenceAStepOntoItJumpsOver)
{
  goTo(3, 1); // reference 2
  editor->fixReference();
  editor->sliceChange(2.0f);
  EXPECT_EQ(current(), 1);
  EXPECT_EQ(reference(), 2);
  key(Qt::Key_Space);
  EXPECT_EQ(current(), 3);
  child<QxFullSlider>("Slice")->setValue(6.0f);
  EXPECT_EQ(current(), 6);
  child<QxFullSlider>("Slice")->setValue(2.0f); // from afar: refused, and the slider goes back
  EXPECT_EQ(current(), 6);
  EXPECT_EQ(shown(), 6.0f);
  editor->setEditableSlice(-1); // the pair stays
  EXPECT_EQ(current(), 6);
  EXPECT_EQ(reference(), 2);
}

TEST_F(EditorNavigationTest, AFixedReferenceAtTheEndsStaysInTheStack)
{
  goTo(1, 1); // reference 0
  editor->fixReference();
  editor->sliceChange(0.0f); // jumps to -1: refused
  EXPECT_EQ(current(), 1);
  EXPECT_EQ(shown(), 1.0f);
  editor->fixReference();
  goTo(5, -1); // reference 6
  editor->fixReference();
  editor->sliceChange(6.0f);
  EXPECT_EQ(current(), 5);
  editor->sliceChange(0.0f);
  editor->fixReference(); // slice 0 against 1 now
  EXPECT_EQ(current(), 0);
  EXPECT_EQ(reference(), 1);
  EXPECT_TRUE(child<QToolButton>("upper")->isEnabled());
  editor->setEditableSlice(1); // swaps the two
  EXPECT_EQ(current(), 1);
  EXPECT_EQ(reference(), 0);
}

TEST_F(EditorNavigationTest, FixingMovesAPairThatHasNoReferenceOnItsSide)
{
  editor->fixReference();
  editor->sliceChange(0.0f);
  module->setReferenceFixed(false); // as a script does
  editor->fixReference();
  EXPECT_EQ(current(), 1);
  EXPECT_EQ(reference(), 0);
  editor->fixReference();
  goTo(2, -1);
  editor->fixReference();
  editor->sliceChange(6.0f);
  module->setReferenceFixed(false);
  editor->fixReference();
  EXPECT_EQ(current(), 5);
  EXPECT_EQ(reference(), 6);
}

TEST_F(EditorNavigationTest, AligningAllSlicesGivesTheTransformsOfARunWithoutWindow)
{
  for (int mode : {0, 1}) {
    const auto other = mcMake<ZxAlignSlices>();
    ASSERT_TRUE(other->portData.connect(stack.get()));
    other->fire();
    editor->resetAll();
    for (int k = 0; k < 7; ++k) {
      const SliceXForm start(static_cast<float>(k % 3), static_cast<float>(-k % 2), 0, false);
      setTransform(k, start);
      other->getSlice(k).setXForm(start);
    }
    goTo(3, 1);
    other->alignAll(mode, 2, {});
    editor->changeAlignMode(mode);
    const int depth = undoDepth();
    editor->doAllAutoAlign();
    EXPECT_EQ(module->transforms(), other->transforms());
    EXPECT_EQ(undoDepth(), depth + 1);
    EXPECT_EQ(current(), 0);
    EXPECT_TRUE(isChecked("lower"));
    EXPECT_FALSE(ZxWorkArea::getTheWorkArea()->isBusy());
  }
}

TEST_F(EditorNavigationTest, AStopKeepsWhatIsAlignedAndOneUndoTakesItBack)
{
  for (int k = 0; k < 7; ++k) setTransform(k, SliceXForm(static_cast<float>(3 * k), 1, 0, false));
  goTo(3, 1);
  const AlignState before = module->currentState();
  editor->changeAlignMode(0);
  {
    AskingWorkArea area([] { return true; });
    editor->doAllAutoAlign();
    EXPECT_FALSE(area.isBusy());
  }
  EXPECT_EQ(current(), 4); // the second of the pairs upwards
  EXPECT_NE(module->getSlices(), before.slices);
  EXPECT_TRUE(module->getSlice(1) == before.slices[1]);
  editor->undoRedo()->undo();
  EXPECT_TRUE(module->currentState() == before);
}

TEST_F(EditorNavigationTest, WhatComesDuringARunIsRefused)
{
  goTo(3, 1);
  editor->changeAlignMode(0);
  McHandle<ZxField3> another = greyStack({20, 10, 4});
  bool asked = false;
  {
    AskingWorkArea area([&] {
      if (std::exchange(asked, true)) return false;
      const AlignState state = module->currentState();
      editor->doAllAutoAlign();
      editor->doAutoAlign();
      key(Qt::Key_Home);
      key(Qt::Key_Left);
      click("lower");
      click("mirror");
      editor->undoRedo()->undo();
      Q_EMIT editor->drawArea()->translated(3, 3, true);
      EXPECT_FALSE(editor->cancel());
      EXPECT_TRUE(module->currentState() == state);
      EXPECT_TRUE(isChecked("upper"));
      module->change([&] { module->portData.connect(another.get()); });
      ZxObjectPool::getThePool().remove(stack.get());
      EXPECT_EQ(module->numSlices(), 7);
      return false;
    });
    editor->doAllAutoAlign();
  }
  EXPECT_TRUE(asked);
  EXPECT_EQ(module->numSlices(), 4); // The new input was taken up afterwards.
  EXPECT_EQ(current(), 2);
  console.take();
}

TEST_F(EditorNavigationTest, TwoSlicesOfOnePixelStandEverything)
{
  connect(module->portData, greyStack({1, 1, 2}));
  editor->showCoronalView(true);
  editor->showSagittalView(true);
  const auto use = [this](const auto& action) {
    action();
    editor->drawArea()->viewport()->grab();
    ASSERT_TRUE((current() == 0 || current() == 1) && reference() == 1 - current());
    ASSERT_TRUE(module->isReferenceFixed() || side() == current() - reference());
  };
  for (const bool projected : {false, true}) {
    module->setUseMaxIntProjection(projected);
    for (int mode = 0; mode < 4; ++mode) {
      editor->changeAlignMode(mode);
      use([&] { editor->doAutoAlign(); });
      use([&] { editor->doAllAutoAlign(); });
    }
    for (QAction* action : items()) use([&] { action->trigger(); });
    for (const int k : {Qt::Key_Home, Qt::Key_Space, Qt::Key_End, Qt::Key_Backspace, Qt::Key_1, Qt::Key_2,
                        Qt::Key_Left, Qt::Key_Escape})
      use([&] { key(k); });
    use([&] { editor->calcNewImageSize(true, true); });
    use([&] { editor->showBorder(true, true, 3, 2); });
  }
  console.take();
}

TEST_F(EditorNavigationTest, TheProjectionIsShownInTheAlignedFrameAtRestAndInADrag)
{
  // A single slice projected is the slice itself, moved: the picture must not differ from the plain one.
  projectSingleSlices();
  goTo(4, 1);
  setTransform(4, SliceXForm(3, -2, 0, false));
  setTransform(3, SliceXForm(-1, 4, 0, false));
  module->updateViews();
  QxDrawAlignSlices* view = editor->drawArea();
  // Inside, where no slice ends: a projection is black beyond.
  const auto picture = [&] {
    const QPoint middle = view->viewport()->rect().center();
    return view->viewport()->grab(QRect(middle - QPoint(5, 3), QSize(11, 7))).toImage();
  };
  const QImage plain = picture();
  module->setUseMaxIntProjection(true);
  EXPECT_EQ(picture(), plain);

  view->transform(SliceXForm(5, 1, 0, false)); // as a drag does
  const QImage dragged = picture();
  EXPECT_NE(dragged, plain);
  editor->translate(5, 1, false); // and its end
  EXPECT_EQ(picture(), dragged);
  module->mapSlices();
  module->updateViews();
  const QImage again = picture();
  module->setUseMaxIntProjection(false);
  EXPECT_EQ(picture(), again);
}

TEST_F(EditorNavigationTest, TheQualityOfProjectionsCountsTheirMotionSince)
{
  projectSingleSlices();
  goTo(4, 1);
  setTransform(4, SliceXForm(3, -2, 10, false));
  setTransform(3, SliceXForm(-1, 4, 0, true));
  const float plain = module->computeQuality();
  for (int k : {3, 4}) setTransform(k, SliceXForm());
  module->setUseMaxIntProjection(true); // at the identity: whole slices
  EXPECT_NE(module->computeQuality(), plain);
  setTransform(4, SliceXForm(3, -2, 10, false));
  setTransform(3, SliceXForm(-1, 4, 0, true));
  EXPECT_FLOAT_EQ(module->computeQuality(), plain);
}
