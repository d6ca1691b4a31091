#include "zxalign/QxOrthoViewManager.h"

#include "OrthoViewTest.h"

#include <QLabel>

#include <cstring>
#include <functional>

using enum OrthoOrientation;

namespace {

constexpr ZxDims kDims{17, 12, 9};
const Lines kNone;

/// Values of T that differ in all directions, of both signs where T has them.
template <class T>
McHandle<ZxField3> stackOf(int channels, const ZxDims& dims = kDims)
{
  return makeField<T>(dims, channels, [](int x, int y, int k, int c) {
    return greyAt(x, y, k, c) - (std::is_signed_v<T> ? 120 : 0);
  });
}

/// A work area through which things happen while the views are updated.
class MeanwhileArea : public ZxWorkArea {
public:
  MeanwhileArea() { setTheWorkArea(this); }
  ~MeanwhileArea() override { setTheWorkArea(nullptr); }
  std::function<void()> at3; ///< run once, at the third query

protected:
  bool interruptRequested() override
  {
    if (++m_queries == 3 && at3) std::exchange(at3, {})();
    return false;
  }

private:
  int m_queries = 0;
};

} // namespace

using QxOrthoViewManagerTest = OrthoViewTest;

template <class T>
class QxOrthoViewManagerTypesTest : public OrthoViewTest {
};
using VoxelTypes = testing::Types<std::uint8_t, std::int16_t, std::int32_t, float, double, std::uint16_t>;
TYPED_TEST_SUITE(QxOrthoViewManagerTypesTest, VoxelTypes);

TYPED_TEST(QxOrthoViewManagerTypesTest, ShowsWhatThePlainLoopGives)
{
  for (const int channels : {1, 4}) {
    this->openBoth(stackOf<TypeParam>(channels));
    this->turn(1, {3.3f, -2.6f, 0.0f, false});
    this->turn(2, {0.0f, 0.0f, 33.3f, true});
    this->turn(3, {-4.0f, 1.5f, 90.0f, false});
    this->turn(4, {5.0f, 2.0f, 180.0f, true});
    this->turn(5, {-7.5f, 6.5f, -141.0f, false});
    this->turn(6, {500.0f, 300.0f, 10.0f, false}); // beside the frame
    for (const bool projects : {false, true}) {
      this->views->setUseMaxIntProj(projects);
      for (const OrthoOrientation o : {Sagittal, Coronal})
        EXPECT_EQ(this->shown(o), this->expected(o)) << channels << " channels, projects " << projects;
    }
    this->views = {};
    this->editor.reset();
  }
}

TEST_F(QxOrthoViewManagerTest, RandomEditsEndInWhatAComputationFromScratchGives)
{
  for (const bool projects : {false, true}) {
    openBoth(stackOf<std::int16_t>(1));
    views->setUseMaxIntProj(projects);
    RandomEdits edits(*module, *views, projects ? 7 : 8);
    for (int i = 0; i < 120; ++i) {
      edits.edit();
      ASSERT_TRUE(isUpToDate()) << "edit " << i << " projects " << projects;
      if (i % 20 == 7) views->showSagittalView(i % 40 == 7);
      if (i % 20 == 13) views->showSagittalView(true);
    }
    views = {};
    editor.reset();
  }
}

TEST_F(QxOrthoViewManagerTest, EditsWithoutAutomaticUpdateAreTakenUpLater)
{
  for (const bool projects : {false, true}) {
    openBoth(stackOf<std::uint8_t>(1));
    views->setUseMaxIntProj(projects);
    RandomEdits edits(*module, *views, 9);
    for (int i = 0; i < 60; ++i) {
      bar().autoCheckBoxChange(false);
      for (int k = 0; k < 4; ++k) edits.edit();
      if (i % 3 == 0)
        bar().setAutoUpdate(true);
      else if (i % 3 == 1)
        bar().updateView();
      else
        views->updateLines();
      ASSERT_TRUE(isUpToDate()) << "round " << i << " projects " << projects;
    }
    views = {};
    editor.reset();
  }
}

