#include "Stacks.h"
#include "io/Volume.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>

namespace {

using test::Folder;
using test::Outcome;
using test::readFile;
using test::run;
using test::voxelsOf;
using test::writeFile;

/// Runs in a folder of its own and expects success.
class Commands : public testing::Test {
protected:
  std::string expectRun(const std::vector<std::string>& arguments)
  {
    const Outcome outcome = run({arguments, {}, folder.path()});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return outcome.out;
  }
  Folder folder;
};

// Odd, unequal sizes; every type that a volume can have in memory and that passes through float unchanged.
TEST_F(Commands, ResampleByIdentityGivesTheInputBack)
{
  writeFile(folder.file("id.csv"), test::identityTable(3));
  const std::pair<McPrimType, int> types[] = {{McPrimType::UInt8, 1}, {McPrimType::UInt16, 1},
                                              {McPrimType::Int16, 1}, {McPrimType::Int32, 1},
                                              {McPrimType::Float, 1}, {McPrimType::UInt8, 4}};
  for (const auto& [type, values] : types) {
    const auto field = test::noiseField({{37, 22, 3}, values, type});
    io::writeVolume(*field, folder.file("in.nrrd"));
    expectRun(
        {"resample", "in.nrrd", "-o", "out.nrrd", "--transforms", "id.csv", "--interpolation", "nearest"});
    EXPECT_TRUE(voxelsOf(folder.file("out.nrrd")) == test::voxels(*field)) << mcNameOf(type) << values;
    EXPECT_EQ(io::readInfo({folder.file("out.nrrd")}).shape.primType, type);
  }
}

TEST_F(Commands, ResampleSaysOnceWhatHoldsForEverySlice)
{
  writeFile(folder.file("id.csv"), test::identityTable(3));
  io::writeVolume(*test::noiseField({{37, 22, 3}, 1, McPrimType::UInt8}), folder.file("in.nrrd"));
  const Outcome outcome = run(
      {{"resample", "in.nrrd", "-o", "out.nrrd", "--transforms", "id.csv", "--background", "most-frequent"},
       {},
       folder.path()});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.err.find("\nBackground color slice 0: "), std::string::npos) << outcome.err;
  EXPECT_NE(outcome.err.find(" (and so on, 3 slices)\n"), std::string::npos) << outcome.err;
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 2) << outcome.err;
}

// The slice is turned by a quarter and shifted unequally, so that a wrong sense, axis or centre shows.
TEST_F(Commands, ResampleMovesSlicesAsTheTableSays)
{
  const auto field = test::noiseField({{9, 5, 2}, 1, McPrimType::UInt8});
  io::writeVolume(*field, folder.file("in.nrrd"));
  writeFile(folder.file("t.csv"), "slice,tx,ty,angle_deg,flip\n0,0,0,0,0\n1,2,-1,90,1\n");
  expectRun({"resample", "in.nrrd", "-o", "out.nrrd", "--transforms", "t.csv", "--interpolation", "nearest",
             "--background", "7"});
  const std::string before = test::voxels(*field), after = voxelsOf(folder.file("out.nrrd"));
  for (int y = 0; y < 5; ++y)
    for (int x = 0; x < 9; ++x) {
      // c = (4, 2): u = p' - t - c, turned back, mirrored.
      const int ux = x - 2 - 4, uy = y + 1 - 2;
      const int sx = 4 + uy, sy = 2 + ux;
      const bool inside = sx >= 0 && sx < 9 && sy >= 0 && sy < 5;
      const char expected = inside ? before[static_cast<std::size_t>(45 + sy * 9 + sx)] : '\7';
      EXPECT_EQ(after[static_cast<std::size_t>(45 + y * 9 + x)], expected) << x << " " << y;
    }
}

