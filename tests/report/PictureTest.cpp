#include "Picture.h"

#include "PictureCut.h"
#include "QualityPlot.h"
#include "io/Error.h"
#include "support/TestFolders.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QImage>
#include <clocale>
#include <cmath>
#include <filesystem>

namespace {

/// A stack in which every voxel has a value of its own.
std::unique_ptr<ZxLattice3> countedStack(int width, int height, int slices)
{
  ZxLatticeShape shape;
  shape.dims = {width, height, slices};
  shape.primType = McPrimType::UInt16;
  auto lattice = ZxLattice3::create(shape);
  std::uint16_t value = 0;
  for (int k = 0; k < slices; ++k) {
    auto* voxels = static_cast<std::uint16_t*>(lattice->beginWrite(k));
    for (int i = 0; i < width * height; ++i) voxels[i] = value++;
    lattice->endWrite(k);
  }
  return lattice;
}

class PictureFile : public testing::Test {
protected:
  void TearDown() override { std::filesystem::remove(m_path); }
  QImage written(const cli::PictureInput& input)
  {
    cli::writePicture(input, m_path);
    return QImage(QString::fromStdString(m_path));
  }
  const std::string m_path = fileInTestHome("picture.png");
};

} // namespace

TEST(PictureCut, TakesTheMiddleRowAndColumnOfEverySlice)
{
  const int w = 7, h = 4, n = 3;
  const cli::PictureCuts cuts = cli::cutStack(*countedStack(w, h, n));
  ASSERT_EQ(cuts.alongX.grey.size(), 21u);
  ASSERT_EQ(cuts.alongY.grey.size(), 12u);
  EXPECT_EQ(cuts.alongX.grey[2 * 7 + 5], 2 * 28 + 2 * 7 + 5); // x = 5, y = 2, slice 2
  EXPECT_EQ(cuts.alongY.grey[1 * 4 + 3], 1 * 28 + 3 * 7 + 3); // x = 3, y = 3, slice 1
}

TEST(PictureCut, FollowsTheTransformsOfTheSlices)
{
  const int w = 7, h = 4;
  const auto stack = countedStack(w, h, 3);
  // Slice 1 lies 2 to the right and 1 up, slice 2 is mirrored about x = 3.
  const std::vector<ZxAlignTransform> transforms = {{}, {2.0f, -1.0f, 0.0f, false}, {0.0f, 0.0f, 0.0f, true}};
  const cli::PictureCuts cuts = cli::cutThroughTransforms(*stack, transforms);
  for (int x = 0; x < w; ++x) {
    EXPECT_EQ(cuts.alongX.grey[static_cast<std::size_t>(x)], 2 * w + x);
    const float shifted = cuts.alongX.grey[static_cast<std::size_t>(w + x)];
    if (x < 2)
      EXPECT_TRUE(std::isnan(shifted));
    else
      EXPECT_EQ(shifted, 28 + 3 * w + x - 2);
    EXPECT_EQ(cuts.alongX.grey[static_cast<std::size_t>(2 * w + x)], 56 + 2 * w + 6 - x);
  }
  EXPECT_TRUE(std::isnan(cuts.alongY.grey[4 + 3])); // y = 3 of slice 1 lies below the slice
  EXPECT_EQ(cuts.alongY.grey[4 + 0], 28 + 1 * w + 1);
}

TEST(QualityPlot, AxisHoldsTheValuesInFewRoundSteps)
{
  for (const auto& [low, high] :
       {std::pair(93.2, 97.1), std::pair(0.0, 100.0), std::pair(50.0, 50.0), std::pair(0.0, 2000.0)}) {
    const cli::PlotAxis axis = cli::chooseAxis(low, high, 6);
    EXPECT_LE(axis.min, low);
    EXPECT_GE(axis.max, high - 1e-9);
    EXPECT_LE((axis.max - axis.min) / axis.step, 6.001);
    EXPECT_GT(axis.max, axis.min);
  }
  const std::vector<ZxAlignPairResult> pairs = {{{3, 2, 1}, {}, 0.3, 0.4, 0, true},
                                                {{0, 1, -1}, {}, 0.1, 0.2, 0, true}};
  const auto ordered = cli::inSliceOrder(pairs);
  EXPECT_EQ(ordered[0].lower, 0);
  EXPECT_DOUBLE_EQ(ordered[0].after, 20.0);
  EXPECT_EQ(ordered[1].lower, 2);
}

TEST_F(PictureFile, ShowsCutsBeforeAndAfterForFewAndManySlices)
{
  const auto few = countedStack(30, 20, 2);
  const std::vector<ZxAlignTransform> turned = {{}, {0.0f, 0.0f, 90.0f, false}};
  const std::vector<ZxAlignPairResult> pair = {{{1, 0, 1}, turned[1], 0.8, std::nan(""), 0.0, true}};
  QImage image = written({"few.tif", few.get(), nullptr, turned, pair});
  EXPECT_EQ(image.size(), QSize(1400, 920));
  // Slice 0 is darker than slice 1, and the turned slice 1 is cut along its other axis.
  EXPECT_LT(qGray(image.pixel(300, 120)), qGray(image.pixel(300, 260)));
  EXPECT_EQ(image.pixel(300, 120), image.pixel(300 + 684, 120));
  EXPECT_NE(image.pixel(40, 260), image.pixel(40 + 684, 260));

  const auto many = countedStack(3, 2, 2000);
  const std::vector<ZxAlignTransform> still(2000);
  image = written({std::string(500, 'W'), many.get(), many.get(), still, {}});
  EXPECT_EQ(image.size(), QSize(1400, 920));
  EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
  EXPECT_THROW(cli::writePicture({"x", many.get(), many.get(), still, {}}, "/nowhere/at/all.png"), io::Error);
}