// A move of a range by (0, 3) takes the valid rows along; the rows it uncovers are blanked in all slices but
// the last, and only they are computed next.
TEST_F(QxOrthoViewManagerTest, MovesThePixelsOfProjections)
{
  openBoth(stackOf<std::uint8_t>(1));
  views->setUseMaxIntProj(true);
  const Bytes before2 = shownRow(Sagittal, 2), before4 = shownRow(Sagittal, 4);
  const Bytes coronal = shown(Coronal);
  bar().autoCheckBoxChange(false);
  shift(2, 4, 0, 3);
  EXPECT_EQ(views->getUpToDateBox(2), (McBox2i{0, 3, 16, 11}));
  EXPECT_EQ(views->getUpToDateBox(5), (McBox2i{0, 0, 16, 11}));
  for (const int z : {2, 4}) {
    const Bytes& before = z == 2 ? before2 : before4;
    Bytes moved(12, 0);
    std::copy_n(before.begin(), 9, moved.begin() + 3);
    if (z == 4) std::copy_n(before.begin(), 3, moved.begin());
    EXPECT_EQ(shownRow(Sagittal, z), moved) << z;
  }
  EXPECT_EQ(shown(Coronal), coronal);
  // Pixels that are valid are not computed again.
  view(Sagittal)->image().row(4)[5] = 201;
  views->updateLines();
  EXPECT_EQ(shownRow(Sagittal, 4)[5], 201);
  Bytes expected4 = plainColumn(Sagittal, 4);
  expected4[5] = 201;
  EXPECT_EQ(shownRow(Sagittal, 4), expected4);
  // Moved out as a whole: nothing stays valid.
  shift(4, 4, -40, 40);
  EXPECT_EQ(views->getUpToDateBox(4), McBox2i{});
  views->updateLines();
  EXPECT_TRUE(isUpToDate());
}

// Moves are told in whole pixels. What they round away is not shown, but does not add up.
TEST_F(QxOrthoViewManagerTest, IsNeverFurtherOffThanHalfAPixel)
{
  for (const bool projects : {false, true}) {
    openBoth(stackOf<std::uint8_t>(1));
    views->setUseMaxIntProj(projects);
    const auto move = [this](float distance, int told) {
      for (int z = 2; z <= 4; ++z) {
        module->getSlice(z).translationX += distance;
        module->getSlice(z).translationY -= distance;
      }
      views->updateView(2, 4, OrthoOrientation::Both, told, -told, true, false, false);
    };
    const Bytes before = shown(Sagittal);
    move(0.4f, 0);
    EXPECT_EQ(shown(Sagittal), before);
    move(0.4f, 0);
    EXPECT_NE(shown(Sagittal), before);
    EXPECT_TRUE(isUpToDate()) << "off by 0.8, projects " << projects;
    move(1.4f, 1);
    EXPECT_EQ(isUpToDate(), !projects);
    move(1.4f, 1);
    EXPECT_TRUE(isUpToDate()) << "off by 0.8 again, projects " << projects;
    views = {};
    editor.reset();
  }
}

TEST_F(QxOrthoViewManagerTest, BoxesOfCutLinesCutOffTheSmallerEndAndRoundTheLarger)
{
  open(stackOf<std::uint8_t>(1));
  McBox2i box;
  setTransform(1, {2.6f, 0.0f, 0.0f, false});
  ASSERT_TRUE(views->getIntersectionBoxOfLineWithImage(1, OrthoCoordinate::X, 7, box));
  EXPECT_EQ(box, (McBox2i{4, 0, 4, 11})); // 4.4
  setTransform(1, {2.4f, -3.0f, 0.0f, false});
  ASSERT_TRUE(views->getIntersectionBoxOfLineWithImage(1, OrthoCoordinate::Y, 7, box));
  EXPECT_EQ(box, (McBox2i{0, 10, 14, 10}));
  ASSERT_TRUE(views->getIntersectionBoxOfLineWithImage(1, OrthoCoordinate::X, 7, box));
  EXPECT_EQ(box, (McBox2i{4, 3, 5, 11})); // 4.6
  setTransform(1, {0.0f, -20.0f, 0.0f, false});
  EXPECT_FALSE(views->getIntersectionBoxOfLineWithImage(1, OrthoCoordinate::Y, 7, box));
}

TEST_F(QxOrthoViewManagerTest, RefusesPositionsAndLimitsOutsideOfTheStack)
{
  openBoth(stackOf<std::uint8_t>(1));
  console.take();
  views->setSliceNumberSagittal(17);
  views->setSliceNumberCoronal(-1);
  views->setSliceNumberAxial(9);
  views->setVisibleRangeZMin(5);
  views->setVisibleRangeZMax(4);
  views->setVisibleRangeZMax(9);
  views->setVisibleRangeZMin(9);
  EXPECT_EQ(console.take(),
            (Lines{"Invalid sagittal/yz slice number in OrthoViewManager",
                   "Invalid coronal/xz slice number in OrthoViewManager",
                   "Invalid axial/xy slice number in OrthoViewManager",
                   "Invalid maximum value for visible z range.", "Invalid maximum value for visible z range.",
                   "Invalid minimum value for visible z range."}));
  EXPECT_EQ(views->getSliceNumberSagittal(), 8);
  EXPECT_EQ(views->getSliceNumberCoronal(), 6);
  EXPECT_EQ(views->getVisibleRangeZMin(), 5);
  EXPECT_EQ(views->getVisibleRangeZMax(), 8);
  EXPECT_TRUE(isUpToDate());
}

