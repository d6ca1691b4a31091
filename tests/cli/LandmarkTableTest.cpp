#include "LandmarkTable.h"

#include "RunProgram.h"
#include "io/Error.h"

#include <gtest/gtest.h>

namespace {

const std::string kHead = "slice,index,x,y\n";

TEST(LandmarkTable, TakesRowsInAnyOrder)
{
  const test::Folder folder;
  test::writeFile(folder.file("l.csv"), "# a remark\r\n" + kHead + "1,0,-5, 6\n0,1,3,4\r\n0,0,1,2\n1,1,7,8");
  const std::vector<std::vector<ZxAlignPoint>> expected = {{{1, 2}, {3, 4}}, {{-5, 6}, {7, 8}}};
  EXPECT_EQ(cli::readLandmarkTable(folder.file("l.csv"), 2), expected);
}

TEST(LandmarkTable, SaysWhatIsWrong)
{
  const test::Folder folder;
  const std::string path = folder.file("l.csv");
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
    test::writeFile(path, text);
    try {
      cli::readLandmarkTable(path, 2);
      ADD_FAILURE() << "accepted: " << text;
    } catch (const io::Error& error) {
      EXPECT_NE(std::string(error.what()).find(expected), std::string::npos) << error.what();
      EXPECT_NE(std::string(error.what()).find(path), std::string::npos) << error.what();
    }
  }
}

} // namespace
