// Editing landmarks in the slice view.

#include "SliceViewTest.h"
#include "zxalign/ModuleTest.h"
#include "zxalign/QxAlignUndoRedo.h"
#include "zxalign/ZxAlignEditor.h"

namespace {

using View = QxDrawAlignSlices;

class SliceViewLandmarksTest : public SliceViewTest {
protected:
  // At zoom 4 the image starts at (28, 36).
  void openEnlarged()
  {
    open(300, 260);
    view.setZoom(4.0f);
    view.changeAlignMode(View::kLandmarkAlignMode);
    view.setEditMode(View::EditLandmarks);
    removable.clear();
  }
  // The pixel of the viewport at a pixel of the editable slice.
  QPointF windowOf(const SliceInfo& slice, QPoint pixel)
  {
    const McVec2f p =
        slice.map({static_cast<float>(pixel.x()), static_cast<float>(pixel.y())}, kWidth / 2, kHeight / 2);
    const QPointF contents(p.x * view.zoom(), p.y * view.zoom());
    const QSizeF space(viewport().width() - kWidth * view.zoom(),
                       viewport().height() - kHeight * view.zoom());
    return {contents.x() + (space.width() >= 0 ? space.width() / 2 : -view.horizontalScrollBar()->value()),
            contents.y() + (space.height() >= 0 ? space.height() / 2 : -view.verticalScrollBar()->value())};
  }
  void expectRemovable(bool yes)
  {
    ASSERT_EQ(removable.count(), 1);
    EXPECT_EQ(removable.takeFirst()[0], yes);
  }

  QSignalSpy removable{&view, &View::enableRemove};
  QSignalSpy added{&view, &View::addPoint};
  QSignalSpy removed{&view, qOverload<int>(&View::removePoint)};
};

QColor hue(int degrees) { return QColor(QColor::fromHsv(degrees, 255, 255).rgb()); }

} // namespace

// The arrow of the second slice lies above its tip, that of the first slice below.
TEST_F(SliceViewLandmarksTest, SelectsByTheArrowAndPlaces)
{
  first.setXForm({});
  second.setXForm({});
  openEnlarged();
  click({220, 188});
  EXPECT_EQ(view.selectedLandmark(), 1);
  expectRemovable(false); // two landmarks always stay
  click({28 + 30 * 4, 36 + 20 * 4});
  EXPECT_EQ(second.landmarks, (McDArray<QPoint>{{10, 8}, {30, 20}}));
  EXPECT_EQ(view.selectedLandmark(), -1);
  expectRemovable(false);

  view.setEditableSlice(View::FirstSlice);
  click({220, 188}); // beside the arrow of landmark 1, which was placed last: on to 0
  EXPECT_EQ(view.selectedLandmark(), 0);
  EXPECT_TRUE(view.clearSelection());
  EXPECT_FALSE(view.clearSelection());
  click({220, 204});
  EXPECT_EQ(view.selectedLandmark(), 1);
  EXPECT_TRUE(view.insideLandmark({192, 168}, {50, 40}));
  EXPECT_FALSE(view.insideLandmark({200, 160}, {50, 40})); // the tip itself
  EXPECT_FALSE(view.insideLandmark({192, 164}, {50, 40})); // the edge
}

// Clicks beside all arrows step through the landmarks, so that pairs of clicks place all of them.
TEST_F(SliceViewLandmarksTest, StepsThroughTheLandmarks)
{
  second.landmarks.append({3, 3});
  second.setXForm({});
  openEnlarged();
  for (int i : {0, 1, 2, 0}) {
    click({268, 42});
    ASSERT_EQ(view.selectedLandmark(), i);
    expectRemovable(true);
    click({28.0 + 100, 36.0 + 40 + 4 * i});
    expectRemovable(false);
    EXPECT_EQ(second.landmarks[static_cast<std::size_t>(i)], QPoint(25, 10 + i));
  }
}

// Through a turned, mirrored, shifted slice and a scrolled view.
TEST_F(SliceViewLandmarksTest, PlacesWhereTheMouseIs)
{
  open(150, 120);
  view.setZoom(4.0f);
  view.setEditMode(View::EditLandmarks);
  for (SliceInfo* slice : {&second, &first}) {
    view.setEditableSlice(slice == &second ? View::SecondSlice : View::FirstSlice);
    view.horizontalScrollBar()->setValue(31);
    view.verticalScrollBar()->setValue(47);
    click(windowOf(*slice, {27, 20}));
    ASSERT_GE(view.selectedLandmark(), 0);
    const auto selected = static_cast<std::size_t>(view.selectedLandmark());
    click(windowOf(*slice, {31, 24}));
    EXPECT_EQ(slice->landmarks[selected], QPoint(31, 24));
  }
}

