#include "qx/QxImageViewer.h"

#include "ViewerPictures.h"
#include "qx/QxImageViewerShape.h"

#include <gtest/gtest.h>

#include <QPainter>
#include <QSignalSpy>
#include <QTest>
#include <QTransform>
#include <QWheelEvent>

#include <cmath>
#include <limits>

namespace {

constexpr int kWidth = 23, kHeight = 14;

class Line : public QxImageViewerShape {
public:
  void render(QxImageViewer*) override {}
  void paint(QPainter& painter, QxImageViewer* viewer) override
  {
    const double y = viewer->mapImageToScreen(QPointF(0, 5)).y();
    painter.setPen(Qt::red);
    painter.drawLine(QPointF(0, y), QPointF(viewer->getZoomFactor() * viewer->getImageScreenWidth() / 4, y));
  }
};

class ViewerTest : public testing::Test {
protected:
  ViewerTest()
  {
    viewer.resize(301, 187);
    viewer.setGreyImage(grey.data(), McPrimType::UInt8, kWidth, kHeight, 0.0f, 255.0f);
    viewer.setPixelScale(1.0f, 2.0f);
    viewer.show();
  }
  /// Every pixel of the viewer against the image value at its middle, through the mapping under test.
  void expectShownByTheMapping()
  {
    const QImage shown = viewer.snapshot();
    for (int y = 0; y < shown.height(); ++y)
      for (int x = 0; x < shown.width(); ++x) {
        const QPointF p = viewer.mapWidgetToImage(QPointF(x + 0.5, y + 0.5));
        const bool inside = p.x() >= 0 && p.y() >= 0 && p.x() < kWidth && p.y() < kHeight;
        const int at = qFloor(p.y()) * kWidth + qFloor(p.x());
        const int expected = inside ? grey[static_cast<std::size_t>(at)] : 40;
        ASSERT_EQ(qGreen(shown.pixel(x, y)), expected) << x << ", " << y;
      }
  }
  void turnWheel(QPointF place, int angle, Qt::KeyboardModifiers modifiers)
  {
    QWheelEvent event(place, place, QPoint(), QPoint(0, angle), Qt::NoButton, modifiers, Qt::NoScrollPhase,
                      false);
    QApplication::sendEvent(&viewer, &event);
  }
  const std::vector<std::uint8_t> grey = unevenPicture(kWidth, kHeight);
  QxImageViewer viewer{nullptr, QxImageViewer::Surface::Automatic};
};

} // namespace

TEST_F(ViewerTest, ASmallImageLiesInTheMiddleWithItsAspectRatio)
{
  EXPECT_FALSE(viewer.usesOpenGL()); // There is none on this platform.
  viewer.setZoomFactor(5.0f);
  // 115 x 140 in 301 x 187: 93 and 23.5, which is put on a whole pixel.
  EXPECT_EQ(viewer.mapImageToWidget(QPointF(0, 0)), QPointF(93, 24));
  EXPECT_EQ(viewer.mapImageToWidget(QPointF(kWidth, kHeight)), QPointF(208, 164));
  EXPECT_EQ(viewer.mapImageToScreen(QPointF(3, 7)), QPointF(15, 70));
  EXPECT_FLOAT_EQ(viewer.getImageScreenWidth(), 23.0f);
  EXPECT_FLOAT_EQ(viewer.getImageScreenHeight(), 28.0f);
  viewer.setTransposed(true);
  // 140 x 115: rows run downwards.
  EXPECT_EQ(viewer.mapImageToWidget(QPointF(0, 0)), QPointF(81, 36));
  EXPECT_EQ(viewer.mapImageToWidget(QPointF(kWidth, 0)), QPointF(81, 151));
  EXPECT_EQ(viewer.mapImageToScreen(QPointF(3, 7)), QPointF(15, 70));
}

