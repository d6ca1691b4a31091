#include "EditorTest.h"
#include "zx/ZxController.h"

#include <QMenuBar>

namespace {

class EditorClosingTest : public EditorTest {
protected:
  void edit() { Q_EMIT editor->drawArea()->translated(5, 6, false); }
  bool isShown() { return host->getCentralLayout()->currentWidget() == editor; }
  std::string button() { return module->portAction.getButtonLabel(0); }
  bool isStored() { return stack->parameters().findBundle("AlignTransform") != nullptr; }
};

class MainViewer : public ZxController, public ZxViewer {
public:
  MainViewer() { setTheController(this); }
  ~MainViewer() override { setTheController(nullptr); }
  ZxViewer* viewer(int number, int) override { return number == 0 ? this : nullptr; }
  void show(int) override { m_shown = true; }
  void hide() override { m_shown = false; }
  bool isShown() const override { return m_shown; }

private:
  bool m_shown = true;
};

} // namespace

TEST_F(EditorClosingTest, TheButtonOpensAndClosesOneWindow)
{
  EXPECT_TRUE(isShown());
  EXPECT_EQ(button(), "Close");
  press(0);
  EXPECT_FALSE(isShown());
  EXPECT_EQ(host->getCentralLayout()->currentIndex(), 0);
  EXPECT_EQ(button(), "Edit");
  EXPECT_FALSE(module->isEditorOpen());
  press(0);
  EXPECT_TRUE(isShown());
  EXPECT_EQ(module->editor(), editor);
}

TEST_F(EditorClosingTest, TheMainViewerComesBackAsItWas)
{
  press(0);
  MainViewer viewer;
  for (const bool shown : {true, false}) {
    shown ? viewer.show(0) : viewer.hide();
    press(0);
    viewer.hide();
    edit();
    answerPrompt("&Cancel"); // A refusal does not count as opening.
    press(0);
    module->setModified(false);
    if (!shown) viewer.show(0);
    press(0);
    EXPECT_EQ(viewer.isShown(), shown);
  }
}

TEST_F(EditorClosingTest, UnsavedChangesAreAskedFor)
{
  edit();
  answerPrompt("&Cancel");
  press(0);
  EXPECT_TRUE(isShown());
  EXPECT_EQ(button(), "Close");
  QTimer::singleShot(0, host.get(),
                     [] { QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Escape); });
  EXPECT_FALSE(editor->cancel());
  EXPECT_TRUE(isShown());
  EXPECT_FALSE(isStored());

  answerPrompt("&Don't Save");
  press(0);
  EXPECT_FALSE(isShown());
  EXPECT_FALSE(isStored());
  press(0);
  answerPrompt("&Save");
  EXPECT_TRUE(editor->canClose()); // as the main window asks
  EXPECT_TRUE(isStored());
  EXPECT_FALSE(module->isModified());
  EXPECT_TRUE(isShown()) << "something else may keep the main window open";
  edit();
  answerPrompt("&Don't Save");
  EXPECT_TRUE(editor->canClose());
  EXPECT_TRUE(isShown() && module->isModified());
  editor->closePage();
  EXPECT_FALSE(isShown());
  EXPECT_EQ(button(), "Edit");
  EXPECT_EQ(ZxWorkArea::getTheWorkArea()->getProgressText(), "");
}

TEST_F(EditorClosingTest, AnAnswerIsForTheInputThatWasAskedAbout)
{
  edit();
  const McHandle<ZxField3> another = greyStack({20, 10, 4});
  QTimer::singleShot(0, host.get(), [&] {
    module->change([&] { module->portData.connect(another.get()); });
    answerPrompt("&Save");
  });
  EXPECT_FALSE(editor->cancel());
  EXPECT_TRUE(isShown());
  EXPECT_FALSE(another->parameters().findBundle("AlignTransform"));
}

TEST_F(EditorClosingTest, AnotherQuestionIsNotAskedWhileOneIsOpen)
{
  edit();
  QTimer::singleShot(0, host.get(), [this] {
    EXPECT_FALSE(editor->cancel());
    module->doIt(1);
    answerPrompt("&Cancel");
  });
  EXPECT_FALSE(editor->cancel());
}