// Only the left button alone edits; columns are rounded, rows are cut off.
TEST_F(SliceViewLandmarksTest, IgnoresWhatIsNotAPlainClickIntoTheSlice)
{
  second.setXForm({});
  openEnlarged();
  press({100, 100}, Qt::LeftButton, Qt::ShiftModifier);
  press({100, 100}, Qt::RightButton);
  mouse(QEvent::MouseButtonPress, {100, 100}, Qt::LeftButton, Qt::LeftButton | Qt::RightButton);
  click({10, 100});
  click({25, 100}); // column -0.75
  click({100, 28}); // row -2
  click({28 + 4 * kWidth, 100});
  EXPECT_EQ(view.selectedLandmark(), -1);
  EXPECT_EQ(removable.count(), 0);
  view.addLandmark();
  click({100, 33}); // row -0.75
  ASSERT_EQ(added.count(), 1);
  EXPECT_EQ(added[0][0].toPoint(), QPoint(18, 0));
  view.setEditMode(2);
  click({100, 100});
  EXPECT_EQ(view.selectedLandmark(), -1);
}

// Colours go with their landmarks; what the mouse adds has one step of the hue more than what was there when
// the palette was made.
TEST_F(SliceViewLandmarksTest, GivesEveryLandmarkItsColour)
{
  first.setXForm({});
  second.setXForm({});
  QObject::connect(&view, &View::addPoint, [&](QPoint p) {
    first.landmarks.append(p);
    second.landmarks.append(p);
  });
  QObject::connect(&view, qOverload<int>(&View::removePoint), [&](int i) {
    first.landmarks.remove(static_cast<std::size_t>(i));
    second.landmarks.remove(static_cast<std::size_t>(i));
  });
  openEnlarged();
  while (second.landmarks.size() < 17) {
    view.addLandmark();
    click({28.0 + 4 * 30, 36.0 + 4 * static_cast<double>(second.landmarks.size())});
  }
  // 8 columns left of the tip and 7 rows above it lies the fill of the second slice's arrow.
  const QPoint tip(28 + 4 * 30, 36 + 4 * 16);
  EXPECT_EQ(picture().pixelColor(tip - QPoint(8, 7)), hue(269));
  EXPECT_EQ(picture().pixelColor(28 + 4 * 10 - 8, 36 + 4 * 8 - 7), Qt::red);

  click({220, 188});
  ASSERT_EQ(view.selectedLandmark(), 1);
  EXPECT_EQ(picture().pixelColor(28 + 4 * 50, 36 + 4 * 40), Qt::red); // the outline of the selected one
  view.removeLandmark();
  ASSERT_EQ(removed.count(), 1);
  EXPECT_EQ(removed[0][0], 1);
  EXPECT_EQ(view.selectedLandmark(), -1);
  EXPECT_EQ(picture().pixelColor(tip - QPoint(8, 7)), hue(269));
  view.removeLandmark();
  EXPECT_EQ(removed.count(), 1);

  View fresh;
  fresh.resize(300, 260);
  first.landmarks.resize(18);
  first.landmarks[16] = QPoint(30, 20);
  first.landmarks[17] = QPoint(30, 40);
  fresh.paintSlice(kWidth, kHeight, grey[0].data(), grey[1].data(), grey[0].data(), grey[1].data(), first,
                   second, 1, 0);
  fresh.setZoom(4.0f);
  fresh.changeAlignMode(View::kLandmarkAlignMode);
  fresh.displaySlice(View::FirstSlice);
  fresh.show();
  const QImage image = fresh.viewport()->grab().toImage();
  EXPECT_EQ(image.pixelColor(28 + 120 - 8, 36 + 80 + 7), hue(232));
  EXPECT_EQ(image.pixelColor(28 + 120 - 8, 36 + 160 + 7), hue(269));
}

TEST_F(SliceViewLandmarksTest, DrawsTheArrowsAtTheirTips)
{
  first.setXForm({0, 0, 90, true});
  second.setXForm({3, -2, 0, false});
  first.landmarks[1] = second.landmarks[1] = QPoint(35, 22);
  openEnlarged();
  view.setEditMode(View::EditTransform);
  const QImage image = picture();
  const QPoint a = windowOf(first, {35, 22}).toPoint(), b = windowOf(second, {35, 22}).toPoint();
  for (const auto& [tip, down] : {std::pair{a, 1}, {b, -1}}) {
    EXPECT_EQ(image.pixelColor(tip), Qt::black);
    EXPECT_EQ(image.pixelColor(tip - QPoint(1, 0)), Qt::black);
    EXPECT_EQ(image.pixelColor(tip + QPoint(-1, down)), Qt::white);
    EXPECT_EQ(image.pixelColor(tip + QPoint(-8, 16 * down)), Qt::black);
    EXPECT_EQ(image.pixelColor(tip + QPoint(-6, 10 * down)), Qt::white);
    EXPECT_EQ(image.pixelColor(tip + QPoint(-8, 9 * down)), Qt::yellow);
    EXPECT_EQ(image.pixelColor(tip + QPoint(-16, 8 * down)), Qt::black);
  }
  view.changeAlignMode(1);
  EXPECT_EQ(difference(picture(), expected(first, second)), "");
}

