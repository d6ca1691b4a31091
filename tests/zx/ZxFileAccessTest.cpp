#include "zx/ZxFileAccess.h"
#include "zx/ZxField3.h"
#include "zx/ZxWorkArea.h"

#include <gtest/gtest.h>

namespace {

/// Five slices of one pixel that stay in a file; counts how many were read.
class SlicesInFile : public ZxVoxelSource {
public:
  explicit SlicesInFile(int& count) : m_count(count) {}
  bool readSlice(int k, void* dst) override
  {
    ++m_count;
    *static_cast<std::uint8_t*>(dst) = static_cast<std::uint8_t>(20 - 3 * k);
    return true;
  }
  bool readBox(const ZxBox3i&, void*) override { return false; }
  const void* sliceInMemory(int) const override { return nullptr; }
  void* beginWrite(int) override { return nullptr; }
  bool endWrite(int) override { return false; }

private:
  int& m_count;
};

class LargeFiles : public ZxFileAccess {
public:
  std::vector<ZxFileFormat> readableFormats() const override { return {}; }
  std::vector<ZxFileFormat> writableFormats() const override { return {}; }
  std::string checkWritable(const ZxSpatialData&, const std::string&) const override { return {}; }

  int slicesRead = 0;

private:
  ZxFileOutcome readVolume(const ZxReadRequest&) override
  {
    const ZxLatticeShape shape{{1, 1, 5}, 1, McPrimType::UInt8, ZxCoordType::Uniform};
    auto lattice = std::make_unique<ZxLattice3>(shape, std::make_unique<SlicesInFile>(slicesRead));
    return {ZxFileOutcome::State::Done, mcMake<ZxExternalData>(std::move(lattice)), {}};
  }
  ZxFileOutcome writeVolume(const ZxSpatialData&, const std::string&) override { return {}; }
};

/// A person who presses Stop while events are handled for the n-th time.
class StopAt : public ZxWorkArea {
public:
  explicit StopAt(int n) : m_n(n) { setTheWorkArea(this); }
  ~StopAt() override { setTheWorkArea(nullptr); }
  void processPendingEvents() override { ++m_handled; }
  bool interruptRequested() override { return m_n > 0 && m_handled >= m_n; }
  int handled() const { return m_handled; }

private:
  int m_n;
  int m_handled = 0;
};

} // namespace

// A volume in a file is gone through for its range: events are handled after each slice.
TEST(ZxFileAccess, FindsTheRangeOfWhatStaysInItsFileAndCanBeStopped)
{
  LargeFiles files;
  {
    StopAt never(0);
    const ZxFileOutcome outcome = files.read({{"folder/big.mrc"}, {}, {}});
    ASSERT_TRUE(outcome.data);
    EXPECT_EQ(outcome.data->getFileName(), "folder/big.mrc");
    EXPECT_EQ(never.handled(), 5);
    EXPECT_EQ(never.getProgressFraction(), 1.0f);
    float min = 0, max = 0;
    outcome.data->getLattice()->getRange(min, max);
    EXPECT_EQ(std::pair(min, max), std::pair(8.0f, 20.0f));
    EXPECT_EQ(files.slicesRead, 5) << "once for all";
  }
  for (const int last : {2, 5}) {
    StopAt stopping(last);
    files.slicesRead = 0;
    const ZxFileOutcome outcome = files.read({{"folder/big.mrc"}, {}, {}});
    EXPECT_EQ(outcome.state, ZxFileOutcome::State::Stopped);
    EXPECT_FALSE(outcome.data);
    EXPECT_EQ(outcome.problem, "Stopped by the user.");
    EXPECT_EQ(files.slicesRead, last);
  }
}
