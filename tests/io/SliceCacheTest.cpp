#include "SliceCache.h"

#include "io/Error.h"
#include "support/Random.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

namespace {

/// Slices of 3 x 2 bytes that are all k. Counts how often each is read.
class CountingReader final : public io::VolumeReader {
public:
  struct Log {
    std::vector<std::atomic<int>> reads;
    std::atomic<int> readers{0};
    std::atomic<bool> overlapped{false};
    std::atomic<int> bad{-1}; ///< slice that cannot be read
    explicit Log(int slices) : reads(static_cast<std::size_t>(slices)) {}
  };
  CountingReader(Log& log, int width = 3) : m_log(log)
  {
    m_info.shape.dims = {width, 2, static_cast<int>(log.reads.size())};
  }
  void readSlice(int k, void* dst) override
  {
    if (++m_log.readers > 1) m_log.overlapped = true;
    ++m_log.reads[static_cast<std::size_t>(k)];
    std::memset(dst, k, m_info.shape.sliceBytes());
    std::this_thread::yield();
    --m_log.readers;
    if (k == m_log.bad) throw io::Error("Cannot read \"x\": bad.");
  }
  bool readsInAnyOrder() const override { return true; }

private:
  Log& m_log;
};

/// True when slice k was delivered.
bool isRight(io::SliceCache& cache, int k)
{
  std::vector<unsigned char> slice(cache.info().shape.sliceBytes(), 255), rows(slice.size() / 2, 255);
  cache.readSlice(k, slice.data());
  cache.readRows(k, 1, 1, rows.data());
  const auto isK = [k](unsigned char value) { return value == k; };
  return std::all_of(slice.begin(), slice.end(), isK) && std::all_of(rows.begin(), rows.end(), isK);
}

} // namespace

TEST(ReadingOrder, FollowsNeighboursAndNotLeaps)
{
  const auto foreseen = [](std::initializer_list<int> asked) {
    io::ReadingOrder order(10);
    int next = -1;
    for (const int k : asked) next = order.next(k);
    return next;
  };
  EXPECT_EQ(foreseen({0}), 1);
  EXPECT_EQ(foreseen({9}), 8);
  EXPECT_EQ(foreseen({5}), -1);
  EXPECT_EQ(foreseen({5, 6}), 7);
  EXPECT_EQ(foreseen({5, 4}), 3);
  EXPECT_EQ(foreseen({5, 6, 6}), 7);
  EXPECT_EQ(foreseen({5, 4, 6}), 7); // the second of a pair first
  EXPECT_EQ(foreseen({5, 6, 2}), -1);
  EXPECT_EQ(foreseen({8, 9}), -1);
  EXPECT_EQ(foreseen({1, 0}), -1);
}

TEST(SliceCache, ReadsEachSliceOnceOnTheWayUpAndDown)
{
  constexpr int slices = 40;
  for (const bool up : {true, false}) {
    CountingReader::Log log(slices);
    io::SliceCache cache(std::make_unique<CountingReader>(log));
    std::vector<unsigned char> slice(6);
    for (int i = 0; i < slices; ++i) {
      const int k = up ? i : slices - 1 - i;
      cache.readSlice(k, slice.data());
      EXPECT_EQ(slice, std::vector<unsigned char>(6, static_cast<unsigned char>(k)));
    }
    for (int k = 0; k < slices; ++k) EXPECT_EQ(log.reads[static_cast<std::size_t>(k)], 1) << k;
    EXPECT_FALSE(log.overlapped);
  }
}

TEST(SliceCache, KeepsTheSliceOfThePairBefore)
{
  CountingReader::Log log(30);
  io::SliceCache cache(std::make_unique<CountingReader>(log));
  std::vector<unsigned char> slice(6);
  for (int k = 10; k < 29; ++k)
    for (const int of : {k, k + 1}) cache.readSlice(of, slice.data());
  for (std::size_t k = 13; k < 30; ++k) EXPECT_EQ(log.reads[k], 1) << k;
  // Pictures ask for rows: the slice that they are in is read once.
  std::vector<unsigned char> row(3);
  for (const int y : {0, 1, 0}) cache.readRows(2, y, 1, row.data());
  EXPECT_EQ(log.reads[2], 1);
}

TEST(SliceCache, ManyThreadsReadWhatTheyAskFor)
{
  for (const int width : {3, 1 << 18}) {
    CountingReader::Log log(width == 3 ? 60 : 9);
    io::SliceCache cache(std::make_unique<CountingReader>(log, width));
    std::atomic<int> wrong{0};
    std::vector<std::jthread> threads;
    for (unsigned t = 0; t < 6; ++t)
      threads.emplace_back([&, t] {
        Random random(t);
        const int slices = cache.info().shape.dims.slices;
        for (int i = 0; i < (width == 3 ? 300 : 60); ++i)
          if (!isRight(cache, t < 2 ? i % slices : static_cast<int>(random.next() % 60) % slices)) ++wrong;
      });
    threads.clear();
    EXPECT_EQ(wrong, 0);
    EXPECT_FALSE(log.overlapped);
  }
}

TEST(SliceCache, AFailureIsThatOfItsSliceAndIsTriedAgain)
{
  CountingReader::Log log(10);
  log.bad = 4;
  io::SliceCache cache(std::make_unique<CountingReader>(log));
  std::vector<unsigned char> slice(6);
  for (int k = 0; k < 4; ++k) cache.readSlice(k, slice.data());
  EXPECT_THROW(cache.readSlice(4, slice.data()), io::Error);
  EXPECT_THROW(cache.readRows(4, 0, 1, slice.data()), io::Error);
  EXPECT_TRUE(isRight(cache, 5));
  log.bad = -1;
  EXPECT_TRUE(isRight(cache, 4));
}

TEST(SliceCache, EndsWhileItReadsAhead)
{
  CountingReader::Log log(100);
  for (int i = 0; i < 50; ++i) {
    io::SliceCache cache(std::make_unique<CountingReader>(log, 5000));
    std::vector<unsigned char> slice(10000);
    for (int k = 0; k < i % 4; ++k) cache.readSlice(k, slice.data());
  }
  EXPECT_EQ(log.readers, 0);
}
