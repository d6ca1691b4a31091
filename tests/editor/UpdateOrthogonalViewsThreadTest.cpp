#include "zxalign/UpdateOrthogonalViewsThread.h"

#include "OrthoViewTest.h"

using enum OrthoOrientation;

namespace {

McHandle<ZxField3> stack() { return greyStack({23, 18, 40}); }

class UpdateOrthogonalViewsThreadTest : public OrthoViewTest {
protected:
  testing::AssertionResult endsUpToDate()
  {
    if (waitFor([this] { return isComplete(); })) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "stale columns are left";
  }
  bool isComplete()
  {
    // The images are the thread's while it works.
    return views->waitForUpdate(20) && isUpToDate();
  }
};

} // namespace

TEST_F(UpdateOrthogonalViewsThreadTest, EndsInTheSameImagesAsAnUpdateHere)
{
  useThreads("1");
  for (const bool projects : {false, true}) {
    openBoth(stack());
    views->setUseMaxIntProj(projects);
    RandomEdits edits(*module, *views, projects ? 31 : 32);
    for (int round = 0; round < 6; ++round) {
      for (int i = 0; i < 15; ++i) {
        edits.edit();
        QCoreApplication::processEvents();
      }
      EXPECT_TRUE(endsUpToDate()) << "round " << round << " projects " << projects;
    }
    views = {};
    editor.reset();
  }
}

TEST_F(UpdateOrthogonalViewsThreadTest, ViewsComeAndGoDuringAPass)
{
  useThreads("1");
  openBoth(stack());
  for (int i = 0; i < 40; ++i) {
    views->updateView();
    if (i % 5 == 1) views->showSagittalView(false);
    if (i % 5 == 2) views->setUseMaxIntProj(i % 2 == 0);
    if (i % 5 == 3) views->showSagittalView(true);
    if (i % 10 == 4) views->init(module->getDataLattice(), i % 20 == 4);
    if (i % 10 == 9) {
      connect(module->portData, i % 20 == 9 ? makeField<float>({9, 11, 33}, 1, greyAt) : stack());
      views->init(module->getDataLattice(), true);
    }
    if (i % 7 == 0) QCoreApplication::processEvents();
  }
  EXPECT_TRUE(endsUpToDate());
  views->updateView();
  views = {}; // during a pass
  editor.reset();
}

TEST_F(UpdateOrthogonalViewsThreadTest, AnInputThatGoesDuringAPassIsReadNoMore)
{
  useThreads("1");
  for (int i = 0; i < 10; ++i) {
    openBoth(stack());
    views->setUseMaxIntProj(i % 2 == 0);
    views->updateView();
    module->portData.disconnect();
    module->fire();
    EXPECT_FALSE(module->getDataLattice());
    ZxObjectPool::getThePool().clear();
    views = {};
    editor.reset();
  }
}

TEST_F(UpdateOrthogonalViewsThreadTest, TheVariableIsLookedAtForEveryUpdate)
{
  openBoth(stack());
  useThreads("yes"); // no number
  EXPECT_FALSE(views->useThread());
  useThreads("1");
  ZxRecordingWorkArea area;
  views->updateView();
  EXPECT_TRUE(area.steps().empty());
  EXPECT_EQ(area.getNumQueries(), 0);
  EXPECT_TRUE(views->hasThread());
  EXPECT_TRUE(endsUpToDate());
  useThreads("0");
  turn(5, {1.0f, 2.0f, 0.0f, true});
  EXPECT_EQ(area.getProgressText(), "Updating orthogonal views");
  EXPECT_FALSE(views->hasThread());
  EXPECT_TRUE(isUpToDate());
}

// Seven stale slices and a frequency of five: after the fifth, and once at the end. Refreshes that the event
// loop has not come to become one.
TEST_F(UpdateOrthogonalViewsThreadTest, RefreshesTheViews)
{
  openBoth(stack());
  editor->resize(900, 700);
  editor->show();
  ASSERT_TRUE(waitForExposed(editor.get()));
  bar().autoCheckBoxChange(false);
  views->updateView(3, 9, Both, 0, 0, false, true, false);
  UpdateOrthogonalViewsThread thread(views.get());
  thread.setUpdateRange(0, 39);
  thread.setUpdateFreq(5);
  const QImage before = view(Coronal)->viewer()->snapshot();
  thread.start();
  EXPECT_TRUE(thread.wait());
  EXPECT_TRUE(isUpToDate());
  EXPECT_EQ(view(Coronal)->viewer()->snapshot(), before);
  QCoreApplication::processEvents();
  EXPECT_NE(view(Coronal)->viewer()->snapshot(), before);
}
