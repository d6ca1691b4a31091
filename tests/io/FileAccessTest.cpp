#include "io/FileAccess.h"
#include "IoTest.h"
#include "zx/ZxFileAccess.h"
#include "zx/ZxThreadReports.h"

namespace {

using State = ZxFileOutcome::State;

/// Wants to stop when a file is about to be replaced, not before.
class StopAtTheEnd : public ZxWorkArea {
public:
  bool beginLastStep() override { return false; }
};

class FileAccessTest : public iotest::FolderTest {
protected:
  FileAccessTest() { io::installFileAccess(); }
  ~FileAccessTest() override { ZxFileAccess::setTheFileAccess(nullptr); }

  static ZxFileAccess& access() { return *ZxFileAccess::getTheFileAccess(); }
  static McHandle<ZxUniformLabelField3> labels()
  {
    const ZxLatticeShape shape{{5, 3, 2}, 1, McPrimType::UInt16, ZxCoordType::Uniform};
    auto lattice = ZxLabelLattice3::create(shape);
    for (int k = 0; k < 2; ++k)
      for (int i = 0; i < 15; ++i)
        static_cast<std::uint16_t*>(lattice->beginWrite(k))[i] = static_cast<std::uint16_t>(100 * k + i);
    return mcMake<ZxUniformLabelField3>(std::move(lattice));
  }
  McHandle<ZxSpatialData> read(const std::string& name, ZxReadAs as = ZxReadAs::Automatic)
  {
    const ZxFileOutcome outcome = access().read({{path(name)}, as, ZxUnequalSlices::Refuse});
    EXPECT_EQ(outcome.problem, "");
    return outcome.data;
  }
};

} // namespace

TEST_F(FileAccessTest, WhatWasSavedAsLabelsComesBackAsLabels)
{
  const auto saved = labels();
  for (const char* name : {"a.nrrd", "a.mha", "a.tif", "a.mrc"}) {
    ASSERT_EQ(access().write(*saved, path(name)).problem, "");
    const auto again = read(name);
    ASSERT_TRUE(again->isOfType(ZxUniformLabelField3::getClassTypeId())) << name;
    EXPECT_EQ(iotest::allBytes(*again), iotest::allBytes(*saved));
    EXPECT_EQ(again->getFileName(), path(name));
    EXPECT_FALSE(again->isUnsaved());
    const auto field = read(name, ZxReadAs::Field);
    ASSERT_TRUE(field->isOfType(ZxField3::getClassTypeId())) << name;
    ASSERT_EQ(access().write(*field, path(name)).problem, "");
    EXPECT_TRUE(read(name)->isOfType(ZxField3::getClassTypeId())) << "it was saved as a field, " << name;
    EXPECT_TRUE(read(name, ZxReadAs::Labels)->isOfType(ZxUniformLabelField3::getClassTypeId()));
  }
}

TEST_F(FileAccessTest, EveryFormatThatItNamesIsWrittenAndRead)
{
  const auto volume = iotest::makeVolume({{4, 3, 1}, 1, McPrimType::UInt8, ZxCoordType::Uniform});
  const auto readable = access().readableFormats();
  for (const ZxFileFormat& format : access().writableFormats())
    for (const std::string& ending : format.endings) {
      const std::string name = access().pathFor("stack", ending);
      EXPECT_EQ(access().checkWritable(*volume, path("x" + ending)), "");
      ASSERT_EQ(access().write(*volume, path("x" + ending)).problem, "");
      EXPECT_EQ(iotest::allBytes(*read("x" + ending)), iotest::allBytes(*volume)) << ending;
      const auto lists = [&](const ZxFileFormat& f) {
        return std::find(f.endings.begin(), f.endings.end(), ending) != f.endings.end();
      };
      EXPECT_TRUE(std::any_of(readable.begin(), readable.end(), lists)) << ending;
      EXPECT_TRUE(name.starts_with("stack."));
    }
  EXPECT_EQ(access().pathFor("a.NII.GZ", "nifti"), "a.NII.GZ");
  EXPECT_EQ(access().pathFor("a.png", "MRC"), "a.png.mrc");
  EXPECT_EQ(access().pathFor("a.png", "gif"), "");
}

TEST_F(FileAccessTest, AFailureIsASentenceAndTheOldFileStays)
{
  iotest::writeBytes(path("short.nrrd"),
                     "NRRD0004\ntype: uint8\ndimension: 3\nsizes: 9 9 9\nencoding: raw\n\nxx");
  const ZxFileOutcome damaged = access().read({{path("short.nrrd")}, {}, {}});
  EXPECT_EQ(damaged.state, State::Failed);
  EXPECT_TRUE(damaged.problem.starts_with("Cannot read \"" + path("short.nrrd") + "\": ")) << damaged.problem;
  EXPECT_EQ(access().read({{}, {}, {}}).problem, "There is no input.");

  const auto volume = iotest::makeVolume({{4, 3, 2}, 1, McPrimType::UInt8, ZxCoordType::Uniform});
  volume->touch();
  iotest::writeBytes(path("old.nrrd"), "old");
  EXPECT_EQ(access().write(*volume, path("none/x.nrrd")).state, State::Failed);
  StopAtTheEnd area;
  {
    const ZxThreadReports reports(area, {});
    EXPECT_EQ(access().write(*volume, path("old.nrrd")).state, State::Stopped);
  }
  EXPECT_TRUE(volume->isUnsaved());
  EXPECT_EQ(iotest::readBytes(path("old.nrrd")), "old");
  EXPECT_EQ(names(), (std::vector<std::string>{"old.nrrd", "short.nrrd"}));
  EXPECT_EQ(access().write(*volume, path("old.nrrd")).state, State::Done);
  EXPECT_FALSE(volume->isUnsaved());
}
