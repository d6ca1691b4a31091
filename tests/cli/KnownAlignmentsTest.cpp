#include "RunProgram.h"
#include "TransformTable.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace {

using test::Folder;
using test::Outcome;
using test::run;

/// Transforms that align found for a stack.
std::vector<ZxAlignTransform> aligned(std::vector<std::string> inputs, const std::vector<std::string>& more)
{
  const Folder folder;
  std::vector<std::string> arguments = {"align"};
  arguments.insert(arguments.end(), inputs.begin(), inputs.end());
  arguments.insert(arguments.end(), more.begin(), more.end());
  arguments.insert(arguments.end(), {"--transforms-only", "-o", folder.file("t.csv")});
  const Outcome outcome = run({arguments, {}, {}});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  return outcome.status == 0 ? cli::readTransformTable(folder.file("t.csv"))
                             : std::vector<ZxAlignTransform>(inputs.size());
}

// One section of a brain against copies of it that were shifted to the right and down and turned: to come
// back they move to the left and up.
TEST(KnownAlignments, ShiftedAndTurnedCopiesComeBack)
{
  const std::string folder = test::sharedData("readers/metaimage");
  if (folder.empty()) GTEST_SKIP() << "the shared test data are not there";
  const std::string picture = folder + "/BrainProtonDensitySlice";
  const std::pair<std::string, ZxAlignTransform> cases[] = {{"Shifted13x17y", {-13, -17, 0, false}},
                                                            {"R10X13Y17", {-15.8f, -14.5f, 10, false}},
                                                            {"Rotated10", {0, 0, 10, false}}};
  for (const auto& [name, expected] : cases) {
    const auto found = aligned({picture + "Border20.png", picture + name + ".png"}, {"--reference", "0"});
    EXPECT_EQ(found[0], ZxAlignTransform()) << name;
    EXPECT_NEAR(found[1].tx, expected.tx, 2.0) << name;
    EXPECT_NEAR(found[1].ty, expected.ty, 2.0) << name;
    EXPECT_NEAR(found[1].angleDegrees, expected.angleDegrees, 1.0) << name;
  }
}

/// The table of the motions that a stack was disturbed by; they are also what puts its slices back.
void writeTruth(const std::string& description, const std::string& path)
{
  const auto json = nlohmann::json::parse(test::readFile(description));
  std::vector<ZxAlignTransform> truth;
  for (const auto& slice : json["transforms"]) {
    const auto& t = slice["applied"];
    truth.push_back({t["tx"].get<float>(), t["ty"].get<float>(), t["angle_deg"].get<float>(), false});
  }
  cli::writeTransformTable(truth, json["width"], json["height"], path);
}

class DisturbedStacks : public testing::TestWithParam<const char*> {};

TEST_P(DisturbedStacks, ComeBackWithinAPixelAndAHalf)
{
  const std::string name = GetParam();
  const std::string stack = test::sharedData("jitter/" + name);
  if (stack.empty()) GTEST_SKIP() << "the shared test data are not there";
  const Folder folder;
  writeTruth(stack.substr(0, stack.rfind('.')) + ".json", folder.file("truth.csv"));
  const Outcome outcome = run({{"align", stack, "--transforms-only", "-o", folder.file("t.csv"), "--truth",
                                folder.file("truth.csv"), "--report", folder.file("r.json")},
                               {},
                               {}});
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  const auto report = nlohmann::json::parse(test::readFile(folder.file("r.json")));
  EXPECT_LT(report["truth"]["mean"].get<double>(), 1.5) << outcome.out;
  RecordProperty("mean_pixels", report["truth"]["mean"].dump());
}

INSTANTIATE_TEST_SUITE_P(Jitter, DisturbedStacks,
                         testing::Values("em_fibsem_gray8.nrrd", "mri_t1_gray8.tif",
                                         "mri_macaque_gray16.nrrd", "mri_colour_rgb8.nrrd"),
                         [](const auto& stack) {
                           const std::string name = stack.param;
                           return name.substr(0, name.rfind('.'));
                         });

} // namespace
