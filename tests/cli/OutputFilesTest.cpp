#include "OutputFiles.h"

#include "Failure.h"
#include "RunProgram.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using cli::OutputFiles;
using test::readFile;
using test::writeFile;

// A header, its voxels and the parameters beside them replace an input: whichever of them cannot be moved, in
// whatever order, the input is whole.
TEST(OutputFiles, ReplaceAllOfAVolumeOrNothing)
{
  for (const std::string blocked : {"", "in.mhd", "in.raw"}) {
    const test::Folder folder;
    for (const std::string name : {"in.mhd", "in.raw", "in.mhd.params.json"})
      writeFile(folder.file(name), "old " + name);
    {
      OutputFiles files;
      files.protect({folder.file("in.mhd")}, OutputFiles::Input::Replaceable);
      files.announceVolume(folder.file("in.mhd"), {{2, 2, 2}, 1, McPrimType::UInt8});
      files.write(folder.file("in.mhd"), [&](const std::string& path) {
        writeFile(path, "new in.mhd");
        writeFile(fs::path(path).replace_extension(".raw"), "new in.raw");
      });
      if (blocked.empty()) {
        files.commit();
      } else {
        // Nothing is moved over a folder.
        fs::remove(folder.file(blocked));
        fs::create_directory(folder.file(blocked));
        EXPECT_THROW(files.commit(), cli::Failure);
      }
    }
    for (const std::string name : {"in.mhd", "in.raw"}) {
      if (name == blocked) continue;
      EXPECT_EQ(readFile(folder.file(name)), (blocked.empty() ? "new " : "old ") + name) << blocked;
    }
    EXPECT_EQ(folder.contents().size(), blocked.empty() ? 2U : 3U);
  }
}

} // namespace