// Anywhere on and beside the picture, nothing outside of it is touched.
TEST_F(SliceViewLandmarksTest, ClipsTheArrows)
{
  for (SliceInfo* slice : {&first, &second}) {
    slice->landmarks.clear();
    for (const int x : {-1000000, -3, 0, 30, kWidth - 1, kWidth + 3, 2147483647})
      for (const int y : {-2147483647, -5, 0, 20, kHeight - 1, kHeight + 4}) slice->landmarks.append({x, y});
  }
  open(40, 30);
  view.changeAlignMode(View::kLandmarkAlignMode);
  for (const float zoom : {0.1f, 1.0f, 5.0f, 1e8f}) {
    view.setZoom(zoom);
    EXPECT_FALSE(picture().isNull());
  }
}

// Undo may take landmarks away under the view.
TEST_F(SliceViewLandmarksTest, ForgetsASelectionThatIsNoLongerThere)
{
  first.landmarks.append({1, 1});
  second.landmarks.append({30, 20});
  second.setXForm({});
  openEnlarged();
  click(QPointF(28 + 4 * 30 - 8, 36 + 4 * 20 - 8));
  ASSERT_EQ(view.selectedLandmark(), 2);
  expectRemovable(true);
  first.landmarks.resize(2);
  second.landmarks.resize(2);
  view.removeLandmark();
  EXPECT_EQ(removed.count(), 0);
  expectRemovable(false);
  second.landmarks.clear();
  click({100, 100});
  EXPECT_EQ(view.selectedLandmark(), -1);
  second.landmarks = {{1, 1}, {2, 2}, {3, 3}};
  click({268, 210});
  EXPECT_EQ(view.selectedLandmark(), 0);
  removable.clear();
  second.landmarks.clear();
  paintSlice();
  EXPECT_EQ(view.selectedLandmark(), -1);
  expectRemovable(false);
}

TEST_F(SliceViewLandmarksTest, LeavesNoSelectionBehind)
{
  openEnlarged();
  click({150, 130});
  ASSERT_GE(view.selectedLandmark(), 0);
  removable.clear();
  view.addLandmark();
  EXPECT_EQ(view.selectedLandmark(), -1);
  expectRemovable(false);
  view.setEditMode(View::EditTransform); // what is to be added stays to be added
  expectRemovable(false);
  view.setEditMode(View::EditLandmarks);
  click({150, 130});
  EXPECT_EQ(added.count(), 1);
  EXPECT_EQ(view.viewport()->cursor().shape(), Qt::ArrowCursor);
}

namespace {

class NoEditor : public ZxAlignEditor {
public:
  explicit NoEditor(ZxAlignSlices& module) : m_module(module) {}
  void updateViews() override {}
  void setSliceInfo(const SliceInfo&) override {}
  void reinitialise() override {}
  void setUseMaxIntProjection(bool) override {}
  void setActive(bool) override {}
  bool cancel() override { return true; }
  void repaintSliceView() override {}
  ZxAlignSlices& module() override { return m_module; }
  void suspendUpdates() override {}
  void resumeUpdates() override {}
  void showPair() override {}
  void undoEmpty() override {}
  void undoNotEmpty() override {}
  void redoEmpty() override {}
  void redoNotEmpty() override {}

private:
  ZxAlignSlices& m_module;
};

class SliceViewUndoTest : public ModuleTest {};

} // namespace

TEST_F(SliceViewUndoTest, PlacingALandmarkCanBeTakenBack)
{
  const McHandle<ZxField3> stack = greyStack({40, 30, 3});
  connect(module->portData, stack);
  NoEditor editor(*module);
  auto undoRedo = std::make_unique<QxAlignUndoRedo>(&editor);
  View view;
  view.resize(40, 30);
  view.setUndoRedo(undoRedo.get());
  std::vector<unsigned char> image(40 * 30, 9);
  view.paintSlice(40, 30, image.data(), image.data(), image.data(), image.data(), module->getSlice(0),
                  module->getSlice(1), 1, 1);
  view.setEditMode(View::EditLandmarks);
  view.show();
  const auto click = [&](QPoint at) { QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, at); };
  const QPoint before = module->getSlice(1).landmarks[0];
  click({38, 3});
  click({33, 21});
  EXPECT_EQ(module->getSlice(1).landmarks[0], QPoint(33, 21));
  undoRedo->undo();
  EXPECT_EQ(module->getSlice(1).landmarks[0], before);

  undoRedo.reset(); // the editor replaces its history before it tells the view
  click({38, 3});
  click({33, 22});
  EXPECT_EQ(module->getSlice(1).landmarks[1], QPoint(33, 22));
}
