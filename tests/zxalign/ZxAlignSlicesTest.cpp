#include "ModuleTest.h"
#include "zxalign/ZxAutoAlignMethod.h"

#include <numbers>

using ZxAlignSlicesTest = ModuleTest;

namespace {

constexpr ZxDims kDims{8, 6, 4};

ZxFileGeometry voxelsOf(double x, double y)
{
  ZxFileGeometry g;
  g.voxelSize[0] = x;
  g.voxelSize[1] = y;
  return g;
}

} // namespace

TEST_F(ZxAlignSlicesTest, StartsWithItsDefaults)
{
  const Lines names{"data",        "mask",        "LabelField",      "reference",
                    "linearRange", "displayMode", "maxIntNumSlices", "resampleMethod",
                    "action"};
  ASSERT_EQ(module->getPorts().size(), names.size());
  for (std::size_t i = 0; i < names.size(); ++i) EXPECT_EQ(module->getPorts()[i]->getName(), names[i]);
  EXPECT_EQ(module->portLinearRange.getValue(1), 255.0f);
  EXPECT_EQ(module->portMaxIntNumSlices.getValue(0), 10.0f);
  EXPECT_EQ(module->portResampleMethod.getValue(), 1);
  EXPECT_EQ(module->getEditableSide(), 1);
  EXPECT_TRUE(module->transformsAll());
  EXPECT_FALSE(module->isReferenceFixed());
  EXPECT_FALSE(module->isModified());
  EXPECT_FALSE(module->portAction.isButtonSensitive(2));
  EXPECT_FALSE(module->portMaxIntNumSlices.isVisible());
  EXPECT_STREQ(module->getTypeId().name().c_str(), "ZxAlignSlices");
}

TEST_F(ZxAlignSlicesTest, DoesNothingWithoutAnInput)
{
  module->fire();
  module->translateAll(1, 2);
  module->rotateAll(3);
  module->rotateAll(3, 1, 1);
  module->translate(1, 2, true);
  module->rotate(3, false);
  module->addPoint({1, 2});
  module->updateQuality();
  module->apply(false);
  EXPECT_EQ(module->doLayout(1), 0);
  EXPECT_EQ(module->computeQuality(), 0.0f);
  EXPECT_EQ(module->alignAll(1, 0, {}), 0);
  EXPECT_EQ(module->pairQuality(0), 0.0);
  EXPECT_FALSE(module->saveAlignment());
  press(1);
  EXPECT_TRUE(console.lines.empty());
  EXPECT_EQ(module->getResult(0), nullptr);
}

TEST_F(ZxAlignSlicesTest, TakesUpAnInput)
{
  connect(module->portData, greyStack(kDims).get());
  EXPECT_EQ(module->numSlices(), 4);
  EXPECT_EQ(module->getEditableSlice(), 2);
  EXPECT_EQ(module->getReferenceSlice(), 1);
  EXPECT_EQ(module->alignSettings().outputWidth, 8);
  EXPECT_EQ(module->alignSettings().outputHeight, 6);
  EXPECT_FLOAT_EQ(module->alignSettings().rotationStep, static_cast<float>(360.0 / (std::numbers::pi * 8)));
  EXPECT_EQ(module->portLinearRange.getValue(0), 0.0f);
  EXPECT_EQ(module->getSlice(3).landmarks, (McDArray<QPoint>{{2, 1}, {6, 4}}));
  EXPECT_EQ(editableImage()[8 + 2],
            greyAt(2, 1, 2) * 255 / static_cast<int>(module->portLinearRange.getValue(1)));

  // Two slices: the upper one is edited, whatever the side was.
  module->setEditableSide(-1);
  connect(module->portData, greyStack({5, 4, 2}).get());
  EXPECT_EQ(module->getEditableSlice(), 1);
  EXPECT_EQ(module->getReferenceSlice(), 0);
  // A new stack of the same depth is mapped into the new images.
  connect(module->portData,
          makeField<std::uint8_t>({5, 4, 2}, 1, [](int, int, int k, int) { return 9 + k; }).get());
  EXPECT_EQ(referenceImage(), std::vector<int>(20, 0));
  EXPECT_EQ(editableImage(), std::vector<int>(20, 255));
}

