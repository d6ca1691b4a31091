#include "zx/ZxFileJob.h"
#include "support/Console.h"
#include "support/Patience.h"
#include "support/Volumes.h"
#include "zx/ZxObjectPool.h"
#include "zx/ZxWorkArea.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <future>

namespace {

using namespace std::chrono_literals;

/// Voxels that say when they are given back.
class WatchedVoxels : public ZxVoxelSource {
public:
  explicit WatchedVoxels(std::promise<void>& gone) : m_gone(gone) {}
  ~WatchedVoxels() override { m_gone.set_value(); }
  bool readSlice(int k, void* dst) override
  {
    *static_cast<std::uint8_t*>(dst) = static_cast<std::uint8_t>(7 + k);
    return true;
  }
  bool readBox(const ZxBox3i&, void*) override { return false; }
  const void* sliceInMemory(int) const override { return nullptr; }
  void* beginWrite(int) override { return &m_voxel; }
  bool endWrite(int) override { return true; }

private:
  std::promise<void>& m_gone;
  std::uint8_t m_voxel = 0;
};

/// Reads and writes that a test holds up where it wants.
class HeldFiles : public ZxFileAccess {
public:
  std::vector<ZxFileFormat> readableFormats() const override { return {}; }
  std::vector<ZxFileFormat> writableFormats() const override { return {}; }
  std::string checkWritable(const ZxSpatialData&, const std::string&) const override { return {}; }

  /// Waits until the job is at its gate: nothing but open() gets it further.
  void waitUntilHeld() { m_held.get_future().wait(); }
  void open() { m_open.set_value(); }

  std::promise<void> gone; ///< the voxels were given back
  std::string failure;
  std::string writtenValue; ///< of the parameter "State"
  enum class Gate { BeforeLastStep, InLastStep } gate = Gate::BeforeLastStep;

private:
  void hold()
  {
    m_held.set_value();
    m_open.get_future().wait();
  }

  ZxFileOutcome readVolume(const ZxReadRequest&) override
  {
    ZxMessage::getTheMsg()->printf("The file is odd.");
    ZxWorkArea::getTheWorkArea()->setProgressFraction(0.25f);
    const ZxLatticeShape shape{{1, 1, 3}, 1, McPrimType::UInt8, ZxCoordType::Uniform};
    auto lattice = std::make_unique<ZxLattice3>(shape, std::make_unique<WatchedVoxels>(gone));
    hold();
    if (!failure.empty()) return {ZxFileOutcome::State::Failed, {}, failure};
    return {ZxFileOutcome::State::Done, ZxField3::create(std::move(lattice)), {}};
  }

  ZxFileOutcome writeVolume(const ZxSpatialData& data, const std::string&) override
  {
    const bool isLast = gate == Gate::InLastStep;
    EXPECT_TRUE(!isLast || ZxWorkArea::getTheWorkArea()->beginLastStep());
    hold();
    data.parameters().findString("State", writtenValue);
    if (!isLast && !ZxWorkArea::getTheWorkArea()->beginLastStep())
      return {ZxFileOutcome::State::Stopped, {}, {}};
    return {};
  }

  std::promise<void> m_held;
  std::promise<void> m_open;
};

class ZxFileJobTest : public testing::Test {
protected:
  ZxFileJobTest()
  {
    auto owned = std::make_unique<HeldFiles>();
    files = owned.get();
    ZxFileAccess::setTheFileAccess(std::move(owned));
  }
  ~ZxFileJobTest() override
  {
    EXPECT_TRUE(ZxFileJob::stopAll(patience));
    ZxObjectPool::getThePool().clear();
    ZxFileAccess::setTheFileAccess(nullptr);
  }

  static std::unique_ptr<ZxFileJob> reading() { return ZxFileJob::read({{"folder/big.tif"}, {}, {}}); }

  Console console;
  HeldFiles* files;
};

} // namespace

TEST_F(ZxFileJobTest, GivesWhatWasReadAndItsRemarksWhenItIsFinished)
{
  const auto job = reading();
  files->waitUntilHeld();
  EXPECT_EQ(job->state(), ZxFileJob::State::Running);
  EXPECT_EQ(job->progress().text, "Reading big.tif");
  EXPECT_EQ(job->progress().fraction, 0.25f);
  EXPECT_FALSE(job->finish());
  files->open();
  ASSERT_TRUE(job->wait(patience));
  EXPECT_EQ(console.take(), Lines()) << "remarks wait for the thread of the objects";
  const McHandle<ZxSpatialData> data = job->finish();
  ASSERT_TRUE(data);
  EXPECT_EQ(console.take(), Lines{"The file is odd."});
  EXPECT_EQ(data->getFileName(), "folder/big.tif");
  float min = 0, max = 0;
  data->getLattice()->getRange(min, max);
  EXPECT_EQ(std::pair(min, max), std::pair(7.0f, 9.0f));
}

