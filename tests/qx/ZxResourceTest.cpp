#include "qx/ZxResource.h"

#include "support/Console.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QPalette>

#include <algorithm>
#include <cmath>

namespace {

constexpr const char* kNames[] = {"AlignAddPoint2.png",
                                  "AlignAll163.png",
                                  "AlignEdgeDetection.png",
                                  "AlignGravity16.png",
                                  "AlignMode.png",
                                  "AlignLandmark164.png",
                                  "AlignLandmarkMode.png",
                                  "AlignMirror.png",
                                  "AlignOne163.png",
                                  "AlignMoveLower16.png",
                                  "AlignMoveUpper16.png",
                                  "AlignRotate.png",
                                  "AlignStat163.png",
                                  "AlignUpdateView163.png",
                                  "AlignZoomIn162.png",
                                  "AlignZoomOut162.png",
                                  "Back.png",
                                  "Close.png",
                                  "ColorVolume.png",
                                  "Console.png",
                                  "Down.png",
                                  "Find.png",
                                  "Forward.png",
                                  "Help.png",
                                  "Home.png",
                                  "Labels.png",
                                  "Module.png",
                                  "Open.png",
                                  "Parameters.png",
                                  "Preferences.png",
                                  "Redo.png",
                                  "Remove.png",
                                  "Save.png",
                                  "SaveAs.png",
                                  "Stop.png",
                                  "Undo.png",
                                  "Up.png",
                                  "Viewer.png",
                                  "Volume.png",
                                  "ZoomFit.png",
                                  "ZoomIn.png",
                                  "ZoomOut.png",
                                  "orvel.png"};

double luminance(QRgb c)
{
  const auto part = [](int v) { return std::pow(v / 255.0, 2.2); };
  return 0.2126 * part(qRed(c)) + 0.7152 * part(qGreen(c)) + 0.0722 * part(qBlue(c));
}

/// Pixels of an icon that stand out from a background, at least as text in large type has to.
int visiblePixels(const QImage& icon, QRgb background)
{
  int count = 0;
  for (int y = 0; y < icon.height(); ++y)
    for (int x = 0; x < icon.width(); ++x) {
      const QRgb c = icon.pixel(x, y);
      const double a = luminance(c) + 0.05, b = luminance(background) + 0.05;
      if (qAlpha(c) > 128 && std::max(a, b) / std::min(a, b) >= 2.5) ++count;
    }
  return count;
}

/// Sets the program's colours while it lives.
class ColorsOf {
public:
  ColorsOf(QColor window, QColor text) : m_before(QApplication::palette())
  {
    QPalette palette(text, window, Qt::white, Qt::black, Qt::gray, text, Qt::white, window, window);
    palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor(128, 128, 128));
    QApplication::setPalette(palette);
  }
  ~ColorsOf() { QApplication::setPalette(m_before); }

private:
  QPalette m_before;
};

} // namespace

TEST(ZxResource, EveryIconIsSeenOnLightAndDarkPalettes)
{
  Console console;
  for (const char* name : kNames) {
    const QIcon icon = ZxResource::readIcon(name);
    ASSERT_FALSE(icon.isNull()) << name;
    for (const bool dark : {false, true}) {
      const QColor window = dark ? QColor(40, 40, 40) : QColor(240, 240, 240);
      const ColorsOf colors(window, dark ? Qt::white : Qt::black);
      const QImage image = icon.pixmap(QSize(16, 16), 1.0).toImage();
      EXPECT_EQ(image.size(), QSize(16, 16)) << name;
      EXPECT_GE(visiblePixels(image, window.rgb()), 10) << name << (dark ? " on dark" : " on light");
    }
  }
  EXPECT_TRUE(console.take().empty());
}

TEST(ZxResource, IconsAreDrawnInThePixelsOfTheScreen)
{
  const QIcon icon = ZxResource::readIcon("AlignMode.png");
  const QPixmap twice = icon.pixmap(QSize(24, 24), 2.0);
  ASSERT_EQ(twice.size(), QSize(48, 48));
  EXPECT_DOUBLE_EQ(twice.devicePixelRatio(), 2.0);
  // Enlarging the small picture would be another one.
  const QImage once = icon.pixmap(QSize(24, 24), 1.0).toImage().scaled(48, 48);
  EXPECT_NE(twice.toImage().convertToFormat(once.format()), once);
}

TEST(ZxResource, ADisabledIconHasTheColourOfDisabledText)
{
  const ColorsOf colors(Qt::white, Qt::black);
  const QImage image =
      ZxResource::readIcon("ColorVolume.png").pixmap(QSize(32, 32), 1.0, QIcon::Disabled).toImage();
  int seen = 0;
  for (int y = 0; y < 32; ++y)
    for (int x = 0; x < 32; ++x)
      if (qAlpha(image.pixel(x, y)) == 255) {
        EXPECT_EQ(image.pixel(x, y), qRgb(128, 128, 128));
        ++seen;
      }
  EXPECT_GT(seen, 100);
}

TEST(ZxResource, AnUnknownNameIsSaidAndGivesNoIcon)
{
  Console console;
  EXPECT_TRUE(ZxResource::readIcon("NoSuchThing.png").isNull());
  EXPECT_EQ(console.take(), Lines{"There is no icon \"NoSuchThing.png\"."});
}