TEST_F(ZxAlignSlicesTest, RefusesWhatIsNoStack)
{
  connect(module->portData, greyStack(kDims).get());
  connect(module->portData, greyStack({8, 6, 1}).get());
  EXPECT_EQ(console.take(), Lines{"At least 2 slices required"});
  EXPECT_FALSE(module->portData.isConnected());
  EXPECT_EQ(module->getDataLattice(), nullptr);
  EXPECT_EQ(module->numSlices(), 0);
  EXPECT_FALSE(module->portData.connect(mcMake<ZxSpatialData>().get()));
  module->apply(false);
  module->translate(3, 4, false);
  EXPECT_TRUE(console.lines.empty());
}

TEST_F(ZxAlignSlicesTest, DropsCompanionsOfOtherSizes)
{
  const auto zero = [](auto...) { return 0; };
  const ZxDims other{8, 6, 5};
  for (const bool companionsFirst : {true, false}) {
    if (!companionsFirst) connect(module->portData, greyStack(kDims).get());
    connect(module->portMask, makeLabels<std::uint8_t>(other, zero).get());
    connect(module->portReference, greyStack(other).get());
    connect(module->portLabelField, makeLabels<std::uint8_t>(other, zero).get());
    if (companionsFirst) connect(module->portData, greyStack(kDims).get());
    EXPECT_FALSE(module->portMask.isConnected());
    EXPECT_FALSE(module->portReference.isConnected());
    EXPECT_EQ(module->portLabelField.isConnected(), !companionsFirst); // checked with a new input alone
    EXPECT_TRUE(console.lines.empty());
  }
}

TEST_F(ZxAlignSlicesTest, FindsTheDataWindow)
{
  const auto windowOf = [this](const McHandle<ZxField3>& field) {
    connect(module->portData, field.get());
    return std::pair(module->portLinearRange.getValue(0), module->portLinearRange.getValue(1));
  };
  const auto value = [](int x, int y, int k, int) { return 10 * (k + 1) + x - y; };
  EXPECT_EQ(windowOf(makeField<std::int16_t>(kDims, 1, value)), std::pair(5.0f, 47.0f));
  EXPECT_EQ(windowOf(makeField<std::uint8_t>(kDims, 4, value)), std::pair(0.0f, 255.0f));
  auto withWindow = makeField<std::uint8_t>(kDims, 1, value);
  withWindow->parameters().setReals("datawindow", {-3.5, 70});
  EXPECT_EQ(windowOf(withWindow), std::pair(-3.5f, 70.0f));
  // One that is written by a pass starts no other, and one that is set anew is mapped.
  module->fire();
  EXPECT_EQ(module->portLinearRange.getValue(0), -3.5f);
  module->portLinearRange.setValue(0, 30);
  module->portLinearRange.setValue(1, 30);
  module->fire();
  EXPECT_EQ(editableImage()[0], 0);   // 30
  EXPECT_EQ(editableImage()[1], 255); // 31
}

TEST_F(ZxAlignSlicesTest, ReadsTheStoredAlignment)
{
  auto field = greyStack(kDims);
  connect(module->portData, field.get());
  setTransform(3, {1, -2, 30, true});
  module->setSetting("width", "11");
  module->setSetting("height", "3");
  module->addPoint({7, 5});
  EXPECT_TRUE(module->saveAlignment());
  EXPECT_TRUE(field->isUnsaved());
  module->fire(); // its own writing starts no pass that resets anything
  EXPECT_TRUE(module->getSlice(3).flip);

  const auto other = mcMake<ZxAlignSlices>();
  connect(other->portData, field.get());
  other->fire();
  EXPECT_TRUE(sameXForm(other->getSlice(3), {1, -2, 30, true}));
  EXPECT_EQ(other->getSlice(2).landmarks.size(), 3U);
  EXPECT_EQ(other->alignSettings().outputWidth, 11);
  EXPECT_EQ(other->alignSettings().outputHeight, 3);
  EXPECT_TRUE(console.lines.empty());

  field->parameters().setNum("AlignIsApplied", 1);
  const auto applied = mcMake<ZxAlignSlices>();
  ASSERT_TRUE(applied->portData.connect(field.get()));
  applied->fire();
  EXPECT_TRUE(sameXForm(applied->getSlice(3), {}));
  EXPECT_EQ(applied->alignSettings().outputWidth, 11);
}