TEST_F(QxOrthoViewManagerTest, TheZWindowFollowsTheAxialSliceInJumps)
{
  openBoth(stackOf<std::uint8_t>(1, {7, 5, 100}));
  views->setSliceNumberAxial(3);
  views->setShowZRange(true);
  EXPECT_EQ(views->getVisibleRangeZMin(), 0);
  EXPECT_EQ(views->getVisibleRangeZMax(), 13);
  for (const int axial : {50, 99, 0, 20}) {
    views->setSliceNumberAxial(axial);
    EXPECT_EQ(views->getVisibleRangeZMin(), std::max(axial - 10, 0));
    EXPECT_EQ(views->getVisibleRangeZMax(), std::min(axial + 10, 99));
    EXPECT_TRUE(isUpToDate()) << axial;
  }
  views->setZRange(2);
  EXPECT_EQ(views->getVisibleRangeZMax(), 22);
  int from = 30, to = 40;
  views->getRangeToUpdate(from, to);
  EXPECT_GT(from, to);
  views->setZRange(-1);
  EXPECT_EQ(views->getZRange(), 2);
  EXPECT_EQ(console.take(), kNone);
  EXPECT_TRUE(isUpToDate());
}

TEST_F(QxOrthoViewManagerTest, ZoomsInSteps)
{
  openBoth(stackOf<std::uint8_t>(1));
  const auto* label = child<QLabel>("zoomLabel");
  EXPECT_EQ(label->text(), "1:1");
  for (const int zoom : {2, 3, 4, 6, 9, 14, 21}) {
    views->zoomIn();
    EXPECT_EQ(views->getZoom(), static_cast<float>(zoom));
    EXPECT_EQ(label->text(), QString("%1:1 ").arg(zoom));
  }
  for (const float zoom : {14.0f, 9.0f, 6.0f, 4.0f, 3.0f, 2.0f, 1.0f, 0.5f, 0.25f}) {
    views->zoomOut();
    EXPECT_EQ(views->getZoom(), zoom);
  }
  EXPECT_EQ(label->text(), "1:4 ");
  EXPECT_EQ(view(Sagittal)->viewer()->getZoomFactor(), 0.25f);
  views->zoomIn();
  EXPECT_EQ(label->text(), "1:2 ");
  view(Coronal)->viewer()->setZoomFactor(3.0f); // as Ctrl and the wheel do
  EXPECT_EQ(view(Sagittal)->viewer()->getZoomFactor(), 3.0f);
  EXPECT_EQ(label->text(), "3:1 ");
}

TEST_F(QxOrthoViewManagerTest, AnUpdateShowsProgressAndCanBeStopped)
{
  openBoth(stackOf<std::uint8_t>(1));
  ZxRecordingWorkArea area;
  area.interruptAtQuery(4);
  setTransform(7, {2.0f, 1.0f, 0.0f, false});
  views->updateView();
  EXPECT_EQ(area.getProgressText(), "Updating orthogonal views");
  EXPECT_FALSE(area.isWorking());
  EXPECT_EQ(shownRow(Sagittal, 2), plainColumn(Sagittal, 2));
  EXPECT_EQ(shownRow(Sagittal, 7), Bytes(12, 0));
  area.interruptAtQuery(0);
  views->updateLines();
  EXPECT_TRUE(isUpToDate());
}

TEST_F(QxOrthoViewManagerTest, AnythingMayHappenWhileItUpdates)
{
  const std::function<void()> events[] = {[this] {
                                            turn(1, {1.0f, -2.0f, 90.0f, true});
                                          },
                                          [this] { views->showSagittalView(false); },
                                          [this] { views->setUseMaxIntProj(!views->getUseMaxIntProj()); },
                                          [this] { views->init(module->getDataLattice(), true); },
                                          [this] {
                                            connect(module->portData, stackOf<double>(4, {5, 9, 3}));
                                          },
                                          [this] { views->init(module->getDataLattice(), false); },
                                          [this] {
                                            views->showSagittalView(false);
                                            views->showCoronalView(false);
                                          }};
  for (const bool projects : {false, true}) {
    for (const auto& event : events) {
      openBoth(stackOf<std::uint8_t>(1));
      views->setUseMaxIntProj(projects);
      MeanwhileArea area;
      area.at3 = event;
      views->updateView();
      if (module->getDataLattice()->getDims() == kDims) {
        EXPECT_TRUE(isUpToDate());
      } else {
        views->init(module->getDataLattice(), projects);
        EXPECT_TRUE(isUpToDate());
      }
      views = {};
      editor.reset();
    }
    openBoth(stackOf<std::uint8_t>(1));
    MeanwhileArea area;
    area.at3 = [this] {
      views = {};
      editor.reset();
    };
    views->updateView();
    EXPECT_FALSE(area.isWorking());
  }
}

