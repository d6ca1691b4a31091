#include "AlignReport.h"

#include "io/Error.h"
#include "support/TestFolders.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>

namespace {

cli::AlignReport exampleReport()
{
  cli::AlignReport report;
  report.version = "9.8";
  report.inputs = {"a.tif", "broken \xff name.tif"};
  report.options = {{"levels", "3"}, {"background", "0"}};
  report.dimensions = {70, 50, 3};
  report.pairs = {{{1, 0, 1}, {0.1f, -12.7f, 3.3f, true}, 0.7, 0.9, 1.25, true},
                  {{2, 1, 1}, {2.0f, 0.0f, 0.0f, false}, 0.4, 0.6, 0.5, false}};
  report.transforms = {{}, {0.1f, -12.7f, 3.3f, true}, {2.0f, 0.0f, 0.0f, false}};
  report.seconds = {1.0, 2.0, 3.0, 4.0, 10.0};
  return report;
}

void removeSeconds(nlohmann::json& json)
{
  if (json.is_object())
    for (auto it = json.begin(); it != json.end();)
      it = it.key().find("seconds") != std::string::npos ? json.erase(it) : std::next(it);
  if (json.is_structured())
    for (auto& member : json) removeSeconds(member);
}

} // namespace

TEST(AlignReport, HoldsExactNumbersAndTotals)
{
  const nlohmann::json json = nlohmann::json::parse(cli::reportText(exampleReport()));
  EXPECT_EQ(json["pairs"][0]["tx"].get<float>(), 0.1f);
  EXPECT_EQ(json["pairs"][0]["ty"].get<float>(), -12.7f);
  EXPECT_EQ(json["pairs"][0]["angle_deg"].get<float>(), 3.3f);
  EXPECT_EQ(json["pairs"][0]["flip"], true);
  EXPECT_EQ(json["pairs"][1]["editable"], 2);
  EXPECT_EQ(json["totals"]["pairs"], 2);
  EXPECT_EQ(json["totals"]["quality_before"]["min"], 0.4);
  EXPECT_DOUBLE_EQ(json["totals"]["quality_after"]["mean"].get<double>(), 0.75);
  EXPECT_EQ(json["options"]["levels"], "3");
  EXPECT_EQ(json["dimensions"]["height"], 50);
  EXPECT_FALSE(json.contains("truth"));
}

TEST(AlignReport, SaysHowSureAMethodWasOfEachPair)
{
  cli::AlignReport report = exampleReport();
  EXPECT_FALSE(nlohmann::json::parse(cli::reportText(report))["pairs"][0].contains("confidence"));
  report.confidences = {cli::PairConfidence{0, 0.96875, ""},
                        cli::PairConfidence{0, 0.25, "nothing is shared"}};
  const nlohmann::json pairs = nlohmann::json::parse(cli::reportText(report))["pairs"];
  EXPECT_EQ(pairs[0]["confidence"], 0.96875);
  EXPECT_FALSE(pairs[0].contains("reason"));
  EXPECT_EQ(pairs[1]["matched_with"], 0);
  EXPECT_EQ(pairs[1]["reason"], "nothing is shared");
}

TEST(AlignReport, EqualRunsDifferInSecondsOnly)
{
  cli::AlignReport slow = exampleReport();
  slow.seconds = {9.0, 9.0, 9.0, 9.0, 36.0};
  for (auto& pair : slow.pairs) pair.seconds *= 7.0;
  nlohmann::json a = nlohmann::json::parse(cli::reportText(exampleReport()));
  nlohmann::json b = nlohmann::json::parse(cli::reportText(slow));
  EXPECT_NE(a, b);
  removeSeconds(a);
  removeSeconds(b);
  EXPECT_EQ(a, b);
}

TEST(AlignReport, RefusesAFolderThatDoesNotExistAndReplacesWhatIsThere)
{
  namespace fs = std::filesystem;
  const fs::path folder = fileInTestHome("report");
  fs::create_directories(folder);
  const std::string path = (folder / "report.json").string();
  std::ofstream(path) << std::string(100000, 'x');
  cli::writeReport(exampleReport(), path);
  std::ifstream file(path);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), cli::reportText(exampleReport()));
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1); // nothing is left beside it
  EXPECT_THROW(cli::writeReport(exampleReport(), (folder / "missing" / "report.json").string()), io::Error);
  fs::remove_all(folder);
}
