// The program as a process of its own, driven by scripts.
#include "cli/RunProgram.h"
#include "io/Volume.h"
#include "support/Volumes.h"

#include <gtest/gtest.h>

namespace {

using test::Folder;
using test::Outcome;

class BatchTest : public testing::Test {
protected:
  /// Runs a script in the folder.
  Outcome run(const std::string& script, std::vector<std::string> arguments = {}, long largestFile = -1)
  {
    test::writeFile(folder.file("script.tcl"), script);
    arguments.insert(arguments.begin(), {"-b", "script.tcl"});
    return test::run(
        {arguments, {{"LC_ALL", ""}, {"LC_NUMERIC", "de_DE.UTF-8"}}, folder.path(), largestFile});
  }
  /// A stack whose slices are ramps, each moved against the one before.
  void makeStack(const std::string& name)
  {
    const auto field = makeField<std::uint8_t>(
        {24, 18, 4}, 1, [](int x, int y, int k, int) { return 20 + 5 * (x + k) % 120 + 3 * y; });
    io::writeVolume(*field, folder.file(name));
  }

  Folder folder;
};

} // namespace

TEST_F(BatchTest, AlignsResamplesSavesAndFindsTheParametersAgain)
{
  makeStack("stack.nrrd");
  const Outcome outcome = run(R"(
    set stack [load [lindex $argv 0]]
    create ZxAlignSlices align
    align data connect $stack
    align fire
    align linearRange setValue 0 30
    align linearRange setValue 1 222.5
    align resampleMethod setValue Preview
    align fire
    puts [align linearRange getValue]
    align action hit 1
    set made [align result]
    puts "$made [$made save [lindex $argv 1] nrrd]"
    remove align $stack $made
    set again [load aligned.nrrd]
    puts "[$again getTypeId] [$again parameters get AlignIsApplied]"
    puts [objects]
  )",
                              {"stack.nrrd", "aligned"});
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "30.0 222.5\nstack.align aligned.nrrd\nZxRegScalarField3 1\naligned.nrrd\n");
  const auto original = io::readVolume({folder.file("stack.nrrd")});
  const auto aligned = io::readVolume({folder.file("aligned.nrrd")});
  EXPECT_EQ(valuesOf<std::uint8_t>(*aligned->getLattice()), valuesOf<std::uint8_t>(*original->getLattice()));
}

TEST_F(BatchTest, LabelsGoAlongAndStayLabels)
{
  makeStack("stack.nrrd");
  const auto labels = makeLabels<std::uint8_t>({24, 18, 4}, [](int x, int, int, int) { return x / 8; });
  io::writeVolume(*labels, folder.file("labels.tif"));
  const Outcome outcome = run(R"(
    create ZxAlignSlices m
    m data connect [load stack.nrrd]
    m fire
    puts [catch {m LabelField connect [load labels.tif]} message]
    puts $message
    m LabelField connect [load -labels labels.tif]
    m fire
    m action hit 1
    [m result 1] save out.tif
    puts [[load out.tif] getTypeId]
  )");
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, "1\nLabelField does not accept \"labels.tif\", which is a ZxRegScalarField3\n"
                         "ZxUniformLabelField3\n");
}

TEST_F(BatchTest, EndsWithTheStatusOfTheScript)
{
  EXPECT_EQ(run("catch {quit 7}").status, 7);
  EXPECT_EQ(run("exit").status, 0);
  const Outcome words = run("puts \"$argv0 $argc [lindex $argv 1]\"", {"a", "b \xC3\xA4", "--help"});
  EXPECT_EQ(words.out, "script.tcl 3 b \xC3\xA4\n");
  EXPECT_EQ(words.status, 0);

  const Outcome fault = run("proc f {} {\n  nothing here\n}\n\nf\n");
  EXPECT_EQ(fault.status, 1);
  EXPECT_TRUE(fault.err.starts_with("script.tcl:5: invalid command name \"nothing\"\n")) << fault.err;
  EXPECT_NE(fault.err.find("(procedure \"f\" line 2)"), std::string::npos) << fault.err;
  EXPECT_EQ(test::run({{"-b", "missing.tcl"}, {}, folder.path(), -1}).err,
            "missing.tcl: there is no such file\n");
}

TEST_F(BatchTest, OutputThatCannotBeWrittenIsAFailure)
{
  const Outcome outcome = run("close stdout; open /dev/full w; puts hello");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "orvel: Standard output could not be written: No space left on device.\n");
}

TEST_F(BatchTest, AWindowNeedsADisplay)
{
  for (const char* display : {"", ":9999"}) { // none, and one that does not answer
    const std::map<std::string, std::string> none{
        {"DISPLAY", display}, {"WAYLAND_DISPLAY", ""}, {"QT_QPA_PLATFORM", ""}};
    const Outcome outcome = test::run({{}, none, folder.path(), -1});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "orvel: There is no display for the window; orvel -b SCRIPT needs none.\n");
  }
}

TEST_F(BatchTest, DamagedFilesAndAFullDiskAreOneSentence)
{
  makeStack("stack.nrrd");
  test::writeFile(folder.file("damaged.nrrd"), test::readFile(folder.file("stack.nrrd")).substr(0, 300));
  EXPECT_TRUE(run("load damaged.nrrd").err.starts_with("script.tcl:1: Cannot read \"damaged.nrrd\": "));

  const auto before = folder.contents();
  const Outcome full = run("[load stack.nrrd] save stack.nrrd", {}, 1000);
  EXPECT_EQ(full.status, 1);
  EXPECT_EQ(full.err, "script.tcl:1: Cannot write \"stack.nrrd\": File too large.\n");
  auto after = folder.contents();
  after["script.tcl"] = before.at("script.tcl");
  EXPECT_EQ(after, before);
}

TEST_F(BatchTest, TheFirstCtrlCStopsAScriptThatNeverEnds)
{
  test::writeFile(folder.file("script.tcl"), "puts started\nwhile 1 {catch {error x}}\n");
  const Outcome outcome = test::runInterrupted({{"-b", "script.tcl"}, {}, folder.path(), -1}, "started");
  EXPECT_EQ(outcome.status, 130);
  EXPECT_NE(outcome.out.find("script.tcl: stopped by the user"), std::string::npos) << outcome.out;
}

TEST_F(BatchTest, TheWindowRunsItsScriptAndOpensItsFiles)
{
  makeStack("stack.nrrd");
  test::writeFile(folder.file("script.tcl"), R"(
    proc look {} {
      if {[objects] ne "stack.nrrd"} {after 10 look; return}
      quit 5
    }
    look
  )");
  const Outcome outcome = test::run({{"-s", "script.tcl", "stack.nrrd"},
                                     {{"QT_QPA_PLATFORM", "offscreen"}, {"XDG_RUNTIME_DIR", folder.path()}},
                                     folder.path(),
                                     -1});
  EXPECT_EQ(outcome.status, 5) << outcome.err;
}
