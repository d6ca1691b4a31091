// A thousand things that a person may do, one after the other.
#include "EditorTest.h"

#include <QScrollBar>

namespace {

class EditorRandomActionsTest : public EditorTest, public testing::WithParamInterface<std::uint32_t> {
protected:
  QPoint somewhere(int margin = 0)
  {
    const QSize size = editor->drawArea()->viewport()->size();
    return {random.below(size.width() + 2 * margin) - margin,
            random.below(size.height() + 2 * margin) - margin};
  }
  void pressKey()
  {
    static constexpr Qt::Key keys[] = {Qt::Key_Space, Qt::Key_Backspace, Qt::Key_Home,   Qt::Key_End,
                                       Qt::Key_1,     Qt::Key_2,         Qt::Key_Escape, Qt::Key_Left,
                                       Qt::Key_Up,    Qt::Key_Down};
    static constexpr Qt::KeyboardModifiers modifiers[] = {Qt::NoModifier, Qt::NoModifier, Qt::ShiftModifier,
                                                          Qt::ControlModifier};
    key(keys[random.below(10)], modifiers[random.below(4)]);
  }
  void drag()
  {
    QWidget* view = editor->drawArea()->viewport();
    const auto button = random.below(4) ? Qt::LeftButton : Qt::MiddleButton;
    const Qt::KeyboardModifiers modifiers = random.below(3) ? Qt::NoModifier : Qt::ShiftModifier;
    QTest::mousePress(view, button, modifiers, somewhere());
    for (int i = random.below(4); i > 0; --i) {
      const QPoint p = somewhere(20);
      QMouseEvent move(QEvent::MouseMove, p, view->mapToGlobal(p), Qt::NoButton, button, modifiers);
      QCoreApplication::sendEvent(view, &move);
    }
    QTest::mouseRelease(view, button, modifiers, somewhere());
  }
  void chooseItem()
  {
    const QList<QAction*> all = items();
    all.at(random.below(static_cast<int>(all.size())))->trigger();
  }
  void pressButton()
  {
    QList<QToolButton*> buttons = editor->findChildren<QToolButton*>();
    buttons.removeIf([](const QToolButton* b) { return !b->isEnabled(); });
    buttons.at(random.below(static_cast<int>(buttons.size())))->click();
  }
  void act()
  {
    switch (random.below(8)) {
    case 0:
    case 1:
      return pressKey();
    case 2:
    case 3:
      return drag();
    case 4:
      return chooseItem();
    case 5:
      return pressButton();
    case 6:
      return random.below(2) ? editor->undoRedo()->undo() : editor->undoRedo()->redo();
    default:
      return editor->sliceChange(static_cast<float>(random.real(-2.0, 9.0)));
    }
  }
  void check()
  {
    const auto in = [](int s) { return s >= 0 && s < 7; };
    ASSERT_TRUE(in(current()) && in(reference()) && current() != reference());
    ASSERT_EQ(isChecked("upper"), side() == 1);
    ASSERT_EQ(editor->drawArea()->getEditableSlice(), side());
    for (const SliceInfo& s : module->getSlices()) {
      ASSERT_EQ(s.landmarks.size(), slice().landmarks.size());
      ASSERT_GE(s.landmarks.size(), 2u);
    }
    ASSERT_FALSE(ZxWorkArea::getTheWorkArea()->isBusy());
  }

  Random random{GetParam()};
};

} // namespace

TEST_P(EditorRandomActionsTest, LeaveEverythingInOrder)
{
  module->alignSettings().maxIterations = 5;
  for (int i = 0; i < 1000; ++i) {
    act();
    if (i % 10 == 0) editor->drawArea()->viewport()->grab();
    ASSERT_NO_FATAL_FAILURE(check()) << "action " << i;
    if (i % 50 == 0) QCoreApplication::processEvents();
    console.take();
  }
}

TEST_P(EditorRandomActionsTest, CanAllBeTakenBack)
{
  // As many as undo keeps, and no saving, undo or redo between: those only make other first states.
  AlignState first;
  bool recorded = false;
  for (int i = 0; undoDepth() < 99 && i < 400; ++i) {
    const AlignState before = module->currentState();
    random.below(2) ? drag() : pressKey();
    if (!recorded && undoDepth() > 0) {
      first = before;
      recorded = true;
    }
  }
  ASSERT_TRUE(recorded);
  while (module->history().canUndo()) editor->undoRedo()->undo();
  EXPECT_TRUE(module->getSlices() == first.slices);
  check();
}

INSTANTIATE_TEST_SUITE_P(Seeds, EditorRandomActionsTest, testing::Values(1u, 77u, 4242u));
