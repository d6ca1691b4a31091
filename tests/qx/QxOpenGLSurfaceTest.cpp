// The surface that draws by OpenGL, against the painter's.
#include "ViewerPictures.h"
#include "qx/QxImageViewer.h"
#include "qx/QxImageViewerShape.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <QMainWindow>
#include <QPainter>
#include <QSettings>
#include <QTest>
#include <QVBoxLayout>

#include <GL/gl.h>

namespace {

constexpr int kWidth = 131, kHeight = 77;
constexpr int kFewPixels = 260 * 190 / 50;

/// Two lines along an image row at a broken coordinate, and one along a column.
class Marker : public QxImageViewerShape {
public:
  void render(QxImageViewer* viewer) override
  {
    glLineWidth(1.0f);
    glColor3f(1.0f, 0.0f, 0.0f);
    glBegin(GL_LINES);
    for (const QLineF& line : lines(viewer))
      for (const QPointF& p : {line.p1(), line.p2()})
        glVertex2f(static_cast<float>(p.x()), static_cast<float>(p.y()));
    glEnd();
  }
  void paint(QPainter& painter, QxImageViewer* viewer) override
  {
    painter.setPen(Qt::red);
    painter.drawLines(lines(viewer));
  }

private:
  static QList<QLineF> lines(QxImageViewer* viewer)
  {
    const QPointF p = viewer->mapImageToScreen(QPointF(0, 20.3));
    const double width = viewer->getZoomFactor() * viewer->getImageScreenWidth();
    const double x = viewer->mapImageToScreen(QPointF(40, 0)).x();
    return {
        {0, p.y(), 0.25 * width, p.y()}, {0.75 * width, p.y(), width, p.y()}, {x, p.y() + 9, x, p.y() + 30}};
  }
};

class OpenGLTest : public testing::Test {
protected:
  ~OpenGLTest() override { QxImageViewer::setTextureLimit(0); }

  std::unique_ptr<QxImageViewer> make(QxImageViewer::Surface surface)
  {
    auto viewer = std::make_unique<QxImageViewer>(nullptr, surface);
    viewer->setGeometry(20, 20, 260, 190);
    viewer->setGreyImage(grey.data(), McPrimType::UInt8, kWidth, kHeight, 0, 255);
    viewer->setPixelScale(1.0f, 2.0f);
    viewer->addShape(&marker);
    viewer->show();
    EXPECT_TRUE(waitForExposed(viewer.get()));
    EXPECT_EQ(viewer->usesOpenGL(), surface == QxImageViewer::Surface::OpenGL);
    return viewer;
  }
  /// Both surfaces at many zooms and places. A pixel of the screen whose middle is the edge between two of
  /// the image may show either, and the last one of a line may be missing.
  void expectSame(QxImageViewer& painter, QxImageViewer& openGL)
  {
    for (const bool transposed : {false, true})
      for (const float zoom : {1.0f, 2.0f, 6.0f, 2.61f, 0.44f, 0.3f})
        for (const QPointF& centre : {QPointF(60, 40), QPointF(9.4, 71)}) {
          for (QxImageViewer* viewer : {&painter, &openGL}) {
            viewer->setTransposed(transposed);
            viewer->setZoomFactor(zoom);
            viewer->centerOn(centre);
          }
          const int differ = differingPixels(painter.snapshot(), openGL.snapshot(), 4);
          const int allowed = zoom == 1.0f || zoom == 2.0f || zoom == 6.0f ? 4 : kFewPixels;
          EXPECT_LE(differ, allowed) << zoom << (transposed ? " transposed" : "") << " at " << centre.x();
        }
  }
  const std::vector<std::uint8_t> grey = unevenPicture(kWidth, kHeight);
  Marker marker;
};

} // namespace

TEST_F(OpenGLTest, ShowsWhatThePainterShows)
{
  const auto painter = make(QxImageViewer::Surface::Painter);
  const auto openGL = make(QxImageViewer::Surface::OpenGL);
  expectSame(*painter, *openGL);
  std::vector<unsigned char> rgba;
  for (const std::uint8_t v : grey) rgba.insert(rgba.end(), {v, static_cast<unsigned char>(255 - v), 9, 0});
  for (QxImageViewer* viewer : {painter.get(), openGL.get()})
    viewer->setColorImage(rgba.data(), kWidth, kHeight);
  expectSame(*painter, *openGL);
}

TEST_F(OpenGLTest, TilesLeaveNoSeams)
{
  QxImageViewer::setTextureLimit(19);
  const auto painter = make(QxImageViewer::Surface::Painter);
  const auto openGL = make(QxImageViewer::Surface::OpenGL);
  expectSame(*painter, *openGL);
}

TEST_F(OpenGLTest, TheMarkerIsRedWhereItBelongs)
{
  const auto openGL = make(QxImageViewer::Surface::OpenGL);
  for (const bool transposed : {false, true}) {
    openGL->setTransposed(transposed);
    openGL->setZoomFactor(1.0f);
    const QImage shown = openGL->snapshot();
    const auto at = [&](double x, double y) {
      return shown.pixel(openGL->mapImageToWidget(QPointF(x, y)).toPoint());
    };
    EXPECT_EQ(at(10, 20), qRgb(255, 0, 0)); // 20 x 2 = 40, the row of 40.6
    EXPECT_NE(at(60, 20), qRgb(255, 0, 0));
    EXPECT_EQ(at(120, 20), qRgb(255, 0, 0));
    EXPECT_EQ(at(40, 30), qRgb(255, 0, 0));
  }
}

TEST_F(OpenGLTest, AnImageAndAWindowCanBeReplaced)
{
  const auto painter = make(QxImageViewer::Surface::Painter);
  auto openGL = make(QxImageViewer::Surface::OpenGL);
  openGL->snapshot();
  const std::vector<std::uint8_t> other = unevenPicture(kHeight, kWidth);
  for (QxImageViewer* viewer : {painter.get(), openGL.get()})
    viewer->setGreyImage(other.data(), McPrimType::UInt8, kHeight, kWidth, 30, 200);
  EXPECT_LE(differingPixels(painter->snapshot(), openGL->snapshot(), 0), kFewPixels);

  const QImage before = openGL->snapshot();
  QWidget window; // Its OpenGL context is another one.
  window.setGeometry(300, 20, 260, 190);
  auto* column = new QVBoxLayout(&window);
  column->setContentsMargins(0, 0, 0, 0);
  QxImageViewer* moved = openGL.release();
  column->addWidget(moved);
  window.show();
  ASSERT_TRUE(waitForExposed(&window));
  EXPECT_EQ(moved->snapshot(), before);
  EXPECT_EQ(window.grab().toImage().convertToFormat(before.format()), before);
}

TEST_F(OpenGLTest, SoftwareIsNotUsedUnlessTheSettingAsksForIt)
{
  QSettings settings("zxalign", "orvel");
  settings.remove("viewer/openGL");
  EXPECT_FALSE(QxImageViewer().usesOpenGL()); // The tests draw in software.
  settings.setValue("viewer/openGL", true);
  EXPECT_TRUE(QxImageViewer().usesOpenGL());
  settings.setValue("viewer/openGL", false);
  EXPECT_FALSE(QxImageViewer().usesOpenGL());
  settings.remove("viewer/openGL");
}
