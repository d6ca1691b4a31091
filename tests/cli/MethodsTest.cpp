#include "Stacks.h"
#include "TransformTable.h"
#include "io/Volume.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using test::Folder;
using test::Outcome;
using test::run;

/// Two slices of 64 x 48: a bar and a knob, the second one turned by a quarter and shifted.
void writeBar(const std::string& path)
{
  const ZxLatticeShape shape{{64, 48, 2}, 1, McPrimType::UInt8};
  auto lattice = ZxLattice3::create(shape);
  for (int k = 0; k < 2; ++k) {
    auto* pixel = static_cast<std::uint8_t*>(lattice->beginWrite(k));
    for (int y = 0; y < 48; ++y)
      for (int x = 0; x < 64; ++x) {
        // Slice 1 shows at (32 + 3 + v, 24 - 2 - u) what slice 0 shows at (32 + u, 24 + v).
        const int u = k == 0 ? x - 32 : 22 - y;
        const int v = k == 0 ? y - 24 : x - 35;
        const bool bar = std::abs(u) < 14 && std::abs(v) < 5;
        const bool knob = u > 6 && u < 15 && v > 2 && v < 10;
        *pixel++ = bar || knob ? 250 : 0;
      }
    lattice->endWrite(k);
  }
  io::writeVolume(*ZxField3::create(std::move(lattice)), path);
}

class Methods : public testing::Test {
protected:
  void SetUp() override { writeBar(folder.file("bar.nrrd")); }

  Outcome align(const std::vector<std::string>& more)
  {
    std::vector<std::string> arguments = {"align", "bar.nrrd", "-o", "t.csv", "--transforms-only"};
    arguments.insert(arguments.end(), {"--reference", "0"});
    arguments.insert(arguments.end(), more.begin(), more.end());
    const Outcome outcome = run({arguments, {}, folder.path()});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return outcome;
  }
  void expectFound(double degreesOff, double pixelsOff)
  {
    const std::vector<ZxAlignTransform> found = cli::readTransformTable(folder.file("t.csv"));
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0], ZxAlignTransform());
    // In the aligned frame a place of slice 1 is turned about (32, 24) by -90 degrees and moved to slice 0.
    EXPECT_NEAR(std::remainder(static_cast<double>(found[1].angleDegrees) + 90.0, 360.0), 0.0, degreesOff);
    EXPECT_NEAR(found[1].tx, -2.0, pixelsOff);
    EXPECT_NEAR(found[1].ty, -3.0, pixelsOff);
  }
  Folder folder;
};

TEST_F(Methods, AreListedInTheOrderOfTheirIds)
{
  const Outcome outcome = run({{"methods"}, {}, folder.path()});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out.find("0 CenterAlignMethod        gravity\n"
                             "1 OptimizeAlignMethod      least-squares\n"
                             "2 LandmarkAlignMethod      landmarks\n"
                             "3 EdgeDetectionAlignMethod edges\n"),
            0u)
      << outcome.out;
}

TEST_F(Methods, GravityByAnyOfItsNames)
{
  for (const std::string name : {"gravity", "CenterAlignMethod", "0"}) {
    align({"--method", name});
    expectFound(0.5, 0.5);
  }
}

TEST_F(Methods, LandmarksOfATable)
{
  // Places of slice 0 from (32, 24): (10, -8), (-4, 8), (14, 12).
  test::writeFile(folder.file("l.csv"), "slice,index,x,y\n0,0,42,16\n0,1,28,32\n0,2,46,36\n"
                                        "1,0,27,12\n1,1,43,26\n1,2,47,8\n");
  EXPECT_EQ(align({"--method", "landmarks", "--landmarks", "l.csv"}).err, "");
  expectFound(1e-3, 1e-3);
  align({"--method", "landmarks"}); // the landmarks of every volume: the same on all slices
  EXPECT_EQ(cli::readTransformTable(folder.file("t.csv"))[1], ZxAlignTransform());

  // They are stored with the alignment and found again.
  run({{"align", "bar.nrrd", "-o", "stored.mha", "--transforms-only", "--method", "2", "--landmarks",
        "l.csv"},
       {},
       folder.path()});
  const Outcome again = run({{"align", "stored.mha", "-o", "t.csv", "--transforms-only", "--method", "2",
                              "--reference", "0", "--start-from", "stored.mha"},
                             {},
                             folder.path()});
  EXPECT_EQ(again.status, 0) << again.err;
  const auto found = cli::readTransformTable(folder.file("t.csv"));
  EXPECT_NEAR(
      std::remainder(static_cast<double>(found[1].angleDegrees - found[0].angleDegrees) + 90.0, 360.0), 0.0,
      1e-3);

  test::writeFile(folder.file("l.csv"), "slice,index,x,y\n0,0,1,1\n");
  const Outcome refused = run(
      {{"align", "bar.nrrd", "-o", "x.csv", "--transforms-only", "--landmarks", "l.csv"}, {}, folder.path()});
  EXPECT_EQ(refused.status, 1);
  EXPECT_NE(refused.err.find("does not name landmark 0 on slice 1"), std::string::npos) << refused.err;
}

TEST_F(Methods, EdgesSayThatTheyChangeTheInput)
{
  const Outcome outcome = align({"--method", "edges", "--set", "angular-step=2"});
  EXPECT_NE(outcome.err.find("changed what is stored with bar.nrrd"), std::string::npos) << outcome.err;
  const std::vector<ZxAlignTransform> found = cli::readTransformTable(folder.file("t.csv"));
  EXPECT_NEAR(std::remainder(static_cast<double>(found[1].angleDegrees) + 90.0, 360.0), 0.0, 4.0);
}

} // namespace