TEST_F(EditorClosingTest, AnotherStackIsTakenUpWhileTheWindowIsOpen)
{
  click("editLandmarks");
  edit();
  editor->sliceChange(6);
  const McHandle<ZxField3> another = makeField<std::uint8_t>({9, 30, 3}, 4, greyAt);
  connect(module->portData, another);
  EXPECT_EQ(current(), 1);
  EXPECT_FALSE(item("undoAction")->isEnabled());
  EXPECT_FALSE(module->isModified());
  editor->drawArea()->viewport()->grab();
  key(Qt::Key_End);
  EXPECT_EQ(current(), 2);
  editor->showCoronalView(true);
  connect(module->portData, stack);
  EXPECT_EQ(module->numSlices(), 7);
  editor->drawArea()->viewport()->grab();
}

TEST_F(EditorClosingTest, WithoutDataTheWindowShowsNothingAndRefusesEverything)
{
  editor->showSagittalView(true);
  edit();
  ZxObjectPool::getThePool().remove(stack.get());
  stack = {};
  EXPECT_EQ(module->numSlices(), 0);
  editor->drawArea()->viewport()->grab();
  for (const int k : {Qt::Key_Space, Qt::Key_Home, Qt::Key_End, Qt::Key_Left, Qt::Key_1, Qt::Key_Escape})
    key(k);
  for (QAction* action : items()) action->trigger();
  for (QToolButton* b : editor->findChildren<QToolButton*>()) b->click();
  editor->calcNewImageSize(true, true);
  editor->showBorder(false, true, 50, 50);
  editor->changeBorderSize(50, 50);
  QCoreApplication::processEvents();
  EXPECT_TRUE(editor->cancel());
  console.take();
}

TEST_F(EditorClosingTest, AnInputThatCannotBeAlignedLeavesNothing)
{
  edit();
  connect(module->portData, greyStack({24, 18, 1}));
  EXPECT_FALSE(module->portData.isConnected());
  EXPECT_FALSE(module->isModified());
  editor->drawArea()->viewport()->grab();
  key(Qt::Key_Right);
  connect(module->portData, stack);
  EXPECT_TRUE(isAt(current(), SliceXForm()));
  key(Qt::Key_Right);
  EXPECT_TRUE(isAt(current(), SliceXForm(1, 0, 0, false)));
}

TEST_F(EditorClosingTest, TwoEditorsShareTheWindow)
{
  const auto other = mcMake<ZxAlignSlices>();
  ASSERT_TRUE(other->portData.connect(stack.get()));
  other->fire();
  other->doIt(1);
  auto* second = dynamic_cast<QxAlignSlices*>(other->editor());
  ASSERT_TRUE(second && second != editor);
  EXPECT_EQ(host->getCentralLayout()->currentWidget(), second);
  EXPECT_EQ(host->menuBar()->findChildren<QMenu*>("viewMenu").size(), 2);
  QTest::keyClick(second, Qt::Key_Right);
  EXPECT_TRUE(isAt(current(), SliceXForm()));
  EXPECT_TRUE(editor->cancel()); // of the one behind
  EXPECT_EQ(host->getCentralLayout()->currentWidget(), second);
}

TEST_F(EditorClosingTest, TheModuleTakesItsWindowAlong)
{
  const QPointer<QxAlignSlices> window(editor);
  edit();
  ZxObjectPool::getThePool().remove(module.get());
  module = {};
  EXPECT_FALSE(window);
  EXPECT_EQ(host->getCentralLayout()->count(), 1);
  for (QAction* action : host->menuBar()->actions()) EXPECT_TRUE(action->isVisible());
}

TEST_F(EditorClosingTest, TheModuleMayGoWhileItsWindowAsks)
{
  const QPointer<QxAlignSlices> window(editor);
  edit();
  QTimer::singleShot(0, host.get(), [this] {
    ZxObjectPool::getThePool().remove(module.get());
    module = {};
    answerPrompt("&Save");
  });
  editor->cancel();
  EXPECT_TRUE(waitFor([&] { return !window; }));
}

TEST_F(EditorClosingTest, TheMainWindowMayGoFirst)
{
  edit();
  host.reset();
  EXPECT_FALSE(module->editor());
  EXPECT_FALSE(module->isEditorOpen());
  press(0); // There is no place for one any more.
  EXPECT_EQ(console.take().size(), 1u);
}
