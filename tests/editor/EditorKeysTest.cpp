#include "EditorTest.h"

namespace {

class EditorKeysTest : public EditorTest {
protected:
  void send(QEvent::Type type, int k, bool isRepeated = false)
  {
    QKeyEvent event(type, k, Qt::NoModifier, QString(), isRepeated);
    QCoreApplication::sendEvent(editor, &event);
    EXPECT_FALSE(type == QEvent::KeyPress && event.isAccepted()) << k; // Keys travel on.
  }
  /// Presses keys one after the other and lets them go in reverse.
  void chord(std::initializer_list<int> keys)
  {
    for (const int k : keys) send(QEvent::KeyPress, k);
    for (auto k = std::rbegin(keys); k != std::rend(keys); ++k)
      QTest::keyRelease(editor, static_cast<Qt::Key>(*k));
  }
  QxDrawAlignSlices& view() { return *editor->drawArea(); }
  SliceXForm moved() const { return slice(); }
};

} // namespace

TEST_F(EditorKeysTest, GoThroughTheStackAndStopAtItsEnds)
{
  goTo(5, 1);
  key(Qt::Key_Space);
  EXPECT_EQ(current(), 6);
  key(Qt::Key_Space);
  EXPECT_EQ(current(), 6);
  key(Qt::Key_Backspace);
  EXPECT_EQ(current(), 5);
  key(Qt::Key_Home); // No slice lies below the first one: the lower slice is edited there.
  EXPECT_EQ(current(), 0);
  EXPECT_EQ(reference(), 1);
  EXPECT_TRUE(isChecked("lower"));
  key(Qt::Key_Backspace);
  EXPECT_EQ(current(), 0);
  key(Qt::Key_End);
  EXPECT_EQ(current(), 6);
  EXPECT_EQ(reference(), 5);
  EXPECT_EQ(undoDepth(), 0);
}

TEST_F(EditorKeysTest, ArrowsMoveByOneWithShiftByFive)
{
  const int e = current();
  chord({Qt::Key_Left});
  EXPECT_TRUE(isAt(e, SliceXForm(-1, 0, 0, false)));
  chord({Qt::Key_Down});
  chord({Qt::Key_Shift, Qt::Key_Right});
  chord({Qt::Key_Shift, Qt::Key_Up});
  EXPECT_TRUE(isAt(e, SliceXForm(4, -4, 0, false)));
  chord({Qt::Key_Right});
  chord({Qt::Key_Up});
  EXPECT_TRUE(isAt(e, SliceXForm(5, -5, 0, false)));
  EXPECT_TRUE(isAt(e + 1, SliceXForm(5, -5, 0, false)));
  EXPECT_EQ(undoDepth(), 6);
}

TEST_F(EditorKeysTest, WithCtrlUpAndDownTurnAndNothingElseActs)
{
  const int e = current();
  chord({Qt::Key_Control, Qt::Key_Up});
  EXPECT_FLOAT_EQ(slice().rotation, 0.1f);
  chord({Qt::Key_Control, Qt::Key_Shift, Qt::Key_Down});
  EXPECT_FLOAT_EQ(slice().rotation, -0.9f);
  chord({Qt::Key_Shift, Qt::Key_Control, Qt::Key_Up});
  EXPECT_FLOAT_EQ(slice().rotation, 0.1f);
  const int depth = undoDepth();
  for (const int k : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Space, Qt::Key_Home, Qt::Key_Escape, Qt::Key_1}) {
    chord({Qt::Key_Control, k});
    chord({Qt::Key_Control, Qt::Key_Shift, k});
  }
  EXPECT_EQ(current(), e);
  EXPECT_EQ(undoDepth(), depth);
  EXPECT_EQ(view().getEditMode(), 1);
}