TEST_F(ViewerTest, PixelsAreShownWhereTheMappingSaysSo)
{
  for (const bool transposed : {false, true})
    for (const float zoom : {1.0f, 2.61f, 3.0f, 16.0f, 41.0f}) {
      viewer.setTransposed(transposed);
      viewer.setZoomFactor(zoom);
      for (const QPointF& centre : {QPointF(11, 7), QPointF(4.3, 2.6), QPointF(99, 99)}) {
        viewer.centerOn(centre);
        SCOPED_TRACE(testing::Message() << transposed << " " << zoom << " " << centre.x());
        expectShownByTheMapping();
        for (const QPointF& p : {QPointF(0.5, 13.25), QPointF(-4, 30), QPointF(17, 2)}) {
          const QPointF back = viewer.mapWidgetToImage(viewer.mapImageToWidget(p));
          EXPECT_NEAR(back.x(), p.x(), 1e-9);
          EXPECT_NEAR(back.y(), p.y(), 1e-9);
          const QPointF screen = viewer.screenToWidget().map(viewer.mapImageToScreen(p));
          EXPECT_EQ(screen, viewer.mapImageToWidget(p));
        }
      }
    }
}

TEST_F(ViewerTest, TheGrabbedWidgetIsTheOpaqueSnapshot)
{
  viewer.setZoomFactor(7.0f);
  const QImage snapshot = viewer.snapshot();
  EXPECT_FALSE(snapshot.hasAlphaChannel());
  EXPECT_EQ(viewer.grab().toImage().convertToFormat(snapshot.format()), snapshot);
}

TEST_F(ViewerTest, FittingFollowsTheSizeUntilAnotherZoomIsSet)
{
  QSignalSpy spy(&viewer, &QxImageViewer::zoomFactorChanged);
  viewer.zoomToFit();
  EXPECT_FLOAT_EQ(viewer.getZoomFactor(), 187.0f / 28.0f);
  viewer.resize(100, 187);
  EXPECT_FLOAT_EQ(viewer.getZoomFactor(), 100.0f / 23.0f);
  viewer.setTransposed(true);
  EXPECT_FLOAT_EQ(viewer.getZoomFactor(), 100.0f / 28.0f);
  EXPECT_EQ(spy.count(), 3);
  viewer.setZoomFactor(2.0f);
  viewer.resize(301, 187);
  viewer.setZoomFactor(-1.0f);
  viewer.setZoomFactor(std::numeric_limits<float>::infinity());
  EXPECT_FLOAT_EQ(viewer.getZoomFactor(), 2.0f);
  EXPECT_EQ(spy.count(), 4);
}

TEST_F(ViewerTest, TheWheelWithCtrlKeepsThePointUnderTheMouse)
{
  QSignalSpy steps(&viewer, &QxImageViewer::wheelStepped);
  viewer.setZoomFactor(30.0f);
  viewer.centerOn(QPointF(9, 6));
  const QPointF place(211, 40);
  const QPointF held = viewer.mapWidgetToImage(place);
  for (const int angle : {120, 240, -120}) {
    turnWheel(place, angle, Qt::ControlModifier);
    const QPointF now = viewer.mapImageToWidget(held);
    EXPECT_NEAR(now.x(), place.x(), 2.0);
    EXPECT_NEAR(now.y(), place.y(), 2.0);
  }
  EXPECT_NEAR(viewer.getZoomFactor(), 30.0f * 1.25f * 1.25f, 1e-3);
  EXPECT_EQ(steps.count(), 0);
  turnWheel(place, -60, Qt::NoModifier);
  turnWheel(place, -300, Qt::NoModifier);
  ASSERT_EQ(steps.count(), 1);
  EXPECT_EQ(steps[0][0].toInt(), -3);
}

