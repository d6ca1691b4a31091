#include "Stacks.h"
#include "io/Volume.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

namespace {

using test::Outcome;
using test::run;
using test::writeFile;

/// Runs that must end in one sentence and status 1, and leave everything as it was.
class Refusals : public testing::Test {
protected:
  void SetUp() override { test::makePhantom(folder.file("in.nrrd"), 3, 48); }

  void expectRefusal(const std::vector<std::string>& arguments, const std::string& reason,
                     long largestFile = -1)
  {
    const auto before = folder.contents();
    const Outcome outcome = run({arguments, {}, folder.path(), largestFile});
    const std::string command = testing::PrintToString(arguments);
    EXPECT_EQ(outcome.status, 1) << command;
    EXPECT_EQ(outcome.out, "") << command;
    EXPECT_EQ(outcome.err.find("zxalign: "), 0u) << command << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << command << outcome.err;
    EXPECT_NE(outcome.err.find(reason), std::string::npos) << command << outcome.err;
    EXPECT_EQ(folder.contents(), before) << command;
  }
  test::Folder folder;
};

TEST_F(Refusals, FilesThatAreMissingEmptyTruncatedOrDamaged)
{
  expectRefusal({"align", "missing.tif", "-o", "out.nrrd"}, "missing.tif");
  for (const std::string ending : {".tif", ".nrrd", ".nhdr", ".mrc", ".mha", ".mhd", ".nii"}) {
    const std::string whole = folder.file("whole" + ending), cut = folder.file("cut" + ending);
    const auto field = test::noiseField({{31, 17, 4}, 1, McPrimType::UInt8});
    io::writeVolume(*field, whole);
    const std::string bytes = test::readFile(whole);
    for (const std::size_t length : {std::size_t{0}, bytes.size() / 3, bytes.size() - 700}) {
      if (length > bytes.size()) continue; // a header beside its data is shorter than that
      writeFile(cut, bytes.substr(0, length));
      expectRefusal({"align", "cut" + ending, "-o", "out.nrrd"}, "cut" + ending);
    }
    writeFile(cut, "no volume at all, whatever its name says");
    expectRefusal({"align", "cut" + ending, "-o", "out.nrrd"}, "cut" + ending);
  }
}

TEST_F(Refusals, StacksThatCannotBeAligned)
{
  io::writeVolume(*test::noiseField({{20, 10, 1}, 1, McPrimType::UInt8}), folder.file("one.nrrd"));
  expectRefusal({"align", "one.nrrd", "-o", "out.nrrd"}, "At least 2 slices required");
  expectRefusal({"quality", "one.nrrd"}, "At least 2 slices required");
  expectRefusal({"resample", "in.nrrd", "-o", "out.nrrd"}, "carries no alignment");
  expectRefusal({"transforms", "in.nrrd"}, "carries no alignment");

  // The file is as long as its header says, and holds nothing but a hole.
  writeFile(folder.file("huge.nrrd"), "NRRD0004\ntype: uint8\ndimension: 3\nsizes: 60000 60000 1000\n"
                                      "encoding: raw\n\n");
  const std::uintmax_t header = std::filesystem::file_size(folder.file("huge.nrrd"));
  std::error_code error;
  std::filesystem::resize_file(folder.file("huge.nrrd"), header + 3600000000000u, error);
  if (!error) expectRefusal({"align", "huge.nrrd", "-o", "out.nrrd"}, "memory");
  expectRefusal({"align", "in.nrrd", "-o", "out.nrrd", "--size", "1000000", "1000000"}, "memory");
}

TEST_F(Refusals, CompanionsOfOtherSizes)
{
  test::writeLabels(folder.file("labels.nrrd"), {48, 47, 3});
  for (const std::string option : {"--mask", "--labels"}) {
    std::vector<std::string> arguments = {"align", "in.nrrd", "-o", "out.nrrd", option, "labels.nrrd"};
    if (option == "--labels") arguments.insert(arguments.end(), {"--labels-out", "lo.nrrd"});
    expectRefusal(arguments, "labels.nrrd has 48 x 47 x 3 voxels, but in.nrrd has 48 x 48 x 3");
  }
  writeFile(folder.file("start.csv"), test::identityTable(4));
  expectRefusal({"align", "in.nrrd", "-o", "out.nrrd", "--start-from", "start.csv"}, "has 4 slices");
  expectRefusal({"resample", "in.nrrd", "-o", "out.nrrd", "--transforms", "start.csv"}, "has 4 slices");
  expectRefusal({"align", "in.nrrd", "-o", "out.nrrd", "--start-from", "in.nrrd"}, "no alignment to start");
  test::makePhantom(folder.file("other.nrrd"), 3, 50);
  ASSERT_EQ(run({{"align", "other.nrrd", "-o", "o.mha", "--transforms-only"}, {}, folder.path()}).status, 0);
  expectRefusal({"align", "in.nrrd", "-o", "out.nrrd", "--start-from", "o.mha"}, "50 x 50 x 3");
}

TEST_F(Refusals, ArgumentsThatMakeNoSense)
{
  const std::vector<std::string> align = {"align", "in.nrrd", "-o", "out.nrrd"};
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"--method", "magic"},
       "no method \"magic\"; available: gravity (0), least-squares (1), landmarks (2), edges (3)"},
      {{"--set", "speed=9"}, "speed"},
      {{"--set", "iterations"}, "NAME=VALUE"},
      {{"--iterations", "-3"}, "iterations"},
      {{"--reference", "3"}, "slices 0 to 2"},
      {{"--reference", "-1"}, "slices 0 to 2"},
      {{"--window", "1", "x"}, "two numbers"},
      {{"--window", "10", "5"}, "MIN"},
      {{"--mask", ""}, "--mask is empty"},
      {{"--picture", "p.jpg"}, ".png"},
      {{"--background", "red"}, "background"},
      {{"--size", "0", "10"}, "--size"},
      {{"--size", "10", "10", "--auto-size"}, "auto-size"},
      {{"--labels", "in.nrrd"}, "labels-out"},
      {{"--interpolation", "cubic"}, "interpolation"},
      {{"--threads", "0"}, "threads"},
      {{"--neighbours", "3"}, "add --method robust, or leave out --neighbours"},
      {{"--scale", "2"}, "--scale of align only reduces: it takes 1, 1/2, 1/3"},
      {{"--scale", "1/0"}, "--scale of align only reduces"},
      {{"--sideways"}, "sideways"}};
  for (const auto& [more, reason] : cases) {
    std::vector<std::string> arguments = align;
    arguments.insert(arguments.end(), more.begin(), more.end());
    expectRefusal(arguments, reason);
  }
  expectRefusal({}, "--help");
  expectRefusal({"straighten"}, "--help");
}

