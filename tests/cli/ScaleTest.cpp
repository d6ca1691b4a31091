#include "Failure.h"
#include "SlicePlacement.h"
#include "SliceScale.h"
#include "Stacks.h"
#include "TransformTable.h"
#include "io/Volume.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

namespace {

using cli::SlicePlacement;
using cli::SlicePoint;
using cli::SliceScale;

// What the reduced slice's transform does to the centre of a block, the full slice's does to the same tissue:
// whatever rest the sizes leave, turned and mirrored.
TEST(SliceScale, MovesTheSameTissue)
{
  const ZxAlignTransform transform{3.25f, -1.5f, 31.0f, true};
  for (const ZxDims full : {ZxDims{96, 64, 1}, ZxDims{101, 67, 1}, ZxDims{98, 63, 1}})
    for (const std::string text : {"1/4", "0.5", "1/3", "2"}) {
      const SliceScale scale = SliceScale::of(text, SliceScale::Allowed::Both);
      const double f = static_cast<double>(scale.reduction()) / scale.enlargement();
      const ZxDims reduced{full.width / scale.reduction() * scale.enlargement(),
                           full.height / scale.reduction() * scale.enlargement(), 1};
      const ZxAlignTransform moved = scale.toFull(transform, reduced, full);
      const SlicePoint small = SlicePlacement(transform, reduced.width, reduced.height).map({5, 9});
      const SlicePoint large =
          SlicePlacement(moved, full.width, full.height).map({f * 5 + (f - 1) / 2, f * 9 + (f - 1) / 2});
      EXPECT_NEAR(large.x, f * small.x + (f - 1) / 2, 1e-4) << text << " of " << full.width;
      EXPECT_NEAR(large.y, f * small.y + (f - 1) / 2, 1e-4) << text << " of " << full.width;
      const ZxAlignTransform back = scale.toReduced(moved, full, reduced);
      EXPECT_NEAR(back.tx, transform.tx, 1e-4);
      EXPECT_NEAR(back.ty, transform.ty, 1e-4);
      EXPECT_EQ(back.angleDegrees, transform.angleDegrees);
      EXPECT_TRUE(back.flip);
    }
  EXPECT_EQ(SliceScale::of("0.25", SliceScale::Allowed::Both).text(), "1/4");
  EXPECT_EQ(SliceScale::of("1/4", SliceScale::Allowed::Both).toReduced(ZxAlignPoint{41, 7}),
            (ZxAlignPoint{10, 1}));
  for (const char* bad : {"0.3", "0", "-1", "1/0", "two", "1/4/2", "nan"})
    EXPECT_THROW(SliceScale::of(bad, SliceScale::Allowed::Both), cli::Failure) << bad;
}

class Scale : public testing::Test {
protected:
  void expectRun(const std::vector<std::string>& arguments)
  {
    const test::Outcome outcome = test::run({arguments, {}, folder.path()});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
  }
  nlohmann::json report() { return nlohmann::json::parse(test::readFile(folder.file("r.json"))); }
  test::Folder folder;
};

// A search of no steps leaves slices where they start: at full size they are where they were, turned as well.
TEST_F(Scale, LeavesAStartWhereItIs)
{
  io::writeVolume(*test::noiseField({{101, 67, 3}, 1, McPrimType::UInt16}), folder.file("in.nrrd"));
  const std::string start = "slice,tx,ty,angle_deg,flip\n0,0,0,0,0\n1,0,0,25,0\n2,7.5,-3,-40,1\n";
  test::writeFile(folder.file("start.csv"), start);
  expectRun({"align", "in.nrrd", "-o", "out.csv", "--transforms-only", "--start-from", "start.csv",
             "--iterations", "0", "--scale", "1/4", "--report", "r.json"});
  EXPECT_EQ(report()["scale"], "1/4");
  const auto before = cli::readTransformTable(folder.file("start.csv"));
  const auto after = cli::readTransformTable(folder.file("out.csv"));
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_NEAR(after[k].tx, before[k].tx, 1e-4) << k;
    EXPECT_NEAR(after[k].ty, before[k].ty, 1e-4) << k;
    EXPECT_EQ(after[k].angleDegrees, before[k].angleDegrees) << k;
    EXPECT_EQ(after[k].flip, before[k].flip) << k;
  }
}

// Blocks of noise-free tissue of odd and even sizes; the truth is that of full size.
TEST_F(Scale, FindsTheDisplacementAtFullSize)
{
  for (const int size : {400, 403}) {
    test::makePhantom(folder.file("in.nrrd"), 5, size, {"--truth", folder.file("truth.csv"), "--angle", "2"});
    test::writeLabels(folder.file("mask.nrrd"), {size, size, 5});
    expectRun({"align", "in.nrrd", "-o", "out.tif", "--scale", "0.5", "--truth", "truth.csv", "--report",
               "r.json", "--picture", "p.png"});
    EXPECT_LT(report()["truth"]["mean"], 2.0) << size;
    EXPECT_EQ(report()["dimensions"]["width"], size);
    EXPECT_EQ(io::readInfo({folder.file("out.tif")}).shape.dims, (ZxDims{size, size, 5}));
    expectRun({"align", "in.nrrd", "-o", "masked.csv", "--scale", "1/2", "--mask", "mask.nrrd",
               "--transforms-only"});
  }
}

// A table that was made on slices reduced beforehand moves the full slices as --scale of align would.
TEST_F(Scale, ResamplesByATableOfSmallerSlices)
{
  const auto field = test::noiseField({{50, 38, 2}, 1, McPrimType::UInt8});
  io::writeVolume(*field, folder.file("in.nrrd"));
  test::writeFile(folder.file("small.csv"), "# of slices of 12 x 9 pixels;\n"
                                            "slice,tx,ty,angle_deg,flip\n0,0,0,0,0\n1,2,-1,180,0\n");
  expectRun({"resample", "in.nrrd", "-o", "a.nrrd", "--transforms", "small.csv", "--scale", "1/4",
             "--interpolation", "nearest"});
  const std::string before = test::voxels(*field), after = test::voxelsOf(folder.file("a.nrrd"));
  // Turned by a half about block (6, 4), that is pixel (25.5, 17.5), and moved by (8, -4).
  for (int y = 0; y < 38; ++y)
    for (int x = 0; x < 50; ++x) {
      const int sx = 51 + 8 - x, sy = 35 - 4 - y;
      const bool inside = sx >= 0 && sx < 50 && sy >= 0 && sy < 38;
      const auto at = [](int i, int j) { return static_cast<std::size_t>(50 * 38 + j * 50 + i); };
      ASSERT_EQ(after[at(x, y)], inside ? before[at(sx, sy)] : 0) << x << " " << y;
    }
  const auto refused = [&](const std::string& scale, const std::string& reason) {
    const test::Outcome outcome =
        test::run({{"resample", "in.nrrd", "-o", "b.nrrd", "--transforms", "small.csv", "--scale", scale},
                   {},
                   folder.path()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find(reason), std::string::npos) << outcome.err;
  };
  refused("1/2", "12 x 9 pixels, which is not 1/2 times the size of those of in.nrrd");
  refused("0.3", "--scale takes");
}

} // namespace
