#include "qx/QxFullSlider.h"

#include "qx/QxSlider.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>

namespace {

class FullSliderTest : public testing::Test {
protected:
  FullSliderTest()
  {
    slider.setFixedSize(175, 21);
    slider.setMinMax(0.0f, 249.0f);
    slider.setIncrement(1.0f);
    slider.setFormat("%.0f");
    slider.setSliderFrameStyle(2);
    slider.setValue(12.0f);
    slider.show();
    spy.clear();
  }
  void type(const char* text, Qt::Key end)
  {
    slider.field()->selectAll();
    QTest::keyClicks(slider.field(), text);
    QTest::keyClick(slider.field(), end);
  }
  QxFullSlider slider{nullptr, "Slice"};
  QSignalSpy spy{&slider, &QxFullSlider::valueChanged};
};

} // namespace

TEST_F(FullSliderTest, TypedTextIsTakenOnReturnAndClamped)
{
  struct Row {
    const char* text;
    float value;
    const char* shown;
  };
  for (const Row& r : {Row{"78", 78.0f, "78"},
                       {" 9 ", 9.0f, "9"},
                       {"1e2", 100.0f, "100"},
                       {"700", 249.0f, "249"},
                       {"-4", 0.0f, "0"},
                       {"x7", 0.0f, "0"},
                       {"", 0.0f, "0"},
                       {"nan", 0.0f, "0"}}) {
    type(r.text, Qt::Key_Return);
    EXPECT_FLOAT_EQ(slider.getValue(), r.value) << r.text;
    EXPECT_EQ(slider.field()->text(), r.shown) << r.text;
  }
  EXPECT_EQ(spy.count(), 5); // One for each text that gave another value.
}

TEST_F(FullSliderTest, TextIsTakenWhenTheFocusLeavesAndDroppedOnEscape)
{
  type("33", Qt::Key_Escape);
  EXPECT_FLOAT_EQ(slider.getValue(), 12.0f);
  EXPECT_EQ(slider.field()->text(), "12");
  slider.activateWindow();
  ASSERT_TRUE(waitForActive(&slider));
  slider.field()->setFocus();
  slider.field()->selectAll();
  QTest::keyClicks(slider.field(), "34");
  EXPECT_EQ(spy.count(), 0);
  slider.slider()->setFocus();
  EXPECT_FLOAT_EQ(slider.getValue(), 34.0f);
}

// The field shows 3 for 2.6; passing through it must not make that the value.
TEST_F(FullSliderTest, ARoundedTextThatNobodyTouchedChangesNothing)
{
  slider.setValue(2.6f);
  EXPECT_EQ(slider.field()->text(), "3");
  spy.clear();
  QTest::keyClick(slider.field(), Qt::Key_Return);
  EXPECT_FLOAT_EQ(slider.getValue(), 2.6f);
  EXPECT_EQ(spy.count(), 0);
}

TEST_F(FullSliderTest, SliderAndFieldShowOneValueAndSayItOnce)
{
  QTest::keyClick(slider.slider(), Qt::Key_Right);
  EXPECT_EQ(slider.field()->text(), "13");
  QTest::keyClick(slider.field(), Qt::Key_Up);
  EXPECT_EQ(slider.field()->text(), "14");
  slider.setValue(14.0f);
  slider.setValue(200.0f);
  EXPECT_EQ(spy.count(), 3);
  EXPECT_FLOAT_EQ(slider.slider()->getValue(), 200.0f);
  slider.setMinMax(0.0f, 99.0f);
  EXPECT_EQ(slider.field()->text(), "99");
  EXPECT_EQ(spy.count(), 4);
  EXPECT_EQ(slider.objectName(), "Slice");
  EXPECT_EQ(slider.findChild<QLineEdit*>("field"), slider.field());
}

TEST_F(FullSliderTest, TheFieldIsAsWideAsTheLongestValue)
{
  const QFontMetrics letters = slider.field()->fontMetrics();
  const int before = slider.field()->maximumWidth();
  slider.setMinMax(-99999.0f, 5.0f);
  EXPECT_EQ(slider.field()->maximumWidth() - before,
            letters.horizontalAdvance("-99999") - letters.horizontalAdvance("249"));
  EXPECT_LT(slider.field()->maximumWidth(), 110); // The slider keeps room.
}