TEST_F(ZxAlignSlicesTest, TakesAReferenceForEveryNewInput)
{
  auto reference = greyStack(kDims);
  ZxParamBundle& stored = *reference->parameters().getBundle("AlignTransform");
  for (int k = 0; k < 4; ++k) stored.setReals("slice000" + std::to_string(k), {1.0 + k, -2, 30, -1});
  stored.setNums("ImageSize", {4, 6});
  connect(module->portReference, reference.get());
  for (int pass = 0; pass < 2; ++pass) {
    connect(module->portData, greyStack(kDims).get());
    EXPECT_TRUE(module->portReference.isConnected());
    EXPECT_TRUE(sameXForm(module->getSlice(3), {8, 2, 30, false}));
  }
  setTransform(3, {});
  module->readReference(makeField<float>(kDims, 2, greyAt).get()); // neither grey nor colour: silent
  EXPECT_TRUE(console.lines.empty());
  module->readReference(greyStack({8, 6, 5}).get());
  EXPECT_EQ(console.take(), Lines{"Wrong dimensions in reference object"});
  EXPECT_TRUE(sameXForm(module->getSlice(3), {}));
}

TEST_F(ZxAlignSlicesTest, SurvivesObjectsThatVanish)
{
  ZxObjectPool& pool = ZxObjectPool::getThePool();
  pool.add(module.get());
  auto field = greyStack(kDims);
  auto mask = makeLabels<std::uint8_t>(kDims, [](int x, auto...) { return x; });
  pool.add(field.get());
  pool.add(mask.get());
  connect(module->portData, field.get());
  connect(module->portMask, mask.get());
  press(1);
  ASSERT_NE(module->getResult(0), nullptr);
  EXPECT_TRUE(module->portAction.isButtonSensitive(2));
  pool.remove(module->getResult(0));
  EXPECT_FALSE(module->portAction.isButtonSensitive(2));
  pool.remove(mask.get());
  mask = {};
  EXPECT_NE(editableImage()[0], 0); // mapped again, without the mask
  module->portData.disconnect();    // no pass yet
  ZxSpatialData* const bare = field.get();
  pool.remove(bare);
  field = {};
  EXPECT_GT(module->pairQuality(0), 0.0);
  module->fire();
  EXPECT_EQ(module->pairQuality(0), 0.0);
}

TEST_F(ZxAlignSlicesTest, RoundsTheNumbersOfProjectedSlices)
{
  connect(module->portData, greyStack(kDims).get());
  const auto stored = [this](float reference, float editable) {
    module->portMaxIntNumSlices.setValue(0, reference);
    module->portMaxIntNumSlices.setValue(1, editable);
    module->fire();
    return std::pair(module->getReferenceProjectionThickness(), module->getEditableProjectionThickness());
  };
  EXPECT_EQ(stored(0.2f, 0.4f), std::pair(1, 1));
  EXPECT_EQ(stored(2.5f, 3.49f), std::pair(3, 3));
  EXPECT_EQ(stored(-7.0f, 1e30f), std::pair(1, 2147483647));
  module->portDisplayMode.setValue(1);
  module->fire();
  EXPECT_TRUE(module->portMaxIntNumSlices.isVisible());
  connect(module->portData, makeField<std::uint8_t>(kDims, 4, greyAt).get());
  EXPECT_FALSE(module->usesMaxIntProjection());
  EXPECT_FALSE(module->portMaxIntNumSlices.isVisible());
  EXPECT_FALSE(module->portLinearRange.isVisible());
}

TEST_F(ZxAlignSlicesTest, WholeStackOperationsMoveTheFollowingSlices)
{
  connect(module->portData, greyStack({4, 4, 10}).get());
  struct Case {
    int side;
    bool transformAll, fixReference;
    int first, last;
  };
  const Case cases[] = {{+1, true, false, 5, 9},  {-1, true, false, 0, 5}, {+1, false, false, 5, 5},
                        {-1, false, false, 5, 5}, {+1, true, true, 5, 5},  {-1, true, true, 5, 5},
                        {0, true, false, 1, 0},   {2, false, false, 1, 0}, {0, true, true, 5, 5}};
  module->setSlice(5);
  for (const Case& c : cases) {
    for (int k = 0; k < 10; ++k) setTransform(k, {static_cast<float>(k), 0, 1, k % 2 == 0});
    module->setEditableSide(c.side);
    module->setTransformAll(c.transformAll);
    module->setReferenceFixed(c.fixReference);
    module->translateAll(2, -3);
    module->rotateAll(90);
    for (int k = 0; k < 10; ++k) {
      // A quarter turn about the editable slice's place (7, -3): (dx, 0) goes to (0, -dx).
      const bool moved = k >= c.first && k <= c.last;
      const float f = static_cast<float>(k);
      const SliceXForm expected =
          moved ? SliceXForm(7, -3 - (f - 5), 91, k % 2 == 0) : SliceXForm(f, 0, 1, k % 2 == 0);
      EXPECT_TRUE(sameXForm(module->getSlice(k), expected)) << c.side << " slice " << k;
    }
    EXPECT_FALSE(module->isModified());
  }
}

