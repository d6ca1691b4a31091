// The editor in a real window: keys and clicks go the way of the window system.
#include "EditorTest.h"
#include "zxalign/QxAlignSlicesOptionsDialog.h"

#include <QLineEdit>
#include <QMenuBar>
#include <QSpinBox>
#include <QWindow>

namespace {

class EditorDisplayTest : public EditorTest {
protected:
  void SetUp() override
  {
    EditorTest::SetUp();
    ASSERT_TRUE(waitForExposed(host.get()));
    host->activateWindow();
    ASSERT_TRUE(waitForActive(host.get()));
  }
  /// To whatever has the focus.
  void real(Qt::Key k, Qt::KeyboardModifiers modifiers = {})
  {
    QTest::keyClick(host->windowHandle(), k, modifiers);
  }
  void clickOn(QWidget* widget)
  {
    const QPoint inside(10, widget->height() / 2); // of a spin box not its buttons
    const QPoint at = widget->mapTo(host.get(), inside);
    QTest::mouseClick(host->windowHandle(), Qt::LeftButton, {}, at);
  }
  QWidget* view() { return editor->drawArea()->viewport(); }
};

} // namespace

TEST_F(EditorDisplayTest, KeysReachTheEditorOnceItIsOpen)
{
  const int e = current();
  real(Qt::Key_Space);
  EXPECT_EQ(current(), e + 1);
  real(Qt::Key_Left);
  real(Qt::Key_Up, Qt::ShiftModifier);
  EXPECT_TRUE(isAt(e + 1, SliceXForm(-1, -5, 0, false)));
  real(Qt::Key_Down, Qt::ControlModifier);
  EXPECT_FLOAT_EQ(slice().rotation, -0.1f);
  real(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_FLOAT_EQ(slice().rotation, 0.0f);
  clickOn(child<QToolButton>("alignCenters"));
  real(Qt::Key_Backspace);
  EXPECT_EQ(current(), e);
  EXPECT_EQ(undoDepth(), 2);
}

TEST_F(EditorDisplayTest, TypedNumbersGoIntoTheFieldsThatWereClicked)
{
  clickOn(child<QLineEdit>("field"));
  real(Qt::Key_A, Qt::ControlModifier);
  real(Qt::Key_2);
  real(Qt::Key_Return);
  EXPECT_EQ(current(), 2);
  EXPECT_EQ(side(), 1);
  clickOn(view());
  real(Qt::Key_Space);
  EXPECT_EQ(current(), 3);

  editor->showTransformToolBar(true);
  QCoreApplication::processEvents();
  auto* box = child<QSpinBox>("translationX");
  clickOn(box);
  box->selectAll();
  for (const Qt::Key k : {Qt::Key_1, Qt::Key_2, Qt::Key_1}) real(k);
  EXPECT_EQ(undoDepth(), 0);
  real(Qt::Key_Return);
  EXPECT_TRUE(isAt(3, SliceXForm(121, 0, 0, false)));
  EXPECT_EQ(undoDepth(), 1);
}

TEST_F(EditorDisplayTest, ModifiersLetGoInAMenuAreNotStuck)
{
  const int e = current();
  auto* menu = host->findChild<QMenu*>("landmarksMenu");
  QTest::keyPress(host->windowHandle(), Qt::Key_Control);
  menu->popup(host->mapToGlobal(QPoint(50, 50)));
  ASSERT_TRUE(waitForExposed(menu));
  QTest::keyRelease(menu, Qt::Key_Control);
  menu->close();
  real(Qt::Key_Up);
  EXPECT_TRUE(isAt(e, SliceXForm(0, -1, 0, false)));
}

TEST_F(EditorDisplayTest, AKeyHeldWhileAnotherWindowComesShowsBothSlicesAgain)
{
  QTest::keyPress(host->windowHandle(), Qt::Key_2);
  EXPECT_EQ(editor->drawArea()->displayedSlice(), QxDrawAlignSlices::SecondSlice);
  QWidget other;
  other.show();
  other.activateWindow();
  ASSERT_TRUE(waitForActive(&other));
  EXPECT_EQ(editor->drawArea()->displayedSlice(), QxDrawAlignSlices::BothSlices);
}

TEST_F(EditorDisplayTest, ADragWithTheMouseIsOneEditThatTheWholeWindowShows)
{
  editor->showCoronalView(true);
  editor->showTransformToolBar(true);
  QTest::qWait(0);
  const QPoint at = view()->mapTo(host.get(), view()->rect().center());
  QWindow* window = host->windowHandle();
  QTest::mousePress(window, Qt::LeftButton, {}, at);
  QTest::mouseMove(window, at + QPoint(2, 1));
  QTest::mouseMove(window, at + QPoint(4, -3));
  QTest::mouseRelease(window, Qt::LeftButton, {}, at + QPoint(4, -3));
  EXPECT_TRUE(isAt(current(), SliceXForm(4, -3, 0, false)));
  EXPECT_EQ(undoDepth(), 1);
  EXPECT_EQ(child<QSpinBox>("translationY")->value(), -3);
}

TEST_F(EditorDisplayTest, ClosingTheMainWindowAsksTheEditor)
{
  editor->mirror();
  answerPrompt("&Cancel");
  EXPECT_FALSE(host->close());
  EXPECT_TRUE(host->isVisible());
  EXPECT_EQ(host->getCentralLayout()->currentWidget(), editor);
  real(Qt::Key_Space); // still at work
  answerPrompt("&Don't Save");
  EXPECT_TRUE(host->close());
  EXPECT_FALSE(host->isVisible());
}
