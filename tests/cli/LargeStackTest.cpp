#include "Stacks.h"
#include "io/Volume.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kLimitsWork = false; // their own memory is larger than any limit
#else
constexpr bool kLimitsWork = true;
#endif

constexpr std::uintmax_t kSlice = 1024 * 1024;
constexpr int kSlices = 640;
// Address space, which is more than the memory in use: libraries, stacks of threads, room of allocators.
constexpr long kLimit = 200l << 20;

/// A file as long as its header says whose slices but a few are holes: black, and no blocks on the disk.
bool makeSparseStack(const std::string& path)
{
  test::writeFile(path, "NRRD0004\ntype: uint8\ndimension: 3\nsizes: 1024 1024 640\nencoding: raw\n\n");
  const std::uintmax_t header = std::filesystem::file_size(path);
  std::error_code error;
  std::filesystem::resize_file(path, header + kSlices * kSlice, error);
  return !error;
}

// The stack is more than three times as large as all memory that the program may have.
TEST(LargeStack, NeedsTheMemoryOfAFewSlices)
{
  if (!kLimitsWork) GTEST_SKIP() << "sanitizers need more memory than the limit";
  const test::Folder folder;
  if (!makeSparseStack(folder.file("in.nrrd"))) GTEST_SKIP() << "no file of that length can be made here";
  ASSERT_GT(kSlices * kSlice, 3 * static_cast<std::uintmax_t>(kLimit));
  const auto expectRun = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--threads", "2"});
    test::Run limited{arguments, {}, folder.path()};
    limited.largestMemory = kLimit;
    const test::Outcome outcome = test::run(limited);
    EXPECT_EQ(outcome.status, 0) << testing::PrintToString(arguments) << outcome.err;
  };
  expectRun({"align", "in.nrrd", "-o", "t.csv", "--transforms-only", "--iterations", "1"});
  expectRun({"align", "in.nrrd", "-o", "s.csv", "--transforms-only", "--scale", "1/8"});
  EXPECT_EQ(test::readFile(folder.file("t.csv")), test::readFile(folder.file("s.csv")));
  for (const std::string ending : {".nrrd", ".tif"})
    expectRun({"resample", "in.nrrd", "-o", "out" + ending, "--transforms", "t.csv", "--size", "256", "256",
               "--background", "9"});
  EXPECT_EQ(io::readInfo({folder.file("out.tif")}).shape.dims, (ZxDims{256, 256, kSlices}));
}

} // namespace
