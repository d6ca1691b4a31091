#include "RunProgram.h"
#include "Stacks.h"

#include <gtest/gtest.h>

namespace {

using test::Outcome;
using test::run;

/// An argument of --plugin for one of the plug-ins that the tests of their discovery use.
std::string wanted(const std::string& name, const std::string& symbol, const std::string& library)
{
  return name + " " + symbol + " " + ZX_TEST_PLUGINS "/" + library + ".so";
}

std::size_t count(const std::string& text, const std::string& part)
{
  std::size_t n = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
  return n;
}

TEST(PlugIns, OfTheCommandLineFollowThoseOfTheStartUpScript)
{
  const test::Folder folder;
  test::writeFile(folder.file("start.tcl"), "lappend ::zxalign_autoalignmethod_plugins {" +
                                                wanted("S", "addTwins", "AddingPlugIn") + "}\n");
  const Outcome outcome = run({{"methods", "--plugin", wanted("T", "addThrower", "ThrowingPlugIn"),
                                "--plugin", wanted("A", "addShift", "AddingPlugIn")},
                               {{"ZX_STARTUP", folder.file("start.tcl")}},
                               {}});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(count(outcome.out, " Shift\n"), 2u);
  EXPECT_LT(outcome.out.find(" Shift\n"), outcome.out.find(" Thrower\n"));
  EXPECT_GT(outcome.out.rfind(" Shift\n"), outcome.out.find(" Unmakeable\n"));
}

TEST(PlugIns, ThatWereNotLoadedAreNamedAndTheOthersWork)
{
  const test::Folder folder;
  test::makePhantom(folder.file("in.nrrd"), 3, 64);
  const Outcome outcome =
      run({{"align", folder.file("in.nrrd"), "-o", folder.file("out.csv"), "--transforms-only", "--method",
            "Shift", "--plugin", wanted("Good", "addShift", "AddingPlugIn"), "--plugin",
            wanted("Bad", "addOther", "OtherVersionPlugIn"), "--plugin",
            wanted("Late", "addTwins", "AddingPlugIn")},
           {},
           {}});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(count(outcome.err, "was not loaded"), 2u) << outcome.err;
  EXPECT_EQ(count(outcome.err, "The plug-in Bad was not loaded: the library "), 1u) << outcome.err;
  EXPECT_EQ(count(outcome.err, "The plug-in Late was not loaded: "), 1u) << outcome.err;
  // From the reference 0 upwards the last slice goes with the one before it, then moves itself.
  EXPECT_NE(test::readFile(folder.file("out.csv")).find("2,6,-4,0,0"), std::string::npos);
}

TEST(PlugIns, ThatThrowEndInOneSentenceAndWriteNothing)
{
  const test::Folder folder;
  test::makePhantom(folder.file("in.nrrd"), 3, 64);
  const auto before = folder.contents();
  const Outcome outcome = run({{"align", folder.file("in.nrrd"), "-o", folder.file("out.nrrd"), "--method",
                                "Thrower", "--plugin", wanted("T", "addThrower", "ThrowingPlugIn")},
                               {},
                               {}});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(count(outcome.err, "no room for a spectrum"), 1u) << outcome.err;
  EXPECT_EQ(folder.contents(), before);
}

// A pair without memory for its method is not done: --resume begins with it.
TEST(PlugIns, ThatLackMemoryHaveFailed)
{
  const test::Folder folder;
  test::makePhantom(folder.file("in.nrrd"), 5, 64);
  std::vector<std::string> align = {
      "align",  "in.nrrd",     "-o", "out.nrrd", "--method",
      "Hungry", "--reference", "1",  "--plugin", wanted("T", "addHungry", "ThrowingPlugIn")};
  for (const std::string said : {"what is done is kept in out.nrrd.partial", "could not be allocated.\n"}) {
    const Outcome outcome = run({align, {}, folder.path()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("Not enough memory: 123456789 bytes"), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find(said), std::string::npos) << outcome.err;
    EXPECT_EQ(count(test::readFile(folder.file("out.nrrd.partial/state.json")), "\"editable\""), 1u);
    align.push_back("--resume");
  }
}

TEST(PlugIns, AStartUpScriptAtFaultIsAFailure)
{
  const test::Folder folder;
  test::writeFile(folder.file("start.tcl"), "set a 1\nset\n");
  const Outcome outcome = run({{"methods"}, {{"ZX_STARTUP", folder.file("start.tcl")}}, {}});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(count(outcome.err, "start.tcl failed in line 2: "), 1u) << outcome.err;
}

} // namespace
