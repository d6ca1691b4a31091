#include "zxalign/QxViewAlignSlicesOrthogonalCommonToolBar.h"

#include "OrthoViewTest.h"
#include "qx/QxFullSlider.h"
#include "zx/ZxSettingsMgr.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QToolButton>

using enum OrthoOrientation;

namespace {

class QxViewAlignSlicesOrthogonalCommonToolBarTest : public OrthoViewTest {
protected:
  void show()
  {
    openBoth(greyStack({17, 12, 30}));
    editor->resize(1500, 700);
    editor->show();
    ASSERT_TRUE(waitForExposed(editor.get()));
  }
  QxFullSlider& slider(int i) { return *bar().findChildren<QxFullSlider*>("Slice").at(i); }
  /// Makes the column of the sagittal view black, to see whether it is computed again.
  void spoil() { view(Sagittal)->image().clearRow(3); }
  bool isSpoilt() { return shownRow(Sagittal, 3) == Bytes(12, 0); }
};

} // namespace

TEST_F(QxViewAlignSlicesOrthogonalCommonToolBarTest, ControlsStandInOrderWithTheirTexts)
{
  show();
  EXPECT_EQ(bar().windowTitle(), "Ortho View Settings");
  EXPECT_EQ(editor->toolBarArea(&bar()), Qt::TopToolBarArea);
  QStringList names;
  for (QAction* action : bar().actions()) names << bar().widgetForAction(action)->objectName();
  EXPECT_EQ(names,
            (QStringList{"sagittalLabel", "Slice", "coronalLabel", "Slice", "showZWindow", "zWindowLabel",
                         "zWindowWidth", "updateViews", "autoUpdate", "zoomIn", "zoomOut", "zoomLabel"}));
  EXPECT_EQ(child<QLabel>("sagittalLabel")->text(), "Sagittal:");
  ZxSettingsMgr::getInstance()->setUsesAnatomicalNames(false);
  EXPECT_EQ(child<QLabel>("sagittalLabel")->text(), "YZ:");
  EXPECT_EQ(child<QLabel>("coronalLabel")->text(), "XZ:");
  ZxSettingsMgr::getInstance()->setUsesAnatomicalNames(true);
  EXPECT_EQ(child<QToolButton>("updateViews")->toolTip(), "Update orthogonal views");
  EXPECT_EQ(child<QToolButton>("zoomOut")->toolTip(), "Zoom out");
  EXPECT_FALSE(child<QToolButton>("updateViews")->icon().isNull());
  EXPECT_EQ(slider(0).width(), 175);
  EXPECT_EQ(slider(0).getValue(), 8.0f);
  EXPECT_EQ(slider(1).getValue(), 6.0f);
}

TEST_F(QxViewAlignSlicesOrthogonalCommonToolBarTest, SlidersShowForTheirViewsAndCutsOnly)
{
  show();
  EXPECT_TRUE(slider(0).isVisible());
  views->showSagittalView(false);
  EXPECT_TRUE(waitFor([this] { return !slider(0).isVisible(); }));
  EXPECT_FALSE(child<QLabel>("sagittalLabel")->isVisible());
  EXPECT_TRUE(slider(1).isVisible());
  views->setUseMaxIntProj(true);
  EXPECT_TRUE(waitFor([this] { return !slider(1).isVisible(); }));
  views->showSagittalView(true);
  EXPECT_TRUE(waitFor([this] { return !slider(0).isVisible(); }));
  views->setUseMaxIntProj(false);
  EXPECT_TRUE(waitFor([this] { return slider(0).isVisible() && slider(1).isVisible(); }));
}

TEST_F(QxViewAlignSlicesOrthogonalCommonToolBarTest, APersonMovesTheCutsAndCodeDoesNotEcho)
{
  show();
  slider(0).setValue(3.0f); // as dragging does
  EXPECT_EQ(views->getSliceNumberSagittal(), 3);
  EXPECT_TRUE(isUpToDate());
  const QSignalSpy changes(&slider(1), &QxFullSlider::valueChanged);
  views->setSliceNumberCoronal(11);
  EXPECT_EQ(slider(1).getValue(), 11.0f);
  EXPECT_EQ(changes.size(), 0);
  bar().coronalSliceNumberChange(4.6f);
  EXPECT_EQ(views->getSliceNumberCoronal(), 5);
}

TEST_F(QxViewAlignSlicesOrthogonalCommonToolBarTest, TheWidthCountsOnceTheZWindowIsShown)
{
  show();
  auto& field = *child<QLineEdit>("zWindowWidth");
  EXPECT_EQ(field.text(), "10");
  EXPECT_EQ(field.maxLength(), 3);
  EXPECT_FALSE(field.isEnabled());
  EXPECT_FALSE(child<QLabel>("zWindowLabel")->isEnabled());
  bar().setShowZRange(true); // from code: nothing follows
  EXPECT_FALSE(views->getShowZRange());
  bar().setShowZRange(false);

  child<QCheckBox>("showZWindow")->click();
  EXPECT_TRUE(views->getShowZRange());
  EXPECT_TRUE(field.isEnabled());
  const auto type = [&field](const char* text) {
    field.selectAll();
    QTest::keyClicks(&field, text);
    QTest::keyClick(&field, Qt::Key_Return);
  };
  type("25");
  EXPECT_EQ(views->getZRange(), 25);
  for (const char* wrong : {"x", "-3", ""}) {
    type(wrong);
    EXPECT_EQ(views->getZRange(), 25);
    EXPECT_EQ(field.text(), "25") << wrong;
  }
  views->setZRange(4);
  EXPECT_EQ(field.text(), "4");
  EXPECT_TRUE(isUpToDate());
}

TEST_F(QxViewAlignSlicesOrthogonalCommonToolBarTest, UpdatesByTheButtonWhileItIsNotAutomatic)
{
  show();
  child<QCheckBox>("autoUpdate")->click();
  EXPECT_FALSE(bar().getAutoUpdate());
  spoil();
  turn(3, {0.0f, 0.0f, 90.0f, false});
  EXPECT_TRUE(isSpoilt());
  child<QToolButton>("updateViews")->click();
  EXPECT_TRUE(isUpToDate());
  spoil();
  child<QCheckBox>("autoUpdate")->click(); // only from now on
  EXPECT_TRUE(isSpoilt());
  bar().setAutoUpdate(false);
  EXPECT_FALSE(child<QCheckBox>("autoUpdate")->isChecked());
  EXPECT_TRUE(isSpoilt());
  ZxRecordingWorkArea area;
  bar().setAutoUpdate(true);
  EXPECT_EQ(area.getNumQueries(), 30); // one pass
  EXPECT_TRUE(isUpToDate());
}

TEST_F(QxViewAlignSlicesOrthogonalCommonToolBarTest, ItGoesWithTheLastView)
{
  show();
  const QPointer<QToolBar> first = views->getToolBar();
  child<QToolButton>("zoomIn")->click();
  EXPECT_EQ(child<QLabel>("zoomLabel")->text(), "2:1 ");
  views->showSagittalView(false);
  EXPECT_EQ(views->getToolBar(), first);
  views->showCoronalView(false);
  EXPECT_FALSE(views->getToolBar());
  EXPECT_TRUE(waitFor([&first] { return !first; }));
  views->showCoronalView(true);
  EXPECT_EQ(child<QLabel>("zoomLabel")->text(), "2:1 ");
}