TEST_F(ZxFileJobTest, IsStoppedAtOnceAndDropsWhatComesLater)
{
  const auto job = reading();
  files->waitUntilHeld();
  job->stop();
  EXPECT_EQ(job->state(), ZxFileJob::State::Stopped) << "although its thread still reads";
  EXPECT_FALSE(ZxFileJob::stopAll(1ms)) << "its thread still reads";
  EXPECT_FALSE(job->finish());
  EXPECT_EQ(console.take(), (Lines{"The file is odd.", "Reading big.tif was stopped."}));
  files->open();
  files->gone.get_future().wait();
}

TEST_F(ZxFileJobTest, MayBeDeletedWhileItReads)
{
  auto job = reading();
  files->waitUntilHeld();
  job.reset();
  files->open();
  files->gone.get_future().wait();
}

TEST_F(ZxFileJobTest, SaysWhyItFailedAndCallsBackInTheEventLoop)
{
  int argc = 0;
  QCoreApplication application(argc, nullptr);
  files->failure = "Cannot read \"big.tif\": it is cut short.";
  const auto job = reading();
  bool ended = false;
  job->whenEnded([&] { ended = true; });
  files->open();
  ASSERT_TRUE(job->wait(patience));
  EXPECT_FALSE(ended);
  const QDeadlineTimer deadline(patience);
  while (!ended && !deadline.hasExpired()) QCoreApplication::processEvents();
  EXPECT_TRUE(ended);
  EXPECT_FALSE(job->finish());
  EXPECT_EQ(console.take(), (Lines{"The file is odd.", files->failure}));
}

TEST_F(ZxFileJobTest, DataThatAreWrittenStayAsTheyAre)
{
  ZxObjectPool& pool = ZxObjectPool::getThePool();
  const auto data = makeField<std::uint8_t>({2, 1, 1}, 1, [](auto...) { return 5; });
  data->parameters().setString("State", "before");
  data->touch();
  pool.add(data.get());
  const auto job = ZxFileJob::write(data, "out/a.nrrd");
  files->waitUntilHeld();
  EXPECT_TRUE(data->isInUse());
  EXPECT_EQ(data->getLattice()->beginWrite(0), nullptr);
  EXPECT_FALSE(pool.remove(data.get()));
  EXPECT_EQ(console.take(), Lines{"stack.tif is being written and cannot be removed before that is done."});
  data->parameters().setString("State", "after");
  data->touch();
  files->open();
  ASSERT_TRUE(job->wait(patience));
  EXPECT_EQ(job->finish(), McHandle<ZxSpatialData>(data));
  EXPECT_EQ(files->writtenValue, "before");
  EXPECT_TRUE(data->isUnsaved()) << "it has changed meanwhile";
  EXPECT_EQ(data->getFileName(), "out/a.nrrd");
  ASSERT_TRUE(ZxFileJob::stopAll(patience));
  EXPECT_NE(data->getLattice()->beginWrite(0), nullptr);
  EXPECT_TRUE(pool.remove(data.get()));
}

TEST_F(ZxFileJobTest, AWriteIsStoppedUntilItsLastStep)
{
  for (const auto gate : {HeldFiles::Gate::BeforeLastStep, HeldFiles::Gate::InLastStep}) {
    auto owned = std::make_unique<HeldFiles>();
    files = owned.get();
    files->gate = gate;
    ZxFileAccess::setTheFileAccess(std::move(owned));
    const auto data = makeField<std::uint8_t>({2, 1, 1}, 1, [](auto...) { return 5; });
    data->touch();
    const auto job = ZxFileJob::write(data, "a.nrrd");
    files->waitUntilHeld();
    job->stop();
    const bool tooLate = gate == HeldFiles::Gate::InLastStep;
    EXPECT_EQ(job->isRunning(), tooLate);
    files->open();
    ASSERT_TRUE(job->wait(patience));
    EXPECT_EQ(job->state(), tooLate ? ZxFileJob::State::Done : ZxFileJob::State::Stopped);
    job->finish();
    EXPECT_EQ(data->isUnsaved(), !tooLate);
    ASSERT_TRUE(ZxFileJob::stopAll(patience));
  }
}