TEST_F(ZxAlignSlicesTest, GivesTheEditableSliceAPlace)
{
  connect(module->portData, greyStack({4, 4, 3}).get());
  module->setSlice(1);
  setTransform(1, {10, 0, 0, false});
  module->rotate(90, false);
  EXPECT_TRUE(sameXForm(module->getSlice(0), {}));
  EXPECT_TRUE(sameXForm(module->getSlice(1), {10, 0, 90, false}));
  EXPECT_TRUE(sameXForm(module->getSlice(2), {10, 10, 90, false}));
  EXPECT_TRUE(module->isModified());
  module->translate(11, 5, false);
  EXPECT_TRUE(sameXForm(module->getSlice(0), {}));
  EXPECT_TRUE(sameXForm(module->getSlice(2), {11, 15, 90, false}));
  // All: the whole stack, also the slices of the reference.
  module->setReferenceFixed(true);
  module->translate(10, 3, true);
  EXPECT_TRUE(sameXForm(module->getSlice(0), {-1, -2, 0, false}));
  module->rotate(0, true);
  EXPECT_TRUE(sameXForm(module->getSlice(1), {10, 3, 0, false}));
  EXPECT_TRUE(sameXForm(module->getSlice(0), {15, -8, -90, false}));
  module->rotateAll(180, 0, 0);
  EXPECT_TRUE(sameXForm(module->getSlice(1), {-10, -3, 180, false}));
  const std::vector<SliceXForm> before(module->getSlices().begin(), module->getSlices().end());
  module->translateRelative(1, 1); // for the editor alone
  module->rotateRelative(5);
  for (int k = 0; k < 3; ++k)
    EXPECT_TRUE(sameXForm(module->getSlice(k), before[static_cast<std::size_t>(k)]));
}

TEST_F(ZxAlignSlicesTest, EditsLandmarksOfAllSlices)
{
  connect(module->portData, greyStack({7, 9, 3}).get());
  module->addPoint({3, 3});
  module->movePoints({-1, 2}, 1);
  EXPECT_EQ(module->getSlice(2).landmarks, (McDArray<QPoint>{{1, 2}, {4, 8}, {3, 3}}));
  module->removePoint(0);
  for (int k = 0; k < 3; ++k) EXPECT_EQ(module->getSlice(k).landmarks, (McDArray<QPoint>{{4, 8}, {3, 3}}));
  module->getSlice(1).landmarks.clear(); // as a damaged file may leave it
  module->movePoints({1, 1}, 1);
  module->removePoint(1);
  EXPECT_EQ(module->getSlice(2).landmarks, (McDArray<QPoint>{{4, 8}}));

  // Stored landmarks that leave the first slice with less than two get the default ones added.
  auto field = greyStack({7, 9, 3});
  for (const char* slice : {"slice0000", "slice0002"})
    field->parameters().getBundle("AlignPoints")->getBundle(slice)->setNums("point0000", {5, 5});
  const auto other = mcMake<ZxAlignSlices>();
  connect(other->portData, field.get());
  other->fire();
  EXPECT_EQ(console.take(), Lines{"No landmarks for slice 1"});
  EXPECT_EQ(other->getSlice(0).landmarks, (McDArray<QPoint>{{5, 5}, {1, 2}, {5, 6}}));
  EXPECT_EQ(other->getSlice(1).landmarks.size(), 2U);
}

TEST_F(ZxAlignSlicesTest, MeasuresTheStackInItsOwnVoxels)
{
  auto field = greyStack({11, 7, 2});
  field->getLattice()->setBoundingBox(voxelsOf(2, 3).box({11, 7, 2}));
  connect(module->portData, field.get());
  setTransform(1, {-3, -3, 0, false});
  module->setSetting("width", "20");
  module->setSetting("height", "10");
  int width = 0, height = 0, x[2], y[2];
  module->calcMinBox(&width, &height);
  EXPECT_EQ(width, 14); // 11 * 26 / 20
  EXPECT_EQ(height, 9); // 7 * 24 / 18
  module->calculateOrigin(x, y, 0, 0);
  EXPECT_EQ(std::pair(x[0], x[1]), std::pair(3, 6));
  EXPECT_EQ(std::pair(y[0], y[1]), std::pair(2, 1));
}

