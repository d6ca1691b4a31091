#include "ModuleTest.h"

#include <numbers>

using ZxAlignSlicesTest = ModuleTest;

namespace {

constexpr ZxDims kDims{8, 6, 4};

const auto kZero = [](auto...) { return 0; };

} // namespace

TEST_F(ZxAlignSlicesTest, DoesNothingWithoutAnInput)
{
  Lines ports;
  for (const ZxPort* p : module->getPorts()) ports.push_back(p->getName());
  EXPECT_EQ(ports, (Lines{"data", "mask", "LabelField", "reference", "linearRange", "displayMode",
                          "maxIntNumSlices", "resampleMethod", "action"}));
  EXPECT_FALSE(module->portAction.isButtonSensitive(2));
  module->translateAll(1, 2);
  module->rotateAll(3);
  module->translate(1, 2, true);
  module->rotate(3, false);
  module->updateQuality();
  module->apply(false);
  EXPECT_EQ(module->doLayout(1), 0);
  EXPECT_EQ(module->alignAll(1, 0, {}), 0);
  EXPECT_EQ(module->pairQuality(0), 0.0);
  EXPECT_FALSE(module->saveAlignment());
  press(1);
  EXPECT_EQ(console.take(), Lines{});
}

TEST_F(ZxAlignSlicesTest, TakesUpAnInput)
{
  connect(module->portData, greyStack(kDims));
  EXPECT_EQ(module->getEditableSlice(), 2);
  EXPECT_EQ(module->getReferenceSlice(), 1);
  EXPECT_EQ(module->alignSettings().outputWidth, 8);
  EXPECT_EQ(module->alignSettings().outputHeight, 6);
  EXPECT_FLOAT_EQ(module->alignSettings().rotationStep, static_cast<float>(360.0 / (std::numbers::pi * 8)));
  EXPECT_EQ(module->getSlice(3).landmarks, (McDArray<QPoint>{{2, 1}, {6, 4}}));
  // Two slices: the upper one is edited, whatever the side was.
  module->setEditableSide(-1);
  connect(module->portData, greyStack({5, 4, 2}));
  EXPECT_EQ(module->getEditableSlice(), 1);
  EXPECT_EQ(module->getReferenceSlice(), 0);
  // A new stack of the same depth is mapped into the new images.
  connect(module->portData,
          makeField<std::uint8_t>({5, 4, 2}, 1, [](int, int, int k, int) { return 9 + k; }));
  EXPECT_EQ(referenceImage(), std::vector<int>(20, 0));
  EXPECT_EQ(editableImage(), std::vector<int>(20, 255));
  // What is no stack ends the work on the one before.
  connect(module->portData, greyStack({8, 6, 1}));
  EXPECT_EQ(console.take(), Lines{"At least 2 slices required"});
  EXPECT_FALSE(module->portData.isConnected());
  EXPECT_EQ(module->getDataLattice(), nullptr);
  module->translate(3, 4, false);
  EXPECT_FALSE(module->portData.connect(mcMake<ZxSpatialData>().get()));
}

TEST_F(ZxAlignSlicesTest, DropsCompanionsOfOtherSizes)
{
  const ZxDims other{8, 6, 5};
  for (const bool companionsFirst : {true, false}) {
    if (!companionsFirst) connect(module->portData, greyStack(kDims));
    connect(module->portMask, makeLabels<std::uint8_t>(other, kZero));
    connect(module->portReference, greyStack(other));
    connect(module->portLabelField, makeLabels<std::uint8_t>(other, kZero));
    if (companionsFirst) connect(module->portData, greyStack(kDims));
    EXPECT_FALSE(module->portMask.isConnected());
    EXPECT_FALSE(module->portReference.isConnected());
    EXPECT_EQ(module->portLabelField.isConnected(), !companionsFirst); // checked with a new input alone
  }
  EXPECT_EQ(console.take(), Lines{});
}