TEST_F(ViewerTest, DraggingMovesALargeImageUpToItsEdges)
{
  viewer.setZoomFactor(20.0f); // 460 x 560
  const QPointF before = viewer.mapImageToWidget(QPointF(0, 0));
  for (const Qt::MouseButton button : {Qt::LeftButton, Qt::MiddleButton}) {
    QTest::mousePress(&viewer, button, {}, QPoint(100, 100));
    QMouseEvent move(QEvent::MouseMove, QPointF(113, 90), QPointF(113, 90), Qt::NoButton, button, {});
    QApplication::sendEvent(&viewer, &move);
    QTest::mouseRelease(&viewer, button, {}, QPoint(113, 90));
  }
  EXPECT_EQ(viewer.mapImageToWidget(QPointF(0, 0)), before + QPointF(26, -20));
  QTest::mousePress(&viewer, Qt::LeftButton, {}, QPoint(100, 100));
  QMouseEvent far(QEvent::MouseMove, QPointF(900, 900), QPointF(900, 900), Qt::NoButton, Qt::LeftButton, {});
  QApplication::sendEvent(&viewer, &far);
  EXPECT_EQ(viewer.mapImageToWidget(QPointF(0, 0)), QPointF(0, 0));
  // What was dragged beyond the edge need not be dragged back.
  QMouseEvent back(QEvent::MouseMove, QPointF(895, 897), QPointF(895, 897), Qt::NoButton, Qt::LeftButton, {});
  QApplication::sendEvent(&viewer, &back);
  EXPECT_EQ(viewer.mapImageToWidget(QPointF(0, 0)), QPointF(-5, -3));
}

TEST_F(ViewerTest, ThePixelUnderTheMouseIsToldOnce)
{
  QSignalSpy spy(&viewer, &QxImageViewer::pixelHovered);
  viewer.setTransposed(true);
  viewer.setZoomFactor(5.0f);
  const auto hover = [&](QPointF imagePoint) {
    const QPointF p = viewer.mapImageToWidget(imagePoint);
    QMouseEvent move(QEvent::MouseMove, p, p, Qt::NoButton, Qt::NoButton, {});
    QApplication::sendEvent(&viewer, &move);
  };
  hover(QPointF(20.3, 3.2));
  hover(QPointF(20.6, 3.4));
  hover(QPointF(22.9, 13.9));
  hover(QPointF(23.2, 13.9));
  hover(QPointF(-0.1, 2));
  const QList<QList<QVariant>> expected{{20, 3, true}, {22, 13, true}, {-1, -1, false}};
  EXPECT_EQ(QList<QList<QVariant>>(spy), expected);
}

TEST_F(ViewerTest, AShapeIsDrawnOnTheImageAndTurnsWithIt)
{
  Line line;
  viewer.addShape(&line);
  viewer.setZoomFactor(4.0f); // The line goes from x = 0 to 23 of the image's 92 pixels, at y = 40.
  const auto redOf = [&] {
    const QImage shown = viewer.snapshot();
    QRect red;
    for (int y = 0; y < shown.height(); ++y)
      for (int x = 0; x < shown.width(); ++x)
        if (shown.pixel(x, y) == qRgb(255, 0, 0)) red |= QRect(x, y, 1, 1);
    return red;
  };
  QPoint start = viewer.mapImageToWidget(QPointF(0, 0)).toPoint();
  EXPECT_EQ(redOf(), QRect(start + QPoint(0, 40), QSize(24, 1)));
  viewer.setTransposed(true);
  start = viewer.mapImageToWidget(QPointF(0, 0)).toPoint();
  EXPECT_EQ(redOf(), QRect(start + QPoint(40, 0), QSize(1, 24)));
  viewer.removeShape(&line);
  EXPECT_TRUE(redOf().isEmpty());
}