TEST_F(ZxAlignSlicesTest, ReportsTheQualityUnlessBusy)
{
  connect(module->portData, makeField<std::uint8_t>(kDims, 1, [](auto...) { return 80; }).get());
  setTransform(2, {0, 0, 0, true});
  module->updateQuality();
  EXPECT_EQ(work.getProgressText(), "Current slices: 1 - 2 (unflipped - flipped) quality = 100.00");
  const std::string half = "Current slices: 1 - 2 (unflipped - flipped) quality = 50.00";
  module->translate(6, 0, false); // one column of eight is left: sqrt(2 / 8)
  EXPECT_EQ(work.getProgressText(), half);
  work.setBusy(true);
  module->translate(0, 0, false);
  EXPECT_EQ(work.getProgressText(), half);
  work.setBusy(false);
  {
    const ZxWorkingPhase phase("Busy");
    module->rotate(5, false);
    EXPECT_EQ(work.getProgressText(), "Busy");
  }
  module->rotate(0, false);
  EXPECT_EQ(work.getProgressText(), "Current slices: 1 - 2 (unflipped - flipped) quality = 100.00");
}

TEST_F(ZxAlignSlicesTest, RunsOverTheWholeStack)
{
  // The same picture in every slice, moved by one more pixel each.
  connect(module->portData, makeField<std::uint8_t>({40, 30, 4}, 1, [](int x, int y, int k, int) {
                              const int u = x - k;
                              return (u > 10 && u < 22 && y > 8 && y < 17) ? 60 + 8 * u - 3 * y : 10;
                            }).get());
  module->setSetting("rotation", "off");
  std::vector<ZxAlignPair> done;
  EXPECT_EQ(module->alignAll(1, 1,
                             [&](const ZxAlignPairResult& r) {
                               done.push_back(r.pair);
                               EXPECT_TRUE(r.changed);
                               EXPECT_GT(r.qualityAfter, r.qualityBefore);
                               EXPECT_EQ(r.transform.tx, 1.0f - static_cast<float>(r.pair.editable));
                             }),
            3);
  EXPECT_EQ(done, (std::vector<ZxAlignPair>{{2, 1, 1}, {3, 2, 1}, {0, 1, -1}}));
  for (int k = 0; k < 4; ++k)
    EXPECT_TRUE(sameXForm(module->getSlice(k), {1.0f - static_cast<float>(k), 0, 0, false})) << k;
  EXPECT_TRUE(module->isModified());
  EXPECT_FALSE(work.isWorking());
  for (int k = 0; k < 3; ++k) EXPECT_GT(module->pairQuality(k), 0.99);
  for (const int bad : {-1, 3}) EXPECT_EQ(module->pairQuality(bad), 0.0);
  work.interruptAtQuery(work.getNumQueries() + 1);
  EXPECT_EQ(module->alignAll(1, 1, {}), 0);
}

TEST_F(ZxAlignSlicesTest, TellsQualityInsideTheMaskAlone)
{
  connect(module->portData, makeField<std::uint8_t>(kDims, 1, [](int x, int, int k, int) {
                              return x < 2 ? 100 * k : 50;
                            }).get());
  module->setRangeCurrent(0, 255);
  EXPECT_LT(module->maskedPairQuality(0), 1.0);
  EXPECT_EQ(module->maskedPairQuality(0), module->pairQuality(0));
  connect(module->portMask, makeLabels<std::uint8_t>(kDims, [](int x, auto...) { return x == 7; }).get());
  EXPECT_EQ(module->pairQuality(0), 1.0);       // black in both slices
  EXPECT_EQ(module->maskedPairQuality(0), 0.5); // not counted: an eighth is left
}

TEST_F(ZxAlignSlicesTest, SetsAllTransformsOrNone)
{
  connect(module->portData, greyStack({4, 4, 2}).get());
  const std::vector<ZxAlignTransform> two{{1, 2, 3, true}, {4, 5, 6, false}};
  EXPECT_TRUE(module->setTransforms(two));
  EXPECT_EQ(module->transforms(), two);
  EXPECT_EQ(module->getSlice(0).landmarks.size(), 2U);
  EXPECT_FALSE(module->setTransforms({two.data(), 1}));
  EXPECT_EQ(module->transforms(), two);
}
