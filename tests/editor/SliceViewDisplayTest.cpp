// The slice view in a real window: events that come from the window system, and what is on the screen.

#include "SliceViewTest.h"

#include <QScreen>
#include <QWindow>

namespace {

using View = QxDrawAlignSlices;

class SliceViewDisplayTest : public SliceViewTest {
protected:
  QImage screenshot()
  {
    const QPoint at = view.viewport()->mapToGlobal(QPoint(0, 0));
    return view.screen()
        ->grabWindow(0, at.x(), at.y(), viewport().width(), viewport().height())
        .toImage()
        .convertToFormat(QImage::Format_RGB32);
  }
  std::string wrongOnScreen(const SliceXForm& a, const SliceXForm& b)
  {
    return difference(screenshot(), expected(a, b));
  }
  // Waits for the screen to show the pair.
  void expectOnScreen(const SliceXForm& a, const SliceXForm& b)
  {
    EXPECT_TRUE(waitFor([&] { return wrongOnScreen(a, b).empty(); })) << wrongOnScreen(a, b);
  }
};

} // namespace

TEST_F(SliceViewDisplayTest, ShowsADragOnTheScreen)
{
  view.move(40, 30);
  open(400, 300);
  view.setZoom(2.0f);
  expectOnScreen(first, second);

  QSignalSpy translations(&view, &View::translated);
  QWindow* const window = view.windowHandle();
  const QPoint start = view.viewport()->mapTo(&view, QPoint(200, 150));
  QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, start);
  for (int i = 1; i <= 10; ++i) QTest::mouseMove(window, start + QPoint(4 * i, -3 * i));
  expectOnScreen(first, {-6.0f + 20, 2.0f - 15, -20, true});
  QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, start + QPoint(40, -30));
  ASSERT_TRUE(waitFor([&] { return translations.count() > 0; }));
  EXPECT_EQ(translations.count(), 1);
  EXPECT_EQ(translations[0], QVariantList({14.0f, -13.0f, false}));
}

TEST_F(SliceViewDisplayTest, LeavesNothingBehindWhenResizedZoomedAndScrolled)
{
  open(300, 200);
  view.drawImageSize(1.4f, 1.4f, true, -1, -1);
  view.resize(420, 280);
  ASSERT_TRUE(waitFor([&] { return viewport() == QSize(420, 280); }));
  view.drawImageSize(1.4f, 1.4f, false, -1, -1);
  expectOnScreen(first, second);
  view.setZoom(9.0f);
  expectOnScreen(first, second);
  for (const int step : {1, -70, 33}) {
    view.horizontalScrollBar()->setValue(view.horizontalScrollBar()->value() + step);
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->value() - 2 * step);
    expectOnScreen(first, second);
  }
  view.setZoom(0.5f);
  expectOnScreen(first, second);
}
