#include "zxalign/AlignRecovery.h"

#include "support/Waiting.h"
#include "zxalign/ModuleTest.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

const ZxDims dims{12, 9, 40};

class AlignRecoveryTest : public ModuleTest {
protected:
  AlignRecoveryTest()
  {
    qputenv("XDG_STATE_HOME", state.path().toLocal8Bit()); // Tests of one program may run at the same time.
    AlignRecovery::setQuestion([this](AlignRecovery& recovery, const QString& text) {
      asked = &recovery;
      question = text;
      return true;
    });
  }
  ~AlignRecoveryTest() override { AlignRecovery::setQuestion({}); }

  /// A volume that says it was read from that file.
  McHandle<ZxField3> stackFrom(const std::string& file, const ZxDims& size = dims)
  {
    McHandle<ZxField3> stack = greyStack(size);
    stack->setFileName(file);
    return stack;
  }
  /// A new module, as after the start of the program.
  void open(const McHandle<ZxField3>& stack)
  {
    asked = nullptr;
    module = mcMake<ZxAlignSlices>();
    module->recovery().setInterval(std::chrono::milliseconds(0));
    connect(module->portData, stack);
  }
  void edit(float x)
  {
    module->undoRedo().saveState();
    module->getSlice(7).translationX = x;
  }
  bool written()
  {
    return waitFor([this] { return !module->recovery().isPending(); });
  }
  QStringList files() const { return QDir(folder).entryList({"*.json"}, QDir::Files); }
  /// The module goes without an end, as if it had been killed; what it wrote is left.
  void crash()
  {
    ASSERT_TRUE(written());
    module = {};
  }

  const QTemporaryDir state;
  const QString folder = state.path() + "/zxalign/recovery";
  AlignRecovery* asked = nullptr;
  QString question;
};

TEST_F(AlignRecoveryTest, WhatWasEditedLastIsGivenBackExactlyAndCanBeUndone)
{
  open(stackFrom("a.tif"));
  module->undoRedo().saveState();
  setTransform(7, SliceXForm(0.1f, -1e-30f, 179.99f, true));
  module->addPoint({-3, 8});
  module->setSlice(5);
  module->setReferenceSlice(6);
  module->setEditableSide(-1);
  const AlignState edited = module->currentState();
  crash();
  open(stackFrom("a.tif"));
  const AlignState opened = module->currentState();
  ASSERT_TRUE(asked);
  EXPECT_TRUE(question.contains("stack.tif")) << question.toStdString();
  asked->restore();
  EXPECT_TRUE(module->currentState() == edited);
  EXPECT_EQ(module->getReferenceSlice(), 6);
  EXPECT_TRUE(module->isModified());
  EXPECT_TRUE(written());
  EXPECT_EQ(files().size(), 1) << "the old file makes way for that of this module";
  module->undoRedo().undo();
  EXPECT_TRUE(module->currentState() == opened);
}

// Then the side of the edited slice may point out of the stack.
TEST_F(AlignRecoveryTest, IsOfferedAlsoOfTheEndsOfTheStackWithAFixedReference)
{
  for (const auto& [slice, side] : {std::pair(0, 1), {dims.slices - 1, -1}}) {
    open(stackFrom("a.tif"));
    module->setEditableSide(side);
    module->setReferenceFixed(true);
    module->setSlice(slice);
    edit(2.5f);
    crash();
    open(stackFrom("a.tif"));
    ASSERT_TRUE(asked) << slice;
    asked->restore();
    EXPECT_EQ(module->getSlice(7).translationX, 2.5f);
    EXPECT_EQ(module->getEditableSlice(), slice);
    module->recovery().forget();
  }
}

TEST_F(AlignRecoveryTest, NothingIsLeftOfWhatWasSavedDiscardedOrTakenBack)
{
  open(stackFrom("a.tif"));
  float x = 0;
  const auto leavesNothing = [&](auto&& end) {
    edit(++x);
    EXPECT_TRUE(written());
    EXPECT_EQ(files().size(), 1);
    end();
    EXPECT_TRUE(written());
    return files().isEmpty();
  };
  EXPECT_TRUE(leavesNothing([this] { module->undoRedo().undo(); }));
  EXPECT_TRUE(leavesNothing([this] { module->recovery().forget(); }));
  ZxData* data = module->portData.getSource();
  ZxObjectPool::getThePool().add(data);
  EXPECT_FALSE(leavesNothing([this] { module->saveAlignment(); })) << "stored is not yet written to a file";
  edit(++x);
  data->setSaved();
  EXPECT_TRUE(written());
  EXPECT_EQ(files().size(), 1) << "written without the last edit";
  EXPECT_TRUE(leavesNothing([&] {
    module->saveAlignment();
    data->setSaved();
  }));
}

TEST_F(AlignRecoveryTest, OtherDataGetNoOffer)
{
  open(stackFrom("a.tif"));
  edit(3);
  crash();
  for (const auto& other : {stackFrom("b.tif"), stackFrom("a.tif", {12, 9, 41}), stackFrom("")}) {
    open(other);
    EXPECT_FALSE(asked);
    edit(1);
    EXPECT_TRUE(written());
    module->recovery().forget();
  }
  open(stackFrom("./x/../a.tif"));
  EXPECT_TRUE(asked) << "the same file by another name";
}

