#include "FormatTesting.h"
#include "zx/ZxWorkArea.h"

#include <sys/resource.h>

#include <csignal>

namespace io::testing {
namespace {

struct Target {
  std::unique_ptr<Format> format;
  std::string name;
};

std::vector<Target> targets()
{
  std::vector<Target> all;
  for (const char* name : {"d.nrrd", "d.nhdr"}) all.push_back({makeNrrdFormat(), name});
  for (const char* name : {"d.mrc", "d.mrc.gz"}) all.push_back({makeMrcFormat(), name});
  for (const char* name : {"d.mha", "d.mhd"}) all.push_back({makeMetaImageFormat(), name});
  for (const char* name : {"d.nii", "d.nii.gz"}) all.push_back({makeNiftiFormat(), name});
  return all;
}

/// Files cannot grow beyond a size while one of these lives, as on a full disk.
class FileSizeLimit {
public:
  explicit FileSizeLimit(rlim_t bytes)
  {
    getrlimit(RLIMIT_FSIZE, &m_before);
    const rlimit limit{bytes, m_before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit()
  {
    setrlimit(RLIMIT_FSIZE, &m_before);
    std::signal(SIGXFSZ, m_handler);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
  rlimit m_before{};
  void (*m_handler)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

// The limit falls into the last slice in one case and is all but met in the other: only the last bytes, which
// wait in a buffer until the file is closed, do not fit.
TEST(SliceWriter, AFullDiskEndsInOneSentence)
{
  const TemporaryFolder folder;
  const auto volume = makeVolume(McPrimType::Int16, 1, {64, 64, 4});
  for (const Target& target : targets()) {
    SCOPED_TRACE(target.name);
    write(*target.format, *volume, folder.file(target.name));
    const bool pair = target.name.ends_with("hd") || target.name.ends_with("hdr");
    const auto size = std::filesystem::file_size(folder.file(pair ? "d.raw" : target.name));
    for (const auto limit : {size - 3000, size - 1}) {
      const FileSizeLimit full(limit);
      try {
        write(*target.format, *volume, folder.file(target.name));
        ADD_FAILURE() << "written in spite of the limit";
      } catch (const Error& error) {
        EXPECT_NE(std::string(error.what()).find("Cannot write"), std::string::npos) << error.what();
        EXPECT_NE(std::string(error.what()).find("/d."), std::string::npos) << error.what();
      }
    }
  }
}

TEST(SliceWriter, DataBesideAHeaderMayHaveOddNames)
{
  const TemporaryFolder folder;
  const auto volume = makeVolume(McPrimType::UInt16);
  for (const Target& target : targets()) {
    const bool pair = target.name.ends_with(".nhdr") || target.name.ends_with(".mhd");
    for (const char* stem : {"LIST", "50% a 1 2", "a.b", ""}) {
      if (!pair) continue;
      const std::string path = folder.file(stem + target.name.substr(1));
      write(*target.format, *volume, path);
      EXPECT_TRUE(voxelsOf(*target.format->open(path)) == voxelsOf(*volume)) << path;
    }
  }
}

class Stopping : public ZxWorkArea {
public:
  Stopping() { setTheWorkArea(this); }
  ~Stopping() override { setTheWorkArea(nullptr); }
  bool interruptRequested() override { return ++asked > 2; }
  int asked = 0;
};

TEST(SliceWriter, StopsBetweenSlices)
{
  const TemporaryFolder folder;
  const auto volume = makeVolume(McPrimType::Float, 1, {5, 4, 9});
  for (const Target& target : targets()) {
    Stopping area;
    EXPECT_THROW(write(*target.format, *volume, folder.file(target.name)), Interrupted) << target.name;
    EXPECT_EQ(area.asked, 3);
  }
}

} // namespace
} // namespace io::testing
