#include "MethodTest.h"

#include "EntropyThreshold.h"

namespace {

constexpr int kEdges = 3;
const McVec2f kMiddle{100, 75}; // of slices of 201 x 151 pixels; the object's centre lies near it

/// Inside an outline without symmetry around (100, 75).
bool isInside(double x, double y)
{
  const double phi = std::atan2(y - 75.0, x - 100.0);
  const double radius =
      34.0 + 9.0 * std::cos(phi - 0.4) + 6.0 * std::sin(2.0 * phi) + 4.0 * std::cos(3.0 * phi + 1.0);
  return std::hypot(x - 100.0, y - 75.0) < radius;
}

class ZxEdgeDetectionAlignMethodTest : public MethodTest {
protected:
  void connectObject(std::vector<SliceXForm> slices, double object = 255, double background = 0,
                     int channels = 1)
  {
    // Shifted so that the object's centre lies in the middle of an unmoved slice.
    connectWorld(
        201, 151,
        [=, this](double x, double y) { return isInside(x + centre.x, y + centre.y) ? object : background; },
        std::move(slices), channels);
    module->setRangeCurrent(0, 255); // by default the range of the values, which thresholds are seen through
  }

  ZxParamBundle* profileOf(int slice)
  {
    ZxParamBundle* profiles = field->parameters().findBundle("Objectrotation");
    return profiles ? profiles->findBundle("slice000" + std::to_string(slice)) : nullptr;
  }
  double turnBetween(int a, int b)
  {
    return std::remainder(static_cast<double>(module->getSlice(b).rotation - module->getSlice(a).rotation),
                          360.0);
  }

  /// From (100, 75) to the object's centre of gravity.
  McVec2f centre = [] {
    double n = 0, x = 0, y = 0;
    for (int i = 0; i < 151 * 201; ++i)
      if (isInside(i % 201, i / 201)) n += 1, x += i % 201 - 100, y += i / 201 - 75;
    return McVec2f{static_cast<float>(x / n), static_cast<float>(y / n)};
  }();
};

} // namespace

TEST_F(ZxEdgeDetectionAlignMethodTest, TurnsToWithinAnAngularStepAndCentres)
{
  for (const int channels : {1, 4})
    for (const float degrees : {37.0f, -110.0f, 168.0f}) {
      connectObject({{}, {14, -11, degrees, false}}, 255, 0, channels);
      setTransform(0, {0, 0, 20, false});
      setTransform(1, {50, 60, 70, false});
      selectPair(1, 0);
      EXPECT_EQ(align(kEdges), 1);
      EXPECT_LE(std::abs(std::remainder(turnBetween(0, 1) - static_cast<double>(degrees), 360.0)), 1.0);
      EXPECT_LT(distance(0, 1, kMiddle, 0), 2.0);
      EXPECT_TRUE(module->isModified());
      EXPECT_TRUE(field->isUnsaved());
    }
}

TEST_F(ZxEdgeDetectionAlignMethodTest, FindsDarkObjectsAndCalculatesThresholds)
{
  connectObject({{}, {9, 7, -52, false}}, 40, 180);
  module->alignSettings().brightBackground = true;
  module->alignSettings().threshold = 100;
  selectPair(1, 0);
  align(kEdges);
  EXPECT_NEAR(turnBetween(0, 1), -52.0, 1.0);

  connectObject({{}, {9, 7, -52, false}}, 120, 0); // below the threshold that is set
  module->alignSettings().brightBackground = false;
  module->alignSettings().threshold = 200;
  selectPair(1, 0);
  console.take();
  align(kEdges);
  EXPECT_EQ(console.take().back(), "The edge detection finds no object above grey value 200 on slice 0.");
  field->parameters().removeAll();
  module->alignSettings().calculatedThreshold = true;
  align(kEdges);
  EXPECT_NEAR(turnBetween(0, 1), -52.0, 3.0);
  EXPECT_TRUE(console.take().empty());
}

struct Flips {
  bool shown[2];  ///< how the slices lie, reference and editable
  bool before[2]; ///< what the module knows of it
  bool after;     ///< of the editable slice
  bool mirror;
};

TEST_F(ZxEdgeDetectionAlignMethodTest, AgreesWithTheConventionOfFlips)
{
  const Flips cases[] = {{{false, true}, {false, false}, true, true}, // found
                         {{false, true}, {false, true}, true, true},  // known of the editable slice
                         {{true, false}, {true, false}, false, true}, // known of the reference
                         {{true, true}, {true, true}, true, false},   // known of both
                         {{false, false}, {false, false}, false, true}};
  for (const Flips& c : cases) {
    connectObject({{0, 0, 25, c.shown[0]}, {12, -7, -64, c.shown[1]}});
    module->alignSettings().mirror = c.mirror;
    setTransform(0, {0, 0, -40, c.before[0]});
    setTransform(1, {8, 8, 8, c.before[1]});
    selectPair(1, 0);
    align(kEdges);
    EXPECT_EQ(module->getSlice(1).flip, c.after);
    EXPECT_LT(std::abs(turnShown(0, 1, kMiddle)), 1.001);
    EXPECT_LT(distance(0, 1, kMiddle, 0), 2.0);
    EXPECT_GT(module->computeQuality(), 0.85f);
  }
}

