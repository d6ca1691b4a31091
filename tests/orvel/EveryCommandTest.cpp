// One script that uses every command of the module, in the program itself; and the scripts that are shipped.
#include "AlignCommands.h"
#include "cli/RunProgram.h"
#include "io/Volume.h"
#include "support/Volumes.h"

#include <gtest/gtest.h>

namespace {

using test::Folder;
using test::Outcome;

const std::string kHere = std::string(ZX_SOURCE_DIR) + "/tests/orvel/";
const std::string kScripts = std::string(ZX_SOURCE_DIR) + "/samples/scripts/";

class EveryCommandTest : public testing::Test {
protected:
  static Outcome run(const std::string& script, std::vector<std::string> arguments, const Folder& folder)
  {
    arguments.insert(arguments.begin(), {"-b", script});
    return test::run({arguments, {{"DISPLAY", ""}}, folder.path()});
  }
  /// Four slices with a bright rectangle, which slips by two pixels from slice to slice.
  void makeStack(const std::string& name)
  {
    const auto field = makeField<std::uint8_t>({24, 18, 4}, 1, [](int x, int y, int k, int) {
      const int left = 4 + 2 * k;
      return x >= left && x < left + 9 && y >= 5 && y < 14 ? 120 + 7 * (x - left) + 5 * y : 30 + y;
    });
    io::writeVolume(*field, folder.file(name));
  }
  void makeLandmarks()
  {
    std::string table = "slice,index,x,y\n";
    for (int k = 0; k < 4; ++k)
      table += std::to_string(k) + ",0," + std::to_string(4 + 2 * k) + ",5\n" + std::to_string(k) + ",1," +
               std::to_string(12 + 2 * k) + ",13\n";
    test::writeFile(folder.file("landmarks.csv"), table);
  }

  Folder folder;
};

/// Without the lines that tell times.
std::string withoutTimes(const std::string& text)
{
  std::string kept;
  for (std::size_t begin = 0, end = 0; begin < text.size(); begin = end + 1) {
    end = std::min(text.find('\n', begin), text.size());
    const std::string line = text.substr(begin, end - begin);
    if (!line.starts_with("Time =")) kept += line + "\n";
  }
  return kept;
}

} // namespace

TEST_F(EveryCommandTest, AnswersAsBefore)
{
  makeStack("stack.nrrd");
  makeLandmarks();
  const Outcome outcome = run(kHere + "every-command.tcl", {}, folder);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, test::readFile(kHere + "every-command.txt"));
  EXPECT_EQ(withoutTimes(outcome.err), test::readFile(kHere + "every-command.messages.txt"));
}

TEST_F(EveryCommandTest, LeavesNoCommandOut)
{
  const std::string script = test::readFile(kHere + "every-command.tcl");
  for (const AlignCommand& command : alignCommands())
    for (const std::string_view name : {command.name, command.alias})
      if (!name.empty()) {
        const std::string line = "\n> " + std::string(name);
        EXPECT_TRUE(script.find(line + "\n") != std::string::npos ||
                    script.find(line + " ") != std::string::npos)
            << name;
      }
}

TEST_F(EveryCommandTest, TheShippedScriptsAlignStacks)
{
  makeStack("stack.nrrd");
  makeLandmarks();
  const Outcome one = run(kScripts + "align-stack.tcl", {"stack.nrrd", "aligned.tif"}, folder);
  EXPECT_EQ(one.status, 0) << one.err;
  EXPECT_NE(one.out.find("written to aligned.tif"), std::string::npos) << one.out;

  const Outcome marked = run(kScripts + "align-landmarks.tcl",
                             {"stack.nrrd", "landmarks.csv", "editor.png", "marked.nrrd"}, folder);
  EXPECT_EQ(marked.status, 0) << marked.err;
  EXPECT_NE(marked.out.find("2 landmarks on each slice"), std::string::npos) << marked.out;
  // The rectangle lies where it lies in the middle slice, in all of them.
  const auto field = io::readVolume({folder.file("marked.nrrd")});
  const std::vector<std::uint8_t> voxels = valuesOf<std::uint8_t>(*field->getLattice());
  for (std::size_t k = 0; k < 4; ++k) EXPECT_EQ(voxels[k * 24 * 18 + 9 * 24 + 9], voxels[9 * 24 + 9]) << k;
  EXPECT_GT(test::readFile(folder.file("editor.png")).size(), 1000u);

  test::writeFile(folder.file("broken.nrrd"), "NRRD0004\nnonsense\n");
  const Outcome all = run(kScripts + "align-folder.tcl", {".", "*.nrrd", "out"}, folder);
  EXPECT_EQ(all.status, 1) << "one file is damaged";
  EXPECT_NE(all.err.find("broken.nrrd"), std::string::npos) << all.err;
  EXPECT_NE(all.out.find("\nstack.nrrd\t4\t0."), std::string::npos) << all.out;
  EXPECT_FALSE(test::readFile(folder.file("out/stack.nrrd")).empty());
}
