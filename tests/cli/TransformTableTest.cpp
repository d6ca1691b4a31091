#include "TransformTable.h"

#include "RunProgram.h"
#include "io/Error.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

std::string refusal(const std::string& path, const std::string& text)
{
  test::writeFile(path, text);
  try {
    cli::readTransformTable(path);
  } catch (const io::Error& error) {
    return error.what();
  }
  return "accepted";
}

// Numbers that a fixed number of digits would change.
TEST(TransformTable, ReadsBackExactlyWhatItWrites)
{
  const std::vector<ZxAlignTransform> transforms = {
      {0.1f, -2.0f / 3.0f, 359.99997f, true},
      {std::numeric_limits<float>::min(), std::numeric_limits<float>::max(), -0.0f, false},
      {16777217.0f, -1e-30f, std::numeric_limits<float>::denorm_min(), true}};
  const test::Folder folder;
  cli::writeTransformTable(transforms, 61, 40, folder.file("t.csv"));
  EXPECT_EQ(cli::readTransformTable(folder.file("t.csv"), 61, 40), transforms);
  EXPECT_THROW(cli::readTransformTable(folder.file("t.csv"), 40, 61), io::Error); // they turn elsewhere
  EXPECT_NE(test::readFile(folder.file("t.csv")).find("(30, 20)"), std::string::npos);
}

TEST(TransformTable, ReadsTablesOfSpreadsheets)
{
  const test::Folder folder;
  test::writeFile(folder.file("t.csv"), "# a remark\r\n\r\nslice,tx,ty,angle_deg,flip\r\n0, 1.5 ,-2e1,0,0\r\n"
                                        "1,0,0,-90,1");
  const std::vector<ZxAlignTransform> expected = {{1.5f, -20.0f, 0.0f, false}, {0.0f, 0.0f, -90.0f, true}};
  EXPECT_EQ(cli::readTransformTable(folder.file("t.csv")), expected);
}

TEST(TransformTable, NamesTheLineThatIsWrong)
{
  const test::Folder folder;
  const std::string head = "slice,tx,ty,angle_deg,flip\n";
  const std::pair<std::string, std::string> cases[] = {{head, "holds no transforms"},
                                                       {"0,1,2,3,0\n", "line 1"},
                                                       {head + "0,1,2,3\n", "line 2"},
                                                       {head + "0,1,2,3,0,0\n", "line 2"},
                                                       {head + "0,1,2,3,0\n2,1,2,3,0\n", "line 3"},
                                                       {head + "\n0,1,x,3,0\n", "line 3"},
                                                       {head + "0,nan,2,3,0\n", "line 2"},
                                                       {head + "0,1e99,2,3,0\n", "line 2"},
                                                       {head + "0,1,2,3,2\n", "line 2"},
                                                       {std::string(5000, 'x'), "no table"},
                                                       {std::string("\x89PNG\0\0", 6), "no table"}};
  for (const auto& [text, expected] : cases)
    EXPECT_NE(refusal(folder.file("t.csv"), text).find(expected), std::string::npos)
        << text.substr(0, 60) << "\n"
        << refusal(folder.file("t.csv"), text);
}

} // namespace