TEST_F(ZxEdgeDetectionAlignMethodTest, UsesTheOutlineOfTheFormerPairUnlessItsLengthDiffers)
{
  connectObject({{}, {4, 2, 30, false}, {-6, 5, 75, false}});
  field->parameters().getBundle("AlignTransform")->setReals("slice0000", {1, 2, 3, -1});
  selectPair(1, 0);
  align(kEdges);
  const ZxParamBundle& transforms = *field->parameters().findBundle("AlignTransform");
  EXPECT_EQ(transforms.getNumEntries(), 1); // what was stored is gone
  int imageSize[2] = {0, 0};
  EXPECT_TRUE(transforms.findNums("ImageSize", 2, imageSize));
  EXPECT_EQ(imageSize[0], 201);
  EXPECT_EQ(imageSize[1], 151);
  EXPECT_EQ(profileOf(0), nullptr);
  std::vector<double> outline(360);
  int length = 0;
  ASSERT_TRUE(profileOf(1)->findNums("Vectorlength", 1, &length));
  ASSERT_EQ(length, 360);
  ASSERT_TRUE(profileOf(1)->findReals("Vector", 360, outline.data()));

  // A kept outline that is turned by 90 entries turns the next slice by as many degrees.
  std::rotate(outline.begin(), outline.begin() + 90, outline.end());
  profileOf(1)->setReals("Vector", outline);
  selectPair(2, 1);
  align(kEdges);
  EXPECT_NEAR(std::remainder(turnBetween(1, 2) - 45.0, 360.0), 90.0, 1.0);

  profileOf(1)->setReals("Vector", outline);
  module->alignSettings().angularStep = 2;
  align(kEdges);
  EXPECT_NEAR(turnBetween(1, 2), 45.0, 2.0);
  ASSERT_TRUE(profileOf(2)->findNums("Vectorlength", 1, &length));
  EXPECT_EQ(length, 180);

  // 51 rays of 7 degrees: the quarters are of 12 entries, what lies between them stays empty.
  module->alignSettings().angularStep = 7;
  align(kEdges);
  std::vector<double> coarse(51);
  ASSERT_TRUE(profileOf(2)->findReals("Vector", 51, coarse.data()));
  for (const std::size_t i : {24U, 37U, 50U}) EXPECT_EQ(coarse[i], 0.0);
  EXPECT_EQ(std::count(coarse.begin(), coarse.end(), 0.0), 3);
}

TEST_F(ZxEdgeDetectionAlignMethodTest, RefusesWhatItCannotWorkWith)
{
  connectObject({{}, {4, 2, 30, false}});
  field->setSaved();
  const auto refuses = [&](const std::string& reason) {
    setTransform(1, {1, 2, 3, true});
    selectPair(1, 0);
    console.take();
    EXPECT_EQ(align(kEdges), 0) << reason;
    const Lines lines = console.take();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_NE(lines[0].find(reason), std::string::npos) << lines[0];
    EXPECT_TRUE(isAt(1, {1, 2, 3, true}));
    EXPECT_FALSE(field->isUnsaved());
  };
  const ZxAlignSettings defaults = module->alignSettings();
  for (const float step : {0.0f, -1.0f, 91.0f, std::nanf("")}) {
    module->alignSettings().angularStep = step;
    refuses("angular step");
  }
  module->alignSettings() = defaults;
  module->alignSettings().rasterStep = 0;
  refuses("raster steps");
  module->alignSettings() = defaults;
  module->alignSettings().imageRasterStep = 0;
  refuses("raster steps");
  module->alignSettings() = defaults;
  for (const std::string name : {"AlignTransform", "Objectrotation"}) {
    field->parameters().setNum(name, 7);
    refuses("\"" + name + "\"");
    field->parameters().removeAll();
  }
}

// Both classes together have the entropy of the whole histogram, whatever divides them: where the sums are
// exact the first grey value is as good as any, and it wins.
TEST(EntropyThreshold, TakesTheFirstOfEqualValues)
{
  std::array<std::uint64_t, 256> histogram{};
  EXPECT_EQ(entropyThreshold(histogram), 0);
  histogram[30] = histogram[90] = histogram[170] = histogram[220] = 25;
  EXPECT_EQ(entropyThreshold(histogram), 0);
}
