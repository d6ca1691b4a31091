#include "LandmarkTable.h"

#include "support/TestFolders.h"

#include <fstream>

#include <gtest/gtest.h>

namespace {

const std::string kHead = "slice,index,x,y\n";

/// A table of that text, under a name of its own.
std::string tableFile(const std::string& name, const std::string& text)
{
  const std::string path = fileInTestHome(name);
  std::ofstream(path, std::ios::binary) << text;
  return path;
}

TEST(LandmarkTable, TakesRowsInAnyOrder)
{
  const std::string path =
      tableFile("any-order.csv", "# a remark\r\n" + kHead + "1,0,-5, 6\n0,1,3,4\r\n0,0,1,2\n1,1,7,8");
  const std::vector<std::vector<ZxAlignPoint>> expected = {{{1, 2}, {3, 4}}, {{-5, 6}, {7, 8}}};
  std::vector<std::vector<ZxAlignPoint>> landmarks;
  EXPECT_EQ(readLandmarkTable(path, 2, landmarks), "");
  EXPECT_EQ(landmarks, expected);
}

TEST(LandmarkTable, SaysWhatIsWrong)
{
  const std::pair<std::string, std::string> cases[] = {
      {kHead, "holds no landmarks"},
      {"0,0,1,2\n", "line 1: the header row slice,index,x,y"},
      {kHead + "0,0,1\n", "line 2: a row has the 4 fields"},
      {kHead + "0,0,1,2.5\n", "line 2: \"2.5\" is no whole number for y"},
      {kHead + "2,0,1,2\n", "there is no slice 2; the stack has the slices 0 to 1"},
      {kHead + "0,-1,1,2\n", "line 2: an index counts from 0"},
      {kHead + "0,0,1,2\n0,0,3,4\n", "line 3: landmark 0 of slice 0 is named a second time"},
      {kHead + "0,0,2000000000,2\n", "far outside"},
      {kHead + "0,0,1,2\n0,1,3,4\n1,1,5,6\n", "does not name landmark 0 on slice 1"},
      {kHead + "0,0,1,2\n1,2000000000,5,6\n", "does not name landmark 1 on slice 0"}};
  for (const auto& [text, expected] : cases) {
    const std::string path = tableFile("wrong.csv", text);
    std::vector<std::vector<ZxAlignPoint>> landmarks;
    const std::string problem = readLandmarkTable(path, 2, landmarks);
    EXPECT_NE(problem.find(expected), std::string::npos) << problem;
    EXPECT_NE(problem.find(path), std::string::npos) << problem;
  }
}

} // namespace
