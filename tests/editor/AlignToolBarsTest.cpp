#include "qx/QxFullSlider.h"
#include "qx/QxSlider.h"
#include "zxalign/QxAlignToolBar.h"
#include "zxalign/QxAlignTransformToolBar.h"
#include "zxalign/QxAutoAlignToolBar.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QToolButton>

#include <limits>

namespace {

class AlignToolBarsTest : public testing::Test {
protected:
  QMainWindow window;
};

QStringList labelsOf(QxAlignToolBar& bar, void (QxAlignToolBar::*step)(), int steps)
{
  QStringList texts;
  for (int i = 0; i < steps; ++i) {
    (bar.*step)();
    texts += bar.findChild<QLabel*>("zoom")->text();
  }
  return texts;
}

} // namespace

TEST_F(AlignToolBarsTest, ZoomGoesInAndOutByTheStepsOfItsLabel)
{
  QxAlignToolBar bar(&window, "bar");
  QSignalSpy zooms(&bar, &QxAlignToolBar::zoomChanged);
  EXPECT_EQ(bar.findChild<QLabel*>("zoom")->text(), "1:1");
  EXPECT_EQ(labelsOf(bar, &QxAlignToolBar::zoomIn, 7).join('|'), "2:1 |3:1 |4:1 |6:1 |9:1 |14:1 |21:1 ");
  EXPECT_EQ(labelsOf(bar, &QxAlignToolBar::zoomOut, 9).join('|'),
            "14:1 |9:1 |6:1 |4:1 |3:1 |2:1 |1:1 |1:2 |1:4 ");
  EXPECT_EQ(labelsOf(bar, &QxAlignToolBar::zoomIn, 3).join('|'), "1:2 |1:1 |2:1 ");
  ASSERT_EQ(zooms.count(), 19);
  EXPECT_EQ(zooms.at(15).at(0).toFloat(), 0.25f);
  const float smallest = std::numeric_limits<float>::denorm_min();
  labelsOf(bar, &QxAlignToolBar::zoomOut, 200);
  EXPECT_EQ(zooms.takeLast().at(0).toFloat(), smallest);
  bar.zoomIn();
  EXPECT_EQ(zooms.takeLast().at(0).toFloat(), 2 * smallest);
}

TEST_F(AlignToolBarsTest, SettingTheSliceMarksTheReferenceAndTellsNobody)
{
  QxAlignToolBar bar(&window, "bar");
  QSignalSpy changes(&bar, &QxAlignToolBar::sliceChanged);
  bar.setSlicesRange(0, 9);
  bar.setSlice(6, 5);
  auto* slider = bar.findChild<QxFullSlider*>("Slice");
  EXPECT_EQ(slider->getValue(), 6.0f);
  ASSERT_EQ(slider->slider()->getTicks().size(), 1u);
  EXPECT_EQ(slider->slider()->getTicks()[0], 5.0f);
  bar.setSlice(6, 7);
  EXPECT_EQ(slider->slider()->getTicks()[0], 7.0f);
  bar.setSlicesRange(0, 3);
  EXPECT_EQ(changes.count(), 0);
  slider->setValue(2.0f);
  ASSERT_EQ(changes.count(), 1);
  EXPECT_EQ(changes.at(0).at(0).toFloat(), 2.0f);
}

TEST_F(AlignToolBarsTest, ATypedTransformIsOneEditAndASetOneNone)
{
  QxAlignTransformToolBar bar(&window, "bar");
  QSignalSpy x(&bar, &QxAlignTransformToolBar::transXChanged),
      y(&bar, &QxAlignTransformToolBar::transYChanged), rotation(&bar, &QxAlignTransformToolBar::rotChanged),
      flip(&bar, &QxAlignTransformToolBar::flipChanged);
  bar.setTransX(-12);
  bar.setTransY(34);
  bar.setRot(-5.5f);
  bar.setFlip(true);
  EXPECT_EQ(x.count() + y.count() + rotation.count() + flip.count(), 0);
  EXPECT_EQ(bar.findChild<QSpinBox*>("translationY")->value(), 34);

  auto* box = bar.findChild<QSpinBox*>("translationX");
  EXPECT_EQ(box->value(), -12);
  box->selectAll();
  QTest::keyClicks(box, "123");
  EXPECT_EQ(x.count(), 0);
  QTest::keyClick(box, Qt::Key_Return);
  ASSERT_EQ(x.count(), 1);
  EXPECT_EQ(x.at(0).at(0).toInt(), 123);
  bar.findChild<QDoubleSpinBox*>("rotation")->stepUp();
  ASSERT_EQ(rotation.count(), 1);
  EXPECT_FLOAT_EQ(rotation.at(0).at(0).toFloat(), -5.4f);
  bar.findChild<QCheckBox*>("flip")->click();
  ASSERT_EQ(flip.count(), 1);
  EXPECT_FALSE(flip.at(0).at(0).toBool());
}

TEST_F(AlignToolBarsTest, EditingLandmarksChoosesTheirMethodFirst)
{
  QxAutoAlignToolBar bar(&window, "bar");
  const auto button = [&](const char* name) { return bar.findChild<QToolButton*>(name); };
  EXPECT_TRUE(button("alignGray")->isChecked() && button("editTransform")->isChecked() &&
              button("upper")->isChecked());
  button("alignCenters")->click();
  QStringList told;
  QObject::connect(&bar, &QxAutoAlignToolBar::alignModeChanged, &bar,
                   [&](int mode) { told += QString("align %1").arg(mode); });
  QObject::connect(&bar, &QxAutoAlignToolBar::editModeChanged, &bar,
                   [&](int mode) { told += QString("edit %1").arg(mode); });
  button("editLandmarks")->click();
  EXPECT_EQ(told.join('|'), "align 2|edit 3");
  told.clear();
  button("alignEdgeDetection")->click(); // leaves the edit mode alone
  EXPECT_TRUE(button("editLandmarks")->isChecked());
  button("alignCenters")->click(); // goes back to manual alignment
  EXPECT_EQ(told.join('|'), "align 3|edit 1|align 0");
  told.clear();
  button("alignCenters")->click(); // once more, and it stays checked
  EXPECT_EQ(told.join('|'), "edit 1|align 0");
  EXPECT_TRUE(button("alignCenters")->isChecked());
}
