#include "zxalign/RecoveryQuestion.h"

#include "EditorTest.h"
#include "zxalign/AlignRecovery.h"

#include <QDir>
#include <QTemporaryDir>

namespace {

/// A volume of a file whose alignment was left unsaved, opened again beside the editor of another one.
class RecoveryQuestionTest : public EditorTest {
protected:
  void SetUp() override
  {
    qputenv("XDG_STATE_HOME", state.path().toLocal8Bit());
    AlignRecovery::setQuestion(&askToRestore);
    EditorTest::SetUp();
    again->setFileName("again.tif");
    auto crashed = open();
    crashed->undoRedo().saveState();
    crashed->getSlice(2).translationX = 8;
    ASSERT_TRUE(waitFor([&] { return !crashed->recovery().isPending(); }));
  }
  void TearDown() override
  {
    AlignRecovery::setQuestion({});
    EditorTest::TearDown();
  }
  McHandle<ZxAlignSlices> open()
  {
    auto opened = mcMake<ZxAlignSlices>();
    EXPECT_TRUE(opened->portData.connect(again.get()));
    opened->fire();
    return opened;
  }
  QMessageBox* question() { return host->findChild<QMessageBox*>("recoveryQuestion"); }
  void answer(const char* text)
  {
    ASSERT_TRUE(question());
    EXPECT_TRUE(question()->isVisible());
    for (QAbstractButton* button : question()->buttons())
      if (button->text() == text) button->click();
    EXPECT_TRUE(waitFor([this] { return !question(); }));
  }
  bool isKept() const { return !QDir(state.path() + "/zxalign/recovery").entryList({"*.json"}).isEmpty(); }

  const QTemporaryDir state;
  McHandle<ZxField3> again = greyStack({24, 18, 5});
};

TEST_F(RecoveryQuestionTest, RestoresOrDiscardsOrAsksAgainAndNeverBlocks)
{
  {
    const McHandle<ZxAlignSlices> opened = open(); // returns before there is an answer
    EXPECT_EQ(opened->getSlice(2).translationX, 0.0f);
    answer("&Later");
    EXPECT_EQ(opened->getSlice(2).translationX, 0.0f);
  }
  EXPECT_TRUE(isKept());
  {
    const McHandle<ZxAlignSlices> opened = open();
    answer("&Restore");
    EXPECT_EQ(opened->getSlice(2).translationX, 8.0f);
    EXPECT_TRUE(waitFor([&] { return !opened->recovery().isPending(); }));
  }
  EXPECT_TRUE(isKept()) << "it is still unsaved";
  {
    const McHandle<ZxAlignSlices> opened = open();
    answer("&Discard");
    EXPECT_EQ(opened->getSlice(2).translationX, 0.0f);
  }
  EXPECT_FALSE(isKept());
}

TEST_F(RecoveryQuestionTest, GoesWithItsModule)
{
  McHandle<ZxAlignSlices> opened = open();
  ASSERT_TRUE(question());
  opened = {};
  EXPECT_TRUE(waitFor([this] { return !question(); }));
  EXPECT_TRUE(isKept());
}

TEST_F(RecoveryQuestionTest, WithoutAWindowTheConsoleTells)
{
  host->hide();
  console.take();
  std::string told;
  const auto before = ZxMessage::getTheMsg()->setSink([&](const std::string& line) { told += line; });
  open();
  ZxMessage::getTheMsg()->setSink(before);
  EXPECT_FALSE(question());
  EXPECT_NE(told.find("was not saved"), std::string::npos) << told;
}

} // namespace