TEST_F(ZxAlignSlicesTest, FindsTheDataWindow)
{
  const auto windowOf = [this](const McHandle<ZxField3>& field) {
    connect(module->portData, field);
    return std::pair(module->portLinearRange.getValue(0), module->portLinearRange.getValue(1));
  };
  const auto value = [](int x, int y, int k, int) { return 10 * (k + 1) + x - y; };
  EXPECT_EQ(windowOf(makeField<std::int16_t>(kDims, 1, value)), std::pair(5.0f, 47.0f));
  EXPECT_EQ(windowOf(makeField<std::uint8_t>(kDims, 4, value)), std::pair(0.0f, 255.0f));
  auto withWindow = makeField<std::uint8_t>(kDims, 1, value);
  withWindow->parameters().setReals("datawindow", {-3.5, 70});
  EXPECT_EQ(windowOf(withWindow), std::pair(-3.5f, 70.0f));
  module->portLinearRange.setValue(0, 30);
  module->portLinearRange.setValue(1, 30);
  module->fire();
  EXPECT_EQ(editableImage()[0], 0);   // 30
  EXPECT_EQ(editableImage()[1], 255); // 31
}

TEST_F(ZxAlignSlicesTest, SaysWhatIsInTheWayOfStoring)
{
  const auto field = greyStack(kDims);
  connect(module->portData, field);
  setTransform(3, {1, -2, 30, true});
  for (const std::string name : {"AlignPoints", "AlignTransform"}) {
    field->parameters().setNum(name, 7);
    module->setModified(true);
    EXPECT_FALSE(module->saveAlignment());
    EXPECT_TRUE(module->isModified());
    EXPECT_NE(console.take().at(0).find("\"" + name + "\" is taken"), std::string::npos);
    EXPECT_EQ(field->parameters().findBundle("AlignTransform"), nullptr);
  }
}

/// Slice 2 cannot be read.
class DamagedVoxels : public ZxReadOnlyVoxelSource {
public:
  explicit DamagedVoxels(ZxLattice& whole) : m_whole(whole) {}
  bool readSlice(int k, void* dst) override { return k != 2 && m_whole.readSlice(k, dst); }
  bool readBox(const ZxBox3i& box, void* dst) override { return m_whole.readBox(box, dst); }

private:
  ZxLattice& m_whole;
};

TEST_F(ZxAlignSlicesTest, LeavesPairsAloneThatItCannotRead)
{
  const auto whole = greyStack(kDims);
  ZxLattice& lattice = *whole->getLattice();
  connect(module->portData, ZxField3::create(std::make_unique<ZxLattice3>(
                                lattice.shape(), std::make_unique<DamagedVoxels>(lattice))));
  const AlignState before = module->currentState();
  for (int editable : {2, 3}) {
    module->setReferenceSlice(editable - 1);
    module->setSlice(editable);
    EXPECT_EQ(module->doLayout(0), 0);
    EXPECT_TRUE(module->currentState().slices == before.slices);
  }
}

TEST_F(ZxAlignSlicesTest, ReadsTheStoredAlignment)
{
  const auto field = greyStack(kDims);
  connect(module->portData, field);
  setTransform(3, {1, -2, 30, true});
  module->setSetting("width", "11");
  module->addPoint({7, 5});
  EXPECT_TRUE(module->saveAlignment());
  EXPECT_TRUE(field->isUnsaved());
  module->fire(); // its own writing starts no pass that resets anything
  EXPECT_TRUE(module->getSlice(3).flip);
  for (const int applied : {0, 1}) {
    field->parameters().setNum("AlignIsApplied", applied);
    module = mcMake<ZxAlignSlices>();
    connect(module->portData, field);
    EXPECT_TRUE(isAt(3, applied ? SliceXForm() : SliceXForm(1, -2, 30, true)));
    EXPECT_EQ(module->getSlice(2).landmarks.size(), applied ? 0U : 3U);
    EXPECT_EQ(module->alignSettings().outputWidth, 11);
    EXPECT_EQ(module->alignSettings().outputHeight, 6);
  }
}

TEST_F(ZxAlignSlicesTest, TakesAReferenceForEveryNewInput)
{
  const auto reference = greyStack(kDims);
  ZxParamBundle& stored = *reference->parameters().getBundle("AlignTransform");
  for (int k = 0; k < 4; ++k) stored.setReals("slice000" + std::to_string(k), {1.0 + k, -2, 30, -1});
  stored.setNums("ImageSize", {4, 6});
  connect(module->portReference, reference);
  for (int pass = 0; pass < 2; ++pass) {
    connect(module->portData, greyStack(kDims));
    EXPECT_TRUE(isAt(3, SliceXForm(8, 2, 30, false)));
  }
  setTransform(3, {});
  module->readReference(makeField<float>(kDims, 2, greyAt).get()); // neither grey nor colour: silent
  module->readReference(greyStack({8, 6, 5}).get());
  EXPECT_EQ(console.take(), Lines{"Wrong dimensions in reference object"});
  EXPECT_TRUE(isAt(3, SliceXForm()));
}