namespace {

/// The grey levels that a viewer shows for a row of values.
template <class T>
std::vector<int> shownGrey(const std::vector<T>& values, float black, float white)
{
  QxImageViewer viewer(nullptr, QxImageViewer::Surface::Painter);
  viewer.resize(64, 64);
  const auto count = static_cast<int>(values.size());
  viewer.setGreyImage(values.data(), mcPrimTypeOf<T>, count, 1, black, white);
  viewer.setZoomFactor(3.0f);
  const QImage shown = viewer.snapshot();
  std::vector<int> grey;
  for (int i = 0; i < count; ++i) {
    const QPoint p = viewer.mapImageToWidget(QPointF(i + 0.5, 0.5)).toPoint();
    grey.push_back(qGreen(shown.pixel(p)));
  }
  return grey;
}

using Greys = std::vector<int>;

} // namespace

TEST(QxImageViewer, EveryTypeIsMappedFromBlackToWhite)
{
  constexpr float inf = std::numeric_limits<float>::infinity();
  constexpr float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(shownGrey<std::uint8_t>({9, 10, 11, 60, 61, 255}, 10, 61), (Greys{0, 0, 5, 250, 255, 255}));
  EXPECT_EQ(shownGrey<std::int16_t>({-32768, -100, 0, 155, 32767}, -100, 155), (Greys{0, 0, 100, 255, 255}));
  EXPECT_EQ(shownGrey<std::uint16_t>({0, 32767, 33022, 65535}, 32767, 33277), (Greys{0, 0, 128, 255}));
  // Neighbours that a float cannot tell apart.
  EXPECT_EQ(shownGrey<std::int32_t>({16777216, 16777217, 16777218}, 16777216, 16777226), (Greys{0, 26, 51}));
  EXPECT_EQ(shownGrey<float>({-inf, nan, 0.0f, 0.25f, 1.0f, inf}, 0, 1), (Greys{0, 0, 0, 64, 255, 255}));
  EXPECT_EQ(shownGrey<double>({double(nan), -1e300, 0.5, 1e300}, 0, 1), (Greys{0, 0, 128, 255}));
  EXPECT_EQ(shownGrey<float>({0.0f, 1.0f, 2.0f}, 2, 0), (Greys{255, 128, 0})); // inverted
  EXPECT_EQ(shownGrey<std::uint8_t>({6, 7, 8}, 7, 7), (Greys{0, 0, 255}));
}

TEST(QxImageViewer, ColourKeepsItsChannelsAndIgnoresAlpha)
{
  const unsigned char rgba[] = {200, 10, 30, 0, 1, 2, 3, 255};
  QxImageViewer viewer(nullptr, QxImageViewer::Surface::Painter);
  viewer.resize(64, 64);
  viewer.setColorImage(rgba, 1, 2);
  viewer.setZoomFactor(8.0f);
  const QImage shown = viewer.snapshot();
  EXPECT_EQ(shown.pixel(viewer.mapImageToWidget(QPointF(0.5, 0.5)).toPoint()), qRgb(200, 10, 30));
  EXPECT_EQ(shown.pixel(viewer.mapImageToWidget(QPointF(0.5, 1.5)).toPoint()), qRgb(1, 2, 3));
  viewer.clearImage();
  EXPECT_EQ(viewer.imageWidth(), 0);
  EXPECT_EQ(viewer.snapshot().pixel(32, 32), qRgb(40, 40, 40));
}

// A checkerboard of single pixels is even grey when reduced, not a pattern of its own.
TEST(QxImageViewer, AReducedImageIsAveraged)
{
  std::vector<std::uint8_t> board(101 * 99);
  for (std::size_t i = 0; i < board.size(); ++i) board[i] = i % 2 ? 200 : 0; // 101 is odd: rows alternate
  QxImageViewer viewer(nullptr, QxImageViewer::Surface::Painter);
  viewer.resize(64, 64);
  viewer.setGreyImage(board.data(), McPrimType::UInt8, 101, 99, 0, 255);
  for (const float zoom : {0.5f, 0.4f, 0.25f, 0.11f}) {
    viewer.setZoomFactor(zoom);
    const QImage shown = viewer.snapshot();
    for (const int offset : {0, 1, 2}) EXPECT_NEAR(qGreen(shown.pixel(31 + offset, 30)), 100, 1) << zoom;
  }
}
