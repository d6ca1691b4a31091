#include "zxalign/QxDrawAlignSlices.h"

#include "SliceViewTest.h"

#include <QWheelEvent>

namespace {

using View = QxDrawAlignSlices;

class QxDrawAlignSlicesTest : public SliceViewTest {
protected:
  void expectShown(const SliceXForm& a, const SliceXForm& b)
  {
    EXPECT_EQ(difference(picture(), expected(a, b)), "");
  }
  void turnWheel(int angle, Qt::KeyboardModifiers modifiers)
  {
    const QPointF at(20, 20);
    QWheelEvent event(at, view.viewport()->mapToGlobal(at), {}, {0, angle}, Qt::NoButton, modifiers,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(view.viewport(), &event);
  }

  QSignalSpy clicks{&view, &View::click};
  QSignalSpy translations{&view, &View::translated};
  QSignalSpy rotations{&view, &View::rotated};
};

Qt::CursorShape shapeOf(const QxDrawAlignSlices& view) { return view.viewport()->cursor().shape(); }

} // namespace

// The image in the middle of the viewport, its margins and its frame, and at larger zooms the scrolled part,
// pixel for pixel; opaque, although the composed picture has no alpha.
TEST_F(QxDrawAlignSlicesTest, PaintsThePairAsThePlainLoopsDo)
{
  open(130, 101);
  fieldSize = 8;
  view.chess(fieldSize);
  for (const float zoom : {0.25f, 1.0f, 2.0f, 3.0f}) {
    view.setZoom(zoom);
    EXPECT_EQ(view.horizontalScrollBar()->isVisible(), zoom > 2.0f);
    for (const int scroll : {0, 17}) {
      view.horizontalScrollBar()->setValue(scroll);
      view.verticalScrollBar()->setValue(2 * scroll);
      for (bytesPerPixel = 1; bytesPerPixel <= 4; bytesPerPixel += 3) {
        paintSlice();
        for (int mode = View::RedGreen; mode <= View::InvertedOverlay; ++mode)
          for (const int shown : {-1, 1, 2}) {
            view.setViewMode(mode);
            view.displaySlice(shown);
            expectShown(first, second);
          }
      }
    }
  }
}

TEST_F(QxDrawAlignSlicesTest, ShowsBlackWithoutAPair)
{
  view.resize(40, 30);
  view.show();
  QImage black(40, 30, QImage::Format_ARGB32);
  black.fill(Qt::black);
  EXPECT_EQ(difference(picture(), black), "");
  click({20, 15});
  EXPECT_EQ(clicks.count(), 1);
  open(40, 30);
  EXPECT_NE(difference(picture(), black), "");
  view.forgetPair();
  EXPECT_EQ(difference(picture(), black), "");
  view.paintSlice(0, 0, nullptr, nullptr, nullptr, nullptr, first, second, 1, 0);
  drag({20, 15}, {25, 15});
  EXPECT_EQ(difference(picture(), black), "");
  EXPECT_EQ(translations.count(), 0);
}

TEST_F(QxDrawAlignSlicesTest, ScrollsToTheMiddleWhenZoomed)
{
  open(100, 80);
  view.setZoom(4.0f);
  EXPECT_EQ(view.horizontalScrollBar()->maximum(), 4 * kWidth - viewport().width());
  EXPECT_EQ(view.horizontalScrollBar()->value(), (4 * kWidth - viewport().width()) / 2);
  EXPECT_EQ(view.verticalScrollBar()->value(), (4 * kHeight - viewport().height()) / 2);
  const McVec2f p = view.mapWindowToImage(10, 20);
  EXPECT_FLOAT_EQ(p.x, (view.horizontalScrollBar()->value() + 10) / 4.0f);
  EXPECT_FLOAT_EQ(p.y, (view.verticalScrollBar()->value() + 20) / 4.0f);
  view.setZoom(1.0f);
  EXPECT_EQ(viewport(), QSize(100, 80));
  EXPECT_FLOAT_EQ(view.mapWindowToImage(0, 0).x, -19.5f); // a half pixel that the picture's offset drops
  view.setZoom(0.0f);
  view.setZoom(NAN);
  EXPECT_EQ(view.zoom(), 1.0f);
  view.setZoom(1e9f);
  expectShown(first, second);
}

// At zoom 2 ten pixels of the screen are five of the slice, and a translation starts from whole pixels.
TEST_F(QxDrawAlignSlicesTest, MovesTheEditableSlice)
{
  open(200, 160);
  view.setZoom(2.0f);
  press({90.9, 80.2});
  moveTo({100, 77});
  expectShown(first, {-6.0f + 5.0f, 2.0f - 1.5f, -20, true});
  EXPECT_EQ(translations.count(), 0);
  moveTo({110, 70});
  release({0, 0});
  moveTo({0, 0});
  ASSERT_EQ(translations.count(), 1);
  EXPECT_EQ(translations[0], QVariantList({-6.0f + 10.0f, 2.0f - 5.0f, false}));
  EXPECT_EQ(clicks.count(), 1);
  expectShown(first, {4, -3, -20, true});

  view.setEditableSlice(View::FirstSlice);
  drag({100, 80}, {90, 84}, Qt::LeftButton, Qt::ShiftModifier);
  EXPECT_EQ(translations.takeLast(), QVariantList({4.0f - 5.0f, -3.0f + 2.0f, true}));
  expectShown({-1, -1, 12, false}, {-1, -1, -20, true});
  EXPECT_EQ(rotations.count(), 0);
}

// A quarter of a circle counterclockwise about the slice's centre on the screen.
TEST_F(QxDrawAlignSlicesTest, TurnsTheEditableSlice)
{
  second.setXForm({10, 5, 7, false});
  open(200, 160);
  view.setEditableSlice(View::SecondSlice);
  for (const auto& [button, modifiers] :
       {std::pair{Qt::LeftButton, Qt::ControlModifier}, {Qt::MiddleButton, Qt::NoModifier}}) {
    paintSlice();
    press({125, 85}, button, modifiers);
    EXPECT_EQ(shapeOf(view), Qt::BitmapCursor);
    moveTo({110, 70}, button);
    release({110, 70}, button);
    EXPECT_EQ(shapeOf(view), Qt::SizeAllCursor);
    EXPECT_FLOAT_EQ(rotations.last()[0].toFloat(), 97.0f);
    EXPECT_FALSE(rotations.takeLast()[1].toBool());
    expectShown(first, {10, 5, 97, false});
  }

  // With Shift the other slice goes round the centre of the edited one: the pair turns as one body.
  paintSlice();
  press({125, 85}, Qt::MiddleButton, Qt::ShiftModifier | Qt::ControlModifier);
  moveTo({110, 70}, Qt::MiddleButton);
  release({110, 70}, Qt::MiddleButton);
  EXPECT_TRUE(rotations.takeLast()[1].toBool());
  SliceXForm other = first;
  other.rotate(90, 10, 5);
  expectShown(other, {10, 5, 97, false});
  EXPECT_EQ(translations.count(), 0);
}

// A step of the mouse at a time comes to the same as one long step.
TEST_F(QxDrawAlignSlicesTest, TurnsStepByStep)
{
  first.setXForm({0, 0, 0, false});
  open(201, 161); // the middle of the first slice is (100, 80), that of the second (100.5, 80.5)
  view.setEditableSlice(View::FirstSlice);
  press({120, 80}, Qt::MiddleButton);
  for (const QPointF& p : {QPointF(120, 60), QPointF(100, 60), QPointF(80, 60)}) moveTo(p, Qt::MiddleButton);
  release({0, 0}, Qt::MiddleButton);
  EXPECT_FLOAT_EQ(rotations.takeLast()[0].toFloat(), 135.0f);
  second.setXForm({0, 0, 0, false});
  paintSlice();
  view.setEditableSlice(View::SecondSlice);
  drag({120, 80}, {120, 81}, Qt::MiddleButton);
  EXPECT_NEAR(rotations.takeLast()[0].toFloat(), -2 * std::atan2(0.5, 19.5) * 180 / M_PI, 1e-4);
}

// In a viewport of odd size, halves of a pixel decide: they count for moving the first slice only.
TEST_F(QxDrawAlignSlicesTest, HitsTheSliceOnly)
{
  first.setXForm({0, 0, 0, false});
  second.setXForm({0, 0, 0, true});
  open(121, 91);
  const auto moves = [&](QPoint at, Qt::MouseButton button = Qt::LeftButton) {
    drag(at, at + QPoint(3, 0), button);
    const bool any = !translations.isEmpty() || !rotations.isEmpty();
    translations.clear();
    rotations.clear();
    paintSlice();
    return any;
  };
  EXPECT_TRUE(moves({29, 45}));
  EXPECT_FALSE(moves({28, 45}));
  EXPECT_TRUE(moves({90, 45}));
  EXPECT_FALSE(moves({91, 45}));
  EXPECT_TRUE(moves({60, 21}));
  EXPECT_FALSE(moves({60, 20}));
  EXPECT_FALSE(moves({60, 69}));
  view.setEditableSlice(View::FirstSlice);
  EXPECT_FALSE(moves({29, 45}));
  EXPECT_TRUE(moves({30, 45}));
  EXPECT_TRUE(moves({29, 45}, Qt::MiddleButton));
  EXPECT_FALSE(moves({60, 45}, Qt::RightButton));

  // Turned by 90 degrees the slice is high and narrow, and it lies where its translation takes it.
  first.setXForm({20, 0, 90, false});
  paintSlice();
  EXPECT_FALSE(moves({55, 45}));
  EXPECT_TRUE(moves({80, 16}));
  view.setZoom(0.5f);
  EXPECT_FALSE(moves({80, 16}));
  EXPECT_TRUE(moves({70, 32}));
}

TEST_F(QxDrawAlignSlicesTest, TakesADoubleClickForAPress)
{
  open(200, 160);
  mouse(QEvent::MouseButtonDblClick, {100, 80}, Qt::LeftButton, Qt::LeftButton);
  moveTo({101, 80});
  release({101, 80});
  EXPECT_EQ(clicks.count(), 1);
  EXPECT_EQ(translations.count(), 1);
}

// What replaces the thing that is dragged drops the drag: nothing is told, nothing stays moved.
TEST_F(QxDrawAlignSlicesTest, DropsADragThatLostItsObject)
{
  open(200, 160);
  const auto interrupted = [&](const auto& interrupt) {
    press({100, 80}, Qt::LeftButton, Qt::ControlModifier | Qt::ShiftModifier);
    moveTo({110, 60});
    interrupt();
    moveTo({120, 90});
    release({120, 90});
    EXPECT_EQ(rotations.count() + translations.count(), 0);
    EXPECT_EQ(shapeOf(view), Qt::SizeAllCursor);
    expectShown(first, second);
  };
  interrupted([&] { view.setEditMode(View::EditLandmarks), view.setEditMode(View::EditTransform); });
  interrupted([&] { view.setEditableSlice(View::FirstSlice); });
  interrupted([&] { paintSlice(); });
  interrupted([&] { view.transform(first); });
  interrupted([&] { view.hide(), view.show(); });

  // Another button neither starts a second drag nor outlives the end of the first.
  press({100, 80});
  mouse(QEvent::MouseButtonPress, {105, 80}, Qt::MiddleButton, Qt::LeftButton | Qt::MiddleButton);
  moveTo({110, 80});
  release({110, 80});
  moveTo({140, 80});
  release({140, 80}, Qt::MiddleButton);
  EXPECT_EQ(rotations.count(), 0);
  ASSERT_EQ(translations.count(), 1);
  EXPECT_EQ(translations[0][0].toFloat(), 14.0f);

  // The release got lost: the next press starts anew.
  press({100, 80});
  moveTo({150, 80});
  press({100, 80}, Qt::MiddleButton);
  release({100, 80}, Qt::MiddleButton);
  EXPECT_EQ(rotations.count(), 1);
  EXPECT_EQ(translations.count(), 1);
}

// What hears of the outcome may call back into the view, or delete it.
TEST_F(QxDrawAlignSlicesTest, SurvivesWhatItsSignalsCause)
{
  open(200, 160);
  QObject::connect(&view, &View::translated, [&](float x, float, bool) {
    second.translationX = x;
    paintSlice();
  });
  drag({100, 80}, {110, 80});
  expectShown(first, {4, 2.5f, -20, true});

  auto* const other = new View(nullptr, "other");
  EXPECT_EQ(other->objectName(), "other");
  EXPECT_EQ(View::allInstances().size(), 2u);
  QObject::connect(other, &View::click, [other] { delete other; });
  QMouseEvent event(QEvent::MouseButtonPress, QPointF(5, 5), QPointF(5, 5), Qt::LeftButton, Qt::LeftButton,
                    Qt::NoModifier);
  QApplication::sendEvent(other->viewport(), &event);
  ASSERT_EQ(View::allInstances().size(), 1u);
  EXPECT_EQ(View::allInstances()[0], &view);
}

TEST_F(QxDrawAlignSlicesTest, ChoosesWhatIsShown)
{
  open(100, 80);
  view.setFixReference(true);
  EXPECT_EQ(view.displayedSlice(), 2);
  view.displaySlice(-1);
  view.setFixReference(true);
  EXPECT_EQ(view.displayedSlice(), 1);
  view.setEditableSlice(View::FirstSlice);
  EXPECT_EQ(view.displayedSlice(), 1);
  view.setFixReference(false);
  EXPECT_EQ(view.displayedSlice(), -1);
  view.displaySlice(2);
  EXPECT_EQ(view.displayedSlice(), 2);

  view.setRotateCursor(true);
  EXPECT_EQ(shapeOf(view), Qt::BitmapCursor);
  view.setEditMode(View::EditLandmarks);
  view.setRotateCursor(true);
  EXPECT_EQ(shapeOf(view), Qt::ArrowCursor);
  EXPECT_EQ(view.displayedSlice(), -1);
  view.setEditableSlice(View::SecondSlice);
  EXPECT_EQ(view.displayedSlice(), 1);
  view.displaySlice(2);
  EXPECT_EQ(view.displayedSlice(), 1);
  view.setEditMode(View::EditTransform);
  EXPECT_EQ(view.displayedSlice(), 2);
  EXPECT_EQ(shapeOf(view), Qt::SizeAllCursor);

  fieldSize = 9;
  view.updateChessFieldSize(fieldSize);
  EXPECT_EQ(view.viewMode(), View::InvertedOverlay);
  view.chess(3);
  view.updateChessFieldSize(fieldSize);
  expectShown(first, second);
  view.redGreen();
  EXPECT_EQ(view.viewMode(), View::RedGreen);
  view.avg();
  EXPECT_EQ(view.viewMode(), View::Average);
  view.invert();
  EXPECT_EQ(view.viewMode(), View::InvertedOverlay);
}

TEST_F(QxDrawAlignSlicesTest, KeepsItsPictureWhileSuppressed)
{
  open(100, 80);
  const QImage before = picture();
  view.suppressUpdates();
  {
    const View::UpdateSuppression nested(&view);
    view.transform(SliceXForm(9, 9, 9, false));
    EXPECT_EQ(difference(picture(), before), "");
  }
  EXPECT_EQ(difference(picture(), before), "");
  view.resumeUpdates();
  expectShown(first, {9, 9, 9, true}); // the flip is the record's
  view.resumeUpdates();                // one too many does no harm
  const View::UpdateSuppression none(nullptr);
}

TEST_F(QxDrawAlignSlicesTest, OutlinesTheResult)
{
  open(200, 160); // the image starts at (69, 56)
  const QColor light(200, 200, 200);
  const auto isOutline = [&](const QRect& r) {
    const QImage image = picture();
    for (const QPoint& corner : {r.topLeft(), r.topRight(), r.bottomLeft(), r.bottomRight()})
      if (image.pixelColor(corner) != light) return false;
    return image.pixelColor(r.center().x(), r.top()) == light &&
           image.pixelColor(r.left() - 1, r.top()) == Qt::black &&
           image.pixelColor(r.right() + 1, r.bottom()) == Qt::black;
  };
  view.drawImageSize(1.5f, 1.25f, true, -1, 7);
  EXPECT_TRUE(isOutline(QRect(69 - 15 - 1, 56 - 5 - 1, 92, 59)));
  view.drawImageSize(1.5f, 1.25f, true, 20, 7);
  EXPECT_TRUE(isOutline(QRect(69 - 20 - 1, 56 - 7 - 1, 92, 59)));
  EXPECT_FALSE(isOutline(QRect(69 - 15 - 1, 56 - 5 - 1, 92, 59)));
  view.setZoom(2.0f); // the image starts at (39, 33)
  for (const int y : {33 - 14 - 1, 33 - 14 - 1 + 118 - 1}) EXPECT_EQ(picture().pixelColor(5, y), light);
  view.drawImageSize(1.5f, 1.25f, false, 20, 7);
  expectShown(first, second);
  view.drawImageSize(0.9f, 1.25f, true, -1, -1);
  expectShown(first, second);
}

TEST_F(QxDrawAlignSlicesTest, TurnsTheWheelIntoScrollingAndSteps)
{
  open(100, 80);
  view.setZoom(4.0f);
  QSignalSpy steps(&view, &View::zoomStepRequested);
  const int before = view.verticalScrollBar()->value();
  turnWheel(-120, Qt::NoModifier);
  EXPECT_GT(view.verticalScrollBar()->value(), before);
  expectShown(first, second);
  EXPECT_EQ(steps.count(), 0);
  for (const int angle : {60, 60, -240, 119}) turnWheel(angle, Qt::ControlModifier);
  ASSERT_EQ(steps.count(), 3);
  EXPECT_EQ(steps[0][0], 1);
  EXPECT_EQ(steps[1][0], -1);
  EXPECT_EQ(steps[2][0], -1);
}