TEST_F(ZxAlignSlicesTest, SurvivesObjectsThatVanish)
{
  ZxObjectPool& pool = ZxObjectPool::getThePool();
  auto field = greyStack(kDims);
  auto mask = makeLabels<std::uint8_t>(kDims, [](int x, auto...) { return x; });
  for (ZxObject* o : {static_cast<ZxObject*>(module.get()), static_cast<ZxObject*>(field.get()),
                      static_cast<ZxObject*>(mask.get())})
    pool.add(o);
  connect(module->portData, field);
  connect(module->portMask, mask);
  press(1);
  EXPECT_TRUE(module->portAction.isButtonSensitive(2));
  pool.remove(module->getResult(0));
  EXPECT_FALSE(module->portAction.isButtonSensitive(2));
  module->portMask.disconnect(); // no pass yet
  pool.remove(std::exchange(mask, {}).get());
  module->mapSlices();
  EXPECT_EQ(editableImage()[0], 0);
  module->fire();
  EXPECT_NE(editableImage()[0], 0); // mapped again, without the mask
  module->portData.disconnect();    // no pass yet
  pool.remove(std::exchange(field, {}).get());
  EXPECT_GT(module->pairQuality(0), 0.0);
  module->fire();
  EXPECT_EQ(module->pairQuality(0), 0.0);
}

TEST_F(ZxAlignSlicesTest, RoundsTheNumbersOfProjectedSlices)
{
  connect(module->portData, greyStack(kDims));
  const auto stored = [this](float reference, float editable) {
    module->portMaxIntNumSlices.setValue(0, reference);
    module->portMaxIntNumSlices.setValue(1, editable);
    module->fire();
    return std::pair(module->getReferenceProjectionThickness(), module->getEditableProjectionThickness());
  };
  EXPECT_EQ(stored(0.2f, 0.4f), std::pair(1, 1));
  EXPECT_EQ(stored(2.5f, 3.49f), std::pair(3, 3));
  EXPECT_EQ(stored(-7.0f, 1e30f), std::pair(1, 2147483647));
}

TEST_F(ZxAlignSlicesTest, WholeStackOperationsMoveTheFollowingSlices)
{
  connect(module->portData, greyStack({4, 4, 10}));
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
      const float f = static_cast<float>(k);
      SliceXForm expected(f, 0, 1, k % 2 == 0);
      if (k >= c.first && k <= c.last) expected = SliceXForm(7, -3 - (f - 5), 91, k % 2 == 0);
      EXPECT_TRUE(isAt(k, expected)) << c.side << " slice " << k;
    }
  }
}

TEST_F(ZxAlignSlicesTest, GivesTheEditableSliceAPlace)
{
  connect(module->portData, greyStack({4, 4, 3}));
  module->setSlice(1);
  setTransform(1, {10, 0, 0, false});
  module->rotate(90, false);
  module->translate(11, 5, false);
  EXPECT_TRUE(isAt(0, SliceXForm()));
  EXPECT_TRUE(isAt(1, SliceXForm(11, 5, 90, false)));
  EXPECT_TRUE(isAt(2, SliceXForm(11, 15, 90, false)));
  EXPECT_TRUE(module->isModified());
  // All: the whole stack, also the slices of the reference.
  module->setReferenceFixed(true);
  module->translate(10, 3, true);
  EXPECT_TRUE(isAt(0, SliceXForm(-1, -2, 0, false)));
  module->rotate(0, true);
  EXPECT_TRUE(isAt(1, SliceXForm(10, 3, 0, false)));
  EXPECT_TRUE(isAt(0, SliceXForm(15, -8, -90, false)));
  module->rotateAll(180, 0, 0);
  module->translateRelative(1, 1); // for the editor alone
  module->rotateRelative(5);
  EXPECT_TRUE(isAt(1, SliceXForm(-10, -3, 180, false)));
}