TEST_F(Commands, StoredAlignmentIsThatOfTheTableAndResamplesAlike)
{
  test::makePhantom(folder.file("in.tif"), 5, 80);
  test::writeLabels(folder.file("labels.nrrd"), {80, 80, 5});
  const std::vector<std::string> labels = {"--labels", "labels.nrrd", "--labels-out", "l1.nrrd"};
  expectRun({"align", "in.tif", "-o", "direct.nrrd", "--auto-size", "--background", "9", labels[0], labels[1],
             labels[2], labels[3]});
  expectRun({"align", "in.tif", "-o", "table.csv", "--transforms-only"});
  for (const std::string stored : {"stored.nrrd", "stored.mha", "stored.tif", "stored.mrc", "stored.nii"}) {
    expectRun({"align", "in.tif", "-o", stored, "--transforms-only"});
    EXPECT_EQ(expectRun({"transforms", stored}), readFile(folder.file("table.csv"))) << stored;
    EXPECT_TRUE(voxelsOf(folder.file(stored)) == voxelsOf(folder.file("in.tif"))) << stored;
  }
  expectRun({"resample", "stored.tif", "-o", "later.nrrd", "--auto-size", "--background", "9", "--labels",
             "labels.nrrd", "--labels-out", "l2.nrrd"});
  EXPECT_TRUE(voxelsOf(folder.file("direct.nrrd")) == voxelsOf(folder.file("later.nrrd")));
  EXPECT_TRUE(voxelsOf(folder.file("l1.nrrd")) == voxelsOf(folder.file("l2.nrrd")));
  // The result knows how it was made, in the frame of the slices before it.
  EXPECT_EQ(expectRun({"transforms", "direct.nrrd"}), readFile(folder.file("table.csv")));
  EXPECT_NE(expectRun({"info", "direct.nrrd"}).find("has been applied"), std::string::npos);
}

// A start that no search would find: it shows in the result because nothing is searched.
TEST_F(Commands, StartsFromATableOrAVolume)
{
  test::makePhantom(folder.file("in.nrrd"), 4, 64);
  const std::string start =
      "slice,tx,ty,angle_deg,flip\n0,1.25,-3,0,0\n1,0,0,5,0\n2,20,0,0,1\n3,0,-0.5,-1,0\n";
  writeFile(folder.file("start.csv"), start);
  const std::vector<std::string> search = {"--iterations", "0", "--transforms-only"};
  expectRun(
      {"align", "in.nrrd", "-o", "a.csv", "--start-from", "start.csv", search[0], search[1], search[2]});
  EXPECT_NE(readFile(folder.file("a.csv")).find(start), std::string::npos);
  expectRun(
      {"align", "in.nrrd", "-o", "b.mha", "--start-from", "start.csv", search[0], search[1], search[2]});
  expectRun({"align", "in.nrrd", "-o", "c.csv", "--start-from", "b.mha", search[0], search[1], search[2]});
  expectRun({"align", "b.mha", "-o", "d.csv", search[0], search[1], search[2]});
  EXPECT_EQ(readFile(folder.file("c.csv")), readFile(folder.file("a.csv")));
  EXPECT_EQ(readFile(folder.file("d.csv")), readFile(folder.file("a.csv")));
}

/// What is left of a report when everything that depends on the clock is gone.
nlohmann::json withoutSeconds(nlohmann::json json)
{
  for (auto it = json.begin(); json.is_structured() && it != json.end();) {
    if (json.is_object() && it.key().find("seconds") != std::string::npos) {
      it = json.erase(it);
    } else {
      *it = withoutSeconds(*it);
      ++it;
    }
  }
  return json;
}

TEST_F(Commands, NumberOfThreadsChangesNothing)
{
  test::makePhantom(folder.file("in.nrrd"), 4, 100);
  for (const std::string threads : {"1", "2"}) {
    std::filesystem::create_directory(folder.file(threads));
    const Outcome outcome =
        run({{"align", "../in.nrrd", "-o", "out.nrrd", "--report", "r.json", "--threads", threads},
             {},
             folder.file(threads)});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
  }
  EXPECT_TRUE(readFile(folder.file("1/out.nrrd")) == readFile(folder.file("2/out.nrrd")));
  EXPECT_EQ(withoutSeconds(nlohmann::json::parse(readFile(folder.file("1/r.json")))),
            withoutSeconds(nlohmann::json::parse(readFile(folder.file("2/r.json")))));
}

TEST_F(Commands, QualityRisesAndIsListedInOrderOrWorstFirst)
{
  test::makePhantom(folder.file("in.nrrd"), 4, 80);
  test::writeLabels(folder.file("mask.nrrd"), {80, 80, 4});
  const std::string before = expectRun({"quality", "in.nrrd"});
  EXPECT_EQ(before.find("slices 0 - 1  quality "), 0u);
  EXPECT_EQ(std::count(before.begin(), before.end(), '\n'), 3);
  EXPECT_EQ(std::count(before.begin(), before.end(), '*'), 1);
  const std::string sorted = expectRun({"quality", "in.nrrd", "--worst"});
  EXPECT_EQ(sorted.find(" *\n"), sorted.find('\n') - 2);
  EXPECT_NE(expectRun({"quality", "in.nrrd", "--mask", "mask.nrrd"}), before);
  EXPECT_NE(expectRun({"quality", "in.nrrd", "--window", "100", "120"}), before);
}