TEST_F(EditorKeysTest, OneAndTwoShowOneSliceAsLongAsTheyAreHeld)
{
  send(QEvent::KeyPress, Qt::Key_1, true); // repeated: nothing
  EXPECT_EQ(view().displayedSlice(), QxDrawAlignSlices::BothSlices);
  send(QEvent::KeyPress, Qt::Key_1);
  EXPECT_EQ(view().displayedSlice(), QxDrawAlignSlices::FirstSlice);
  EXPECT_EQ(side(), -1);
  send(QEvent::KeyRelease, Qt::Key_1, true);
  EXPECT_EQ(view().displayedSlice(), QxDrawAlignSlices::FirstSlice);
  QTest::keyRelease(editor, Qt::Key_1);
  EXPECT_EQ(view().displayedSlice(), QxDrawAlignSlices::BothSlices);
  send(QEvent::KeyPress, Qt::Key_2);
  EXPECT_EQ(view().displayedSlice(), QxDrawAlignSlices::SecondSlice);
  EXPECT_EQ(side(), 1);
  QTest::keyRelease(editor, Qt::Key_2);
  editor->fixReference();
  send(QEvent::KeyPress, Qt::Key_1);
  EXPECT_EQ(side(), 1); // the side stays with a fixed reference
  QTest::keyRelease(editor, Qt::Key_1);
}

TEST_F(EditorKeysTest, EscapeClearsASelectionFirstAndSwitchesTheEditModeThen)
{
  chord({Qt::Key_Escape});
  EXPECT_EQ(editor->getEditMode(), 3);
  QTest::mouseClick(view().viewport(), Qt::LeftButton, {}, view().viewport()->rect().center());
  ASSERT_GE(view().selectedLandmark(), 0);
  chord({Qt::Key_Shift, Qt::Key_Escape});
  ASSERT_GE(view().selectedLandmark(), 0);
  chord({Qt::Key_Escape});
  EXPECT_EQ(view().selectedLandmark(), -1);
  EXPECT_EQ(editor->getEditMode(), 3);
  chord({Qt::Key_Escape});
  EXPECT_EQ(editor->getEditMode(), 1);
}

TEST_F(EditorKeysTest, AReleaseThatGoesElsewhereIsMadeUpFor)
{
  QTest::keyPress(editor, Qt::Key_Control);
  QTest::keyPress(editor, Qt::Key_Shift);
  QTest::keyPress(editor, Qt::Key_2); // nothing, with Ctrl
  host->centralWidget()->setFocusPolicy(Qt::StrongFocus);
  host->centralWidget()->setFocus(); // Both are let go there.
  editor->setFocus();
  chord({Qt::Key_Right});
  EXPECT_TRUE(isAt(current(), SliceXForm(1, 0, 0, false)));

  send(QEvent::KeyPress, Qt::Key_2);
  EXPECT_EQ(view().displayedSlice(), QxDrawAlignSlices::SecondSlice);
  host->centralWidget()->setFocus();
  EXPECT_EQ(view().displayedSlice(), QxDrawAlignSlices::BothSlices);
}

TEST_F(EditorKeysTest, WorkWhereverTheFocusIsButInAFieldThatAPersonWentTo)
{
  const int e = current();
  auto* button = child<QToolButton>("mirror");
  button->setFocus(Qt::TabFocusReason);
  QTest::keyClick(button, Qt::Key_Space);
  EXPECT_EQ(current(), e + 1);
  EXPECT_FALSE(slice().flip);
  auto* field = child<QWidget>("field");
  field->setFocus(Qt::OtherFocusReason); // came there by itself
  QTest::keyClick(field, Qt::Key_Backspace);
  EXPECT_EQ(current(), e);
  field->setFocus(Qt::OtherFocusReason);
  editor->setFocus();
  field->setFocus(Qt::MouseFocusReason);
  for (const Qt::Key k : {Qt::Key_Home, Qt::Key_Space, Qt::Key_Left}) QTest::keyClick(field, k);
  EXPECT_EQ(current(), e);
  EXPECT_EQ(undoDepth(), 0);
  auto* slider = child<QWidget>("slider");
  editor->setFocus();
  slider->setFocus(Qt::MouseFocusReason);
  QTest::keyClick(slider, Qt::Key_Right); // moves the slice
  EXPECT_TRUE(isAt(e, SliceXForm(1, 0, 0, false)));
  editor->setFocus();
  slider->setFocus(Qt::TabFocusReason);
  QTest::keyClick(slider, Qt::Key_Right); // goes to the next slice
  EXPECT_EQ(current(), e + 1);
  EXPECT_EQ(undoDepth(), 1);
}