TEST_F(Refusals, OutputsThatCannotBeWritten)
{
  for (const std::string output : {"in.nrrd/out.nrrd", "nowhere/out.nrrd", "out.xyz", "in.nrrd/"})
    expectRefusal({"align", "in.nrrd", "-o", output}, output.substr(0, output.find('/')));
  for (const std::string output : {"in.nrrd/x", "nowhere/x", "."}) {
    expectRefusal({"align", "in.nrrd", "-o", "out.nrrd", "--report", output}, output);
    expectRefusal({"align", "in.nrrd", "-o", "out.nrrd", "--picture", output}, output);
    expectRefusal({"align", "in.nrrd", "--transforms-only", "-o", output + ".csv/t.csv"}, output);
  }
  expectRefusal({"align", "in.nrrd", "-o", "out.nrrd", "--report", "in.nrrd"}, "it is an input");
  expectRefusal({"align", "in.nrrd", "-o", "x.nrrd", "--report", "./x.nrrd"}, "two outputs");

  std::filesystem::create_directory(folder.file("slices"));
  io::writeVolume(*test::noiseField({{48, 40, 3}, 1, McPrimType::UInt8}), folder.file("slices/s%02d.tif"));
  expectRefusal({"align", "slices", "-o", "slices/"}, "slices");
  expectRefusal({"align", "slices/s00.tif", "slices/s01.tif", "slices/s02.tif", "-o", "slices/s%02d.tif"},
                "mixed");
}

// The report is small enough for the limit and is written last; it must not appear alone either.
TEST_F(Refusals, FullDiskLeavesNothing)
{
  for (const std::string output : {"out.nrrd", "out.tif", "out.mrc", "out.mha", "out.nii", "s_%02d.tif"})
    expectRefusal({"align", "in.nrrd", "-o", output, "--report", "r.json"}, output.substr(0, 2), 2000);
}

// All else fits: what has been computed is kept for "--resume".
TEST_F(Refusals, APictureOrAReportThatDoesNotFit)
{
  const auto expectProblem = [&](const std::vector<std::string>& outputs, const std::string& problem,
                                 long limit) {
    std::vector<std::string> arguments = {"align", "in.nrrd"};
    arguments.insert(arguments.end(), outputs.begin(), outputs.end());
    const Outcome outcome = run({arguments, {}, folder.path(), limit});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err.find("zxalign: " + problem + " could not be written: File too large"), 0u)
        << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    EXPECT_FALSE(std::filesystem::exists(folder.file(outputs.back())));
  };
  expectProblem({"-o", "out.nrrd", "--picture", "p.png"}, "The picture p.png", 16000);
  test::makePhantom(folder.file("in.nrrd"), 90, 16);
  expectProblem({"-o", "t.csv", "--transforms-only", "--report", "r.json"}, "The report r.json", 20000);
}

TEST_F(Refusals, DamagedFilesOfTheCollection)
{
  const std::string collection = test::sharedData("readers/malformed_made");
  if (collection.empty()) GTEST_SKIP() << "the shared test data are not there";
  const auto cases = nlohmann::json::parse(test::readFile(collection + "/cases.json"));
  for (const auto& [name, about] : cases.items())
    if (about["expect"].get<std::string>().starts_with("refuse"))
      expectRefusal({"quality", collection + "/" + name}, name);
}

// Headers with their voxels in a file beside them may meet in that file.
TEST_F(Refusals, DataFilesOfOtherVolumes)
{
  test::makePhantom(folder.file("s.nhdr"), 3, 32);
  const std::string voxels = test::readFile(folder.file("s.raw"));
  expectRefusal({"align", "s.nhdr", "-o", "s.mhd"}, "s.raw");
  expectRefusal({"align", "in.nrrd", "-o", "s.mhd"}, "s.raw");
  expectRefusal({"align", "in.nrrd", "-o", "o.nhdr", "--report", "o.raw"}, "o.raw");
  EXPECT_EQ(test::readFile(folder.file("s.raw")), voxels);
}

} // namespace