TEST_F(ZxAlignSlicesTest, EditsLandmarksOfAllSlices)
{
  const auto field = greyStack({7, 9, 3});
  for (const char* slice : {"slice0000", "slice0002"})
    field->parameters().getBundle("AlignPoints")->getBundle(slice)->setNums("point0000", {5, 5});
  connect(module->portData, field);
  // Less than two on the first slice: every slice gets the default ones beside its own.
  EXPECT_EQ(console.take(), Lines{"No landmarks for slice 1"});
  EXPECT_EQ(module->getSlice(0).landmarks, (McDArray<QPoint>{{5, 5}, {1, 2}, {5, 6}}));
  EXPECT_EQ(module->getSlice(1).landmarks, (McDArray<QPoint>{{1, 2}, {5, 6}}));
  module->movePoints({-1, 2}, 2); // slice 1 has no such landmark
  module->removePoint(0);
  module->addPoint({3, 3});
  EXPECT_EQ(module->getSlice(2).landmarks, (McDArray<QPoint>{{1, 2}, {4, 8}, {3, 3}}));
  EXPECT_EQ(module->getSlice(1).landmarks, (McDArray<QPoint>{{5, 6}, {3, 3}}));
}

TEST_F(ZxAlignSlicesTest, ReportsTheQualityUnlessBusy)
{
  connect(module->portData, makeField<std::uint8_t>(kDims, 1, kZero));
  setTransform(2, {0, 0, 0, true});
  module->translate(6, 0, false); // one column of eight is left: sqrt(2 / 8)
  const std::string text = "Current slices: 1 - 2 (unflipped - flipped) quality = ";
  EXPECT_EQ(work.getProgressText(), text + "50.00");
  work.setBusy(true);
  module->translate(0, 0, false);
  EXPECT_EQ(work.getProgressText(), text + "50.00");
  work.setBusy(false);
  module->rotate(0, false);
  EXPECT_EQ(work.getProgressText(), text + "100.00");
}

TEST_F(ZxAlignSlicesTest, RunsOverTheWholeStack)
{
  // The same picture in every slice, moved by one more pixel each.
  connect(module->portData, makeField<std::uint8_t>({40, 30, 4}, 1, [](int x, int y, int k, int) {
            const int u = x - k;
            return (u > 10 && u < 22 && y > 8 && y < 17) ? 60 + 8 * u - 3 * y : 10;
          }));
  module->setSetting("rotation", "off");
  std::vector<ZxAlignPair> done;
  EXPECT_EQ(module->alignAll(1, 1,
                             [&](const ZxAlignPairResult& r) {
                               done.push_back(r.pair);
                               EXPECT_GT(r.qualityAfter, r.qualityBefore);
                               EXPECT_EQ(r.transform.tx, 1.0f - static_cast<float>(r.pair.editable));
                             }),
            3);
  EXPECT_EQ(done, (std::vector<ZxAlignPair>{{2, 1, 1}, {3, 2, 1}, {0, 1, -1}}));
  for (int k = 0; k < 4; ++k)
    EXPECT_TRUE(isAt(k, SliceXForm(1.0f - static_cast<float>(k), 0, 0, false))) << k;
  EXPECT_FALSE(work.isWorking());
  for (const int bad : {-1, 3}) EXPECT_EQ(module->pairQuality(bad), 0.0);
  work.interruptAtQuery(1);
  EXPECT_EQ(module->alignAll(1, 1, {}), 0);
  work.interruptAtQuery(0);

  // Where an earlier run has ended the rest goes on.
  std::vector<ZxAlignPair> rest;
  const auto take = [&](const ZxAlignPairResult& r) { rest.push_back(r.pair); };
  setTransform(3, {});
  EXPECT_EQ(module->alignRest(1, 1, 1, take), 2);
  EXPECT_EQ(rest, (std::vector<ZxAlignPair>{{3, 2, 1}, {0, 1, -1}}));
  EXPECT_TRUE(isAt(3, SliceXForm(-2.0f, 0, 0, false)));
  EXPECT_EQ(module->alignRest(3, 1, 1, take) + module->alignRest(9, 1, 1, take), 0);
}

TEST_F(ZxAlignSlicesTest, TellsQualityInsideTheMaskAlone)
{
  connect(module->portData,
          makeField<std::uint8_t>(kDims, 1, [](int x, int, int k, int) { return x < 2 ? 100 * k : 50; }));
  EXPECT_EQ(module->maskedPairQuality(0), module->pairQuality(0));
  connect(module->portMask, makeLabels<std::uint8_t>(kDims, [](int x, auto...) { return x == 7; }));
  EXPECT_EQ(module->pairQuality(0), 1.0);       // black in both slices
  EXPECT_EQ(module->maskedPairQuality(0), 0.5); // not counted: an eighth is left
}
