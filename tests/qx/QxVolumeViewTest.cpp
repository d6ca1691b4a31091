#include "Desktop.h"

#include <QLabel>
#include <QLineEdit>
#include <QToolButton>
#include <QWheelEvent>

#include "qx/QxImageViewer.h"

namespace {

class QxVolumeViewTest : public Desktop {
protected:
  QImage shown() const { return find<QxImageViewer>("viewer")->snapshot(); }
  /// The colour at an image position.
  QColor colorAt(double x, double y) const
  {
    auto* viewer = find<QxImageViewer>("viewer");
    const QPointF corner = viewer->mapWidgetToImage({0, 0}), step = viewer->mapWidgetToImage({1, 1}) - corner;
    const QPointF point((x - corner.x()) / step.x(), (y - corner.y()) / step.y());
    const QImage image = shown();
    return image.pixelColor((point * image.devicePixelRatio()).toPoint());
  }
  void enter(const char* field, const char* text) const
  {
    find<QLineEdit>(field)->setFocus();
    find<QLineEdit>(field)->selectAll();
    QTest::keyClicks(find(field), text);
    QTest::keyClick(find(field), Qt::Key_Return);
  }
};

} // namespace

TEST_F(QxVolumeViewTest, ShowsTheSelectedVolumeSliceBySliceWithinTheGreyWindow)
{
  EXPECT_TRUE(find("openHint")->isVisible());
  window->select(addVolume("stack", 2).get());
  settle();
  EXPECT_FALSE(find("openHint")->isVisible());
  auto* viewer = find<QxImageViewer>("viewer");
  EXPECT_EQ(colorAt(6.5, 4.5).red(), 146); // the middle one of two is the upper
  Q_EMIT viewer->wheelStepped(-5);
  EXPECT_EQ(colorAt(6.5, 4.5).red(), 46);
  EXPECT_EQ(colorAt(0.5, 4.5).red(), 40);
  enter("blackField", "40");
  enter("whiteField", "46");
  EXPECT_EQ(colorAt(0.5, 4.5).red(), 0);
  EXPECT_EQ(colorAt(6.5, 4.5).red(), 255);
  EXPECT_EQ(colorAt(6.5, 0.5).red(), 0);
  pool.remove(pool.find("stack"));
  settle();
  EXPECT_TRUE(find("openHint")->isVisible());
}

TEST_F(QxVolumeViewTest, TellsPlaceAndValueUnderTheCursor)
{
  const auto stack = addVolume("stack", 3);
  ZxFileGeometry geometry{{10, 20, 30}, {0.5, 2, 4}, "nm"};
  geometry.store(stack->parameters());
  stack->getLattice()->setBoundingBox(geometry.box(stack->getLattice()->getDims()));
  window->select(stack.get());
  settle();
  auto* viewer = find<QxImageViewer>("viewer");
  Q_EMIT viewer->pixelHovered(3, 2, true);
  EXPECT_EQ(find<QLabel>("pixelText")->text(), "x 3, y 2  (11.5, 24, 34 nm)  value 123");
  Q_EMIT viewer->pixelHovered(7, 2, false);
  EXPECT_EQ(find<QLabel>("pixelText")->text(), "");
  // Voxels four times as high as wide.
  EXPECT_NEAR(viewer->getImageScreenHeight() / viewer->getImageScreenWidth(), 4.0 * 5 / 7, 1e-4);
}

TEST_F(QxVolumeViewTest, GivesEachLabelItsColour)
{
  const auto labels = makeLabels<std::uint16_t>({3, 1, 1}, [](int x, auto...) { return 300 * x; });
  labels->setLabel("cells");
  pool.add(labels.get());
  window->select(labels.get());
  settle();
  EXPECT_EQ(colorAt(0.5, 0.5), QColor(Qt::black));
  EXPECT_NE(colorAt(1.5, 0.5), colorAt(2.5, 0.5));
  EXPECT_GT(colorAt(1.5, 0.5).value(), 200);
  EXPECT_FALSE(find("greyWindow")->isVisible());
}