TEST_F(Commands, ReportPictureAndSlicesAreWritten)
{
  test::makePhantom(folder.file("in.nrrd"), 3, 64, {"--truth", folder.file("truth.csv")});
  const std::string said = expectRun({"align", "in.nrrd", "-o", "aligned_%03d.png", "--report", "r.json",
                                      "--picture", "p.png", "--truth", "truth.csv", "--size", "70", "61"});
  EXPECT_NE(said.find("2 pairs aligned"), std::string::npos);
  EXPECT_NE(said.find("Distance from the truth"), std::string::npos);
  const auto report = nlohmann::json::parse(readFile(folder.file("r.json")));
  EXPECT_EQ(report["pairs"].size(), 2u);
  EXPECT_EQ(report["options"]["width"], "70");
  EXPECT_EQ(readFile(folder.file("p.png")).substr(1, 3), "PNG");
  const auto info = io::readInfo(
      {folder.file("aligned_000.png"), folder.file("aligned_001.png"), folder.file("aligned_002.png")});
  EXPECT_EQ(info.shape.dims, (ZxDims{70, 61, 3}));
}

TEST_F(Commands, WriteOverTheirInputOnlyWhereThatIsSafe)
{
  test::makePhantom(folder.file("in.nrrd"), 3, 64);
  expectRun({"align", "in.nrrd", "-o", "in.nrrd"});
  EXPECT_NE(expectRun({"info", "in.nrrd"}).find("has been applied"), std::string::npos);
}

TEST_F(Commands, HelpNamesEverySetting)
{
  const std::string help = expectRun({"align", "--help"});
  for (const char* text :
       {"--start-from", "rotation-step", "degrees", "least-squares (1)", "1000", "--threads"})
    EXPECT_NE(help.find(text), std::string::npos) << text;
  EXPECT_EQ(expectRun({"--version"}).find("zxalign "), 0u);
}

// The language of the surroundings decides neither about what is written nor about what is understood.
TEST_F(Commands, DecimalCommaOfTheSurroundingsChangesNothing)
{
  std::filesystem::create_directory(folder.file("locales"));
  const std::string make =
      "localedef -i de_DE -f UTF-8 " + folder.file("locales/de_DE.UTF-8") + " >/dev/null 2>&1";
  if (std::system(make.c_str()) != 0) GTEST_SKIP() << "no locale with a decimal comma can be made here";
  test::makePhantom(folder.file("in.nrrd"), 3, 64);
  const std::map<std::string, std::string> comma = {{"LOCPATH", folder.file("locales")},
                                                    {"LC_ALL", "de_DE.UTF-8"}};
  for (const bool withComma : {false, true}) {
    const std::string name = withComma ? "comma" : "point";
    std::filesystem::create_directory(folder.file(name));
    const std::vector<std::string> arguments = {"align",
                                                "../in.nrrd",
                                                "-o",
                                                "out.nrrd",
                                                "--window",
                                                "10.5",
                                                "200.25",
                                                "--report",
                                                "r.json",
                                                "--picture",
                                                "p.png",
                                                "--set",
                                                "translation-step=0.5"};
    const Outcome outcome =
        run({arguments, withComma ? comma : std::map<std::string, std::string>{}, folder.file(name)});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
  }
  EXPECT_TRUE(readFile(folder.file("comma/out.nrrd")) == readFile(folder.file("point/out.nrrd")));
  EXPECT_TRUE(readFile(folder.file("comma/p.png")) == readFile(folder.file("point/p.png")));
  EXPECT_EQ(withoutSeconds(nlohmann::json::parse(readFile(folder.file("comma/r.json")))),
            withoutSeconds(nlohmann::json::parse(readFile(folder.file("point/r.json")))));
}

TEST_F(Commands, InterruptionSaysHowFarItCame)
{
  // Without reduced levels a search takes long enough to be stopped.
  test::makePhantom(folder.file("in.nrrd"), 16, 1024);
  const Outcome outcome = test::runInterrupted(
      {{"align", "in.nrrd", "-o", "out.nrrd", "--report", "r.json", "--levels", "0"}, {}, folder.path()},
      "Aligning slice");
  EXPECT_EQ(outcome.status, 130);
  EXPECT_NE(outcome.out.find(" of 15 pairs; "), std::string::npos) << outcome.out;
  EXPECT_NE(outcome.out.find(" % "), std::string::npos);
  EXPECT_EQ(folder.contents().count("out.nrrd") + folder.contents().count("r.json"), 0u);
}

} // namespace