TEST_F(AlignRecoveryTest, WritesTheFirstEditAtOnceAndTheOthersTogether)
{
  open(stackFrom("a.tif"));
  module->recovery().setInterval(std::chrono::hours(1));
  edit(1);
  ASSERT_TRUE(written());
  edit(2);
  edit(3);
  QTest::qWait(0);
  EXPECT_TRUE(module->recovery().isPending());
  module = {}; // what waits is written now
  open(stackFrom("a.tif"));
  ASSERT_TRUE(asked);
  asked->restore();
  EXPECT_EQ(module->getSlice(7).translationX, 3.0f);
}

TEST_F(AlignRecoveryTest, KeepsWritingWhileLongWorkChangesSlices)
{
  open(stackFrom("a.tif"));
  {
    const ZxWorkingPhase phase("aligning");
    edit(1);
    EXPECT_TRUE(waitFor([this] { return !files().isEmpty(); }));
    module->getSlice(7).translationX = 2; // without a record of its own
    EXPECT_TRUE(module->recovery().isPending());
  }
  crash();
  open(stackFrom("a.tif"));
  ASSERT_TRUE(asked);
  asked->restore();
  EXPECT_EQ(module->getSlice(7).translationX, 2.0f);
}

TEST_F(AlignRecoveryTest, OffersTheOlderOneWhenTheNewerIsNotWanted)
{
  open(stackFrom("a.tif"));
  edit(1);
  crash();
  const QString older = files().value(0);
  open(stackFrom("a.tif"));
  edit(2);
  crash();
  // Times of files may be as coarse as the clock's tick.
  QFile file(folder + '/' + older);
  ASSERT_TRUE(file.open(QIODevice::ReadWrite));
  file.setFileTime(QDateTime::currentDateTime().addSecs(-60), QFileDevice::FileModificationTime);
  file.close();
  open(stackFrom("a.tif"));
  ASSERT_TRUE(asked);
  asked->discardOffer();
  EXPECT_EQ(files(), QStringList(older));
  ASSERT_TRUE(asked->hasOffer());
  asked->restore();
  EXPECT_EQ(module->getSlice(7).translationX, 1.0f);
}

TEST_F(AlignRecoveryTest, TellsOfItWhereNobodyCanBeAskedAndPutsDamagedFilesAside)
{
  AlignRecovery::setQuestion([](AlignRecovery&, const QString&) { return false; });
  open(stackFrom("a.tif"));
  edit(1);
  crash();
  console.take();
  open(stackFrom("a.tif"));
  const Lines lines = console.take();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_NE(lines[0].find("stack.tif was not saved"), std::string::npos) << lines[0];
  EXPECT_TRUE(isAt(7, SliceXForm())) << "nothing is restored unasked";
  module = {};
  QFile file(folder + '/' + files().value(0));
  ASSERT_TRUE(file.open(QIODevice::ReadWrite));
  file.resize(file.size() - 20);
  file.close();
  open(stackFrom("a.tif"));
  EXPECT_NE(console.take().at(0).find("is damaged"), std::string::npos);
  EXPECT_TRUE(files().isEmpty());
}

/// The program that edits until it is killed.
class Victim {
public:
  explicit Victim(const QString& file)
  {
    m_process.start(ZX_RECOVERY_VICTIM, {file});
    m_process.waitForStarted(patienceMilliseconds);
  }
  ~Victim() { kill(); }
  /// Lets it go on until it has kept so many edits.
  bool keeps(int edits)
  {
    while (m_kept < edits && m_process.waitForReadyRead(patienceMilliseconds)) read();
    return m_kept >= edits;
  }
  void kill()
  {
    m_process.kill();
    m_process.waitForFinished(patienceMilliseconds);
    read();
  }
  int kept() const { return m_kept; }
  int begun() const { return m_begun; }

private:
  void read()
  {
    while (m_process.canReadLine()) {
      const QList<QByteArray> words = m_process.readLine().trimmed().split(' ');
      if (words.size() == 2) (words[0] == "kept" ? m_kept : m_begun) = words[1].toInt();
    }
  }
  QProcess m_process;
  int m_kept = 0;
  int m_begun = 0;
};

TEST_F(AlignRecoveryTest, AKilledProgramLosesNoMoreThanTheEditInHand)
{
  Random random(11);
  for (int i = 0; i < 12; ++i) {
    Victim victim("killed.tif");
    ASSERT_TRUE(victim.keeps(1 + random.below(15)));
    victim.kill();
    open(stackFrom("killed.tif"));
    ASSERT_TRUE(asked);
    asked->restore();
    const float restored = module->getSlice(0).translationX;
    EXPECT_GE(restored, static_cast<float>(victim.kept()));
    EXPECT_LE(restored, static_cast<float>(victim.kept() + 1));
    for (const SliceInfo& slice : module->getSlices()) EXPECT_EQ(slice.translationX, restored);
    module->recovery().forget();
    EXPECT_TRUE(written());
    EXPECT_TRUE(files().isEmpty());
  }
}

TEST_F(AlignRecoveryTest, TwoProgramsWithTheSameDataLeaveEachOtherAlone)
{
  Victim victim("shared.tif");
  ASSERT_TRUE(victim.keeps(2));
  open(stackFrom("shared.tif"));
  EXPECT_FALSE(asked) << "what a running program has is no offer";
  edit(-1);
  EXPECT_TRUE(written());
  EXPECT_EQ(files().size(), 2);
  victim.kill();
  const McHandle<ZxAlignSlices> ours = module;
  open(stackFrom("shared.tif"));
  ASSERT_TRUE(asked);
  asked->restore();
  EXPECT_GE(module->getSlice(7).translationX, static_cast<float>(victim.kept()));
  ours->recovery().forget();
  EXPECT_TRUE(waitFor([&] { return !ours->recovery().isPending(); }));
  EXPECT_EQ(files().size(), 1);
}

} // namespace