// What lies behind the views' pointer is looked at only while it is the module's input.
TEST_F(QxOrthoViewManagerTest, LeavesAnInputAloneThatHasBeenReplaced)
{
  openBoth(stackOf<std::uint8_t>(1));
  const Bytes before = shown(Coronal);
  connect(module->portData, stackOf<float>(1, {3, 30, 40}));
  views->updateLine(3);
  views->updateView();
  views->showSagittalView(false);
  views->showSagittalView(true);
  EXPECT_FALSE(views->getSagittalView());
  EXPECT_EQ(shown(Coronal), Bytes(before.size(), 0));
  views->init(module->getDataLattice(), true);
  EXPECT_TRUE(isUpToDate());
  views->init(nullptr, false);
  EXPECT_FALSE(views->getCoronalView());
  EXPECT_FALSE(views->getToolBar());
}

TEST_F(QxOrthoViewManagerTest, InitTakesBackEverythingButWhatIsOpen)
{
  openBoth(stackOf<std::uint8_t>(1));
  views->showSagittalView(false);
  views->setSliceNumberCoronal(2);
  views->setSliceNumberAxial(5);
  views->setZRange(1);
  views->setShowZRange(true);
  views->init(module->getDataLattice(), true);
  EXPECT_FALSE(views->getSagittalView());
  EXPECT_TRUE(views->getCoronalView());
  EXPECT_EQ(views->getSliceNumberCoronal(), 6);
  EXPECT_EQ(views->getSliceNumberAxial(), 0);
  EXPECT_EQ(views->getZRange(), 10);
  EXPECT_FALSE(views->getShowZRange());
  EXPECT_EQ(views->getVisibleRangeZMax(), 8);
  EXPECT_TRUE(views->getUseMaxIntProj());
  EXPECT_TRUE(isUpToDate());
}

namespace {

/// Voxels that cannot be read in one slice, and never lie in memory.
class BrokenSource : public ZxVoxelSource {
public:
  BrokenSource(ZxLattice& good, int broken) : m_good(good), m_broken(broken) {}
  bool readSlice(int k, void* dst) override { return k != m_broken && m_good.readSlice(k, dst); }
  bool readBox(const ZxBox3i& box, void* dst) override
  {
    return box.z != m_broken && m_good.readBox(box, dst);
  }
  const void* sliceInMemory(int) const override { return nullptr; }
  void* beginWrite(int) override { return nullptr; }
  bool endWrite(int) override { return false; }

private:
  ZxLattice& m_good;
  int m_broken;
};

} // namespace

TEST_F(QxOrthoViewManagerTest, ReadsFromFilesAndSaysWhatItCannotRead)
{
  const auto good = stackOf<std::int32_t>(1);
  ZxLattice& lattice = *good->getLattice();
  openBoth(ZxField3::create(
      std::make_unique<ZxLattice3>(lattice.shape(), std::make_unique<BrokenSource>(lattice, 4))));
  for (const bool projects : {false, true}) {
    console.take();
    views->setUseMaxIntProj(projects);
    turn(3, {1.0f, 2.0f, 30.0f, true});
    EXPECT_EQ(shownRow(Coronal, 3), plainColumn(Coronal, 3));
    turn(4, {1.0f, 2.0f, 30.0f, true});
    EXPECT_EQ(console.take().back(), "Slice 4 cannot be read; the orthogonal views show it black.");
    EXPECT_EQ(shownRow(Coronal, 4), Bytes(68, 0));
  }
}

TEST_F(QxOrthoViewManagerTest, StacksOfOneVoxelAlongAnAxisAreShown)
{
  for (const ZxDims dims : {ZxDims{1, 6, 3}, ZxDims{6, 1, 3}, ZxDims{1, 1, 2}}) {
    openBoth(stackOf<std::uint8_t>(1, dims));
    views->setUseMaxIntProj(true);
    shift(1, 1, 2, -1);
    EXPECT_TRUE(isUpToDate());
    turn(1, {0.0f, 0.0f, 45.0f, false});
    EXPECT_TRUE(isUpToDate());
    views->setUseMaxIntProj(false);
    EXPECT_TRUE(isUpToDate());
    views = {};
    editor.reset();
  }
}
