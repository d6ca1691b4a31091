#include "qx/QxSlider.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>

#include <limits>

namespace {

void turnWheel(QWidget& widget, int angle, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
  QWheelEvent event(QPointF(5, 5), QPointF(5, 5), QPoint(), QPoint(0, angle), Qt::NoButton, modifiers,
                    Qt::NoScrollPhase, false);
  QApplication::sendEvent(&widget, &event);
}

/// -3 ... 17 in steps of 0.5: a minimum that is not 0, so that a grid counted from 0 or a lost offset shows.
class SliderTest : public testing::Test {
protected:
  SliderTest()
  {
    slider.resize(219, 24);
    slider.setMinMax(-3.25f, 17.0f);
    slider.setIncrement(0.5f);
    slider.setValue(1.75f);
    spy.clear();
  }
  QxSlider slider;
  QSignalSpy spy{&slider, &QxSlider::valueChanged};
};

} // namespace

TEST_F(SliderTest, KeysStepByTheIncrementAndStopAtTheLimits)
{
  struct Row {
    Qt::Key key;
    float expected;
  };
  for (const Row& r : {Row{Qt::Key_Right, 2.25f},
                       {Qt::Key_Up, 2.75f},
                       {Qt::Key_Left, 2.25f},
                       {Qt::Key_Down, 1.75f},
                       {Qt::Key_PageUp, 6.75f},
                       {Qt::Key_PageDown, 1.75f},
                       {Qt::Key_End, 17.0f},
                       {Qt::Key_Right, 17.0f},
                       {Qt::Key_Home, -3.25f},
                       {Qt::Key_PageDown, -3.25f}}) {
    QTest::keyClick(&slider, r.key);
    EXPECT_FLOAT_EQ(slider.getValue(), r.expected) << r.key;
  }
  EXPECT_EQ(spy.count(), 8); // None for the keys at the limits.
}

TEST_F(SliderTest, ManyStepsOfATenthStayOnTheGrid)
{
  slider.setMinMax(0.0f, 1000.0f);
  slider.setIncrement(0.1f);
  slider.setValue(0.0f);
  for (int i = 0; i < 3000; ++i) slider.stepBy(1);
  EXPECT_FLOAT_EQ(slider.getValue(), 300.0f);
}

TEST_F(SliderTest, PartsOfAWheelStepAddUp)
{
  turnWheel(slider, 60);
  EXPECT_EQ(spy.count(), 0);
  turnWheel(slider, 60);
  EXPECT_FLOAT_EQ(slider.getValue(), 2.25f);
  turnWheel(slider, -240);
  EXPECT_FLOAT_EQ(slider.getValue(), 1.25f);
  turnWheel(slider, 120, Qt::ControlModifier);
  EXPECT_FLOAT_EQ(slider.getValue(), 6.25f);
}

TEST_F(SliderTest, DraggingSnapsToTheGridOfTheMinimum)
{
  QTest::mousePress(&slider, Qt::LeftButton, {}, QPoint(0, 9));
  EXPECT_FLOAT_EQ(slider.getValue(), -3.25f);
  for (const int x : {40, 97, 150, 173}) {
    QTest::mouseMove(&slider, QPoint(x, 9));
    const float steps = (slider.getValue() + 3.25f) / 0.5f;
    EXPECT_FLOAT_EQ(steps, std::round(steps)) << x;
    EXPECT_NEAR(slider.getValue(), -3.25 + 20.25 * (x - 8) / (219 - 16), 0.9) << x;
  }
  QTest::mouseMove(&slider, QPoint(900, 9));
  EXPECT_FLOAT_EQ(slider.getValue(), 17.0f);
  QTest::mouseRelease(&slider, Qt::LeftButton, {}, QPoint(900, 9));
  QTest::mouseMove(&slider, QPoint(20, 9));
  EXPECT_FLOAT_EQ(slider.getValue(), 17.0f); // Nothing moves without the button.
}

TEST_F(SliderTest, TheHandleStaysUnderTheMouseThatHoldsIt)
{
  const float before = slider.getValue();
  // The handle is at about a quarter; a press beside its centre alone moves nothing.
  const int centre = 8 + qRound((219 - 16) * (before + 3.25) / 20.25);
  QTest::mouseClick(&slider, Qt::LeftButton, {}, QPoint(centre + 4, 9));
  EXPECT_FLOAT_EQ(slider.getValue(), before);
}

TEST_F(SliderTest, ValuesOutsideAreClampedAndNothingIsSaidTwice)
{
  slider.setValue(99.0f);
  slider.setValue(17.0f);
  slider.setValue(std::numeric_limits<float>::quiet_NaN());
  ASSERT_EQ(spy.count(), 1);
  EXPECT_FLOAT_EQ(spy[0][0].toFloat(), 17.0f);
  slider.setMinMax(2.0f, 4.0f);
  EXPECT_FLOAT_EQ(slider.getValue(), 4.0f);
  slider.setMinMax(9.0f, 1.0f);
  EXPECT_FLOAT_EQ(slider.getValue(), 9.0f);
  EXPECT_FLOAT_EQ(slider.getMaximum(), 9.0f);
  EXPECT_EQ(spy.count(), 3);
  QTest::keyClick(&slider, Qt::Key_Right); // A range of one value divides by nothing.
  QTest::mouseClick(&slider, Qt::LeftButton, {}, QPoint(100, 9));
  EXPECT_FLOAT_EQ(slider.getValue(), 9.0f);
}

TEST_F(SliderTest, ATickIsDrawnBelowItsValueInsideTheRangeOnly)
{
  const QImage without = slider.grab().toImage();
  slider.setTicks({-9.0f, 11.0f, 30.0f});
  const QImage with = slider.grab().toImage();
  QRect changed;
  for (int y = 0; y < with.height(); ++y)
    for (int x = 0; x < with.width(); ++x)
      if (with.pixel(x, y) != without.pixel(x, y)) changed |= QRect(x, y, 1, 1);
  EXPECT_NEAR(changed.center().x(), 8 + (219 - 16) * (11.0 + 3.25) / 20.25, 2.0);
  EXPECT_GT(changed.top(), 12);
  EXPECT_LE(changed.width(), 8);
}

TEST_F(SliderTest, AScreenReaderSeesAndSetsTheValue)
{
  QAccessibleInterface* seen = QAccessible::queryAccessibleInterface(&slider);
  ASSERT_TRUE(seen && seen->valueInterface());
  EXPECT_EQ(seen->role(), QAccessible::Slider);
  EXPECT_FLOAT_EQ(seen->valueInterface()->minimumValue().toFloat(), -3.25f);
  EXPECT_FLOAT_EQ(seen->valueInterface()->maximumValue().toFloat(), 17.0f);
  seen->valueInterface()->setCurrentValue(2.5);
  EXPECT_FLOAT_EQ(slider.getValue(), 2.5f);
}
