#include "zxalign/QxViewAlignSlicesOrthogonalLineShape.h"

#include "qx/QxImageViewer.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <QTest>

#include <memory>
#include <vector>

namespace {

constexpr int kWidth = 40;
constexpr int kHeight = 15;

/// A black image with the marker.
class MarkedViewer {
public:
  explicit MarkedViewer(QxImageViewer::Surface surface) : viewer(nullptr, surface)
  {
    const std::vector<unsigned char> black(kWidth * kHeight);
    viewer.setGreyImage(black.data(), McPrimType::UInt8, kWidth, kHeight, 0, 255);
    viewer.setPixelScale(1.0f, 2.5f);
    viewer.addShape(&marker);
    viewer.resize(400, 360);
    viewer.show();
    EXPECT_TRUE(waitForExposed(&viewer));
  }
  QImage picture(int slice, int length, float zoom, bool transposed)
  {
    marker.setSliceNumber(slice);
    marker.setOrthoViewLineWidth(length);
    viewer.setZoomFactor(zoom);
    viewer.setTransposed(transposed);
    static_cast<void>(viewer.grab());
    return viewer.snapshot();
  }

  QxViewAlignSlicesOrthogonalLineShape marker{0};
  QxImageViewer viewer;
};

bool isRed(const QImage& picture, const QPoint& p) { return picture.pixel(p) == qRgb(255, 0, 0); }

int countRed(const QImage& picture)
{
  int red = 0;
  for (int y = 0; y < picture.height(); ++y)
    for (int x = 0; x < picture.width(); ++x) red += isRed(picture, {x, y});
  return red;
}

int countOtherMarks(const QImage& a, const QImage& b)
{
  if (a.size() != b.size()) return -1;
  int different = 0;
  for (int y = 0; y < a.height(); ++y)
    for (int x = 0; x < a.width(); ++x) different += isRed(a, {x, y}) != isRed(b, {x, y});
  return different;
}

} // namespace

TEST(QxViewAlignSlicesOrthogonalLineShape, MarksTheMiddleOfTheSlicesRowFromBothSides)
{
  MarkedViewer marked(QxImageViewer::Surface::Painter);
  for (const bool transposed : {false, true}) {
    const QImage picture = marked.picture(7, 50, 4.0f, transposed);
    EXPECT_EQ(countRed(picture), 2 * kWidth); // a quarter of 4 x 40 from each side, one pixel thick
    const auto at = [&](double x) { return marked.viewer.mapImageToWidget({x, 7.5}).toPoint(); };
    EXPECT_TRUE(isRed(picture, at(0.1)));
    EXPECT_TRUE(isRed(picture, at(9.8)));
    EXPECT_FALSE(isRed(picture, at(10.2)));
    EXPECT_FALSE(isRed(picture, at(29.8)));
    EXPECT_TRUE(isRed(picture, at(30.2)));
    EXPECT_TRUE(isRed(picture, at(39.8)));
  }
  EXPECT_EQ(countRed(marked.picture(7, 100, 4.0f, false)), 4 * kWidth);
  EXPECT_EQ(countRed(marked.picture(7, 0, 4.0f, false)), 0);
}

TEST(QxViewAlignSlicesOrthogonalLineShape, IsInTheSamePlaceOnBothSurfaces)
{
  MarkedViewer painted(QxImageViewer::Surface::Painter);
  MarkedViewer rendered(QxImageViewer::Surface::OpenGL);
  if (!rendered.viewer.usesOpenGL()) GTEST_SKIP() << "no OpenGL on this platform";
  for (const bool transposed : {false, true})
    for (const float zoom : {0.5f, 1.0f, 3.0f, 9.0f})
      for (const int length : {0, 33, 50, 100})
        for (const int slice : {0, 6, 14})
          EXPECT_EQ(countOtherMarks(rendered.picture(slice, length, zoom, transposed),
                                    painted.picture(slice, length, zoom, transposed)),
                    0)
              << "slice " << slice << " length " << length << " zoom " << zoom << " transposed "
              << transposed;
}
