#include "zxalign/QxViewAlignSlicesOrthogonal.h"

#include "OrthoViewTest.h"
#include "zx/ZxSettingsMgr.h"
#include "zxalign/QxDrawAlignSlices.h"

#include <QDockWidget>

using enum OrthoOrientation;

namespace {

/// Voxels of 4 x 4 nanometres and a height.
McHandle<ZxField3> nanometres(const ZxDims& dims, float height)
{
  auto field = greyStack(dims);
  field->getLattice()->setBoundingBox({0, 4e-9f * static_cast<float>(dims.width - 1), 0,
                                       4e-9f * static_cast<float>(dims.height - 1), 0,
                                       1e-9f * height * static_cast<float>(dims.slices - 1)});
  return field;
}

class QxViewAlignSlicesOrthogonalTest : public OrthoViewTest {
protected:
  ~QxViewAlignSlicesOrthogonalTest() override { ZxSettingsMgr::getInstance()->setUsesAnatomicalNames(true); }
};

} // namespace

TEST_F(QxViewAlignSlicesOrthogonalTest, TitlesFollowThePreference)
{
  openBoth(greyStack({7, 5, 3}));
  EXPECT_EQ(view(Coronal)->windowTitle(), "Coronal view");
  EXPECT_EQ(view(Sagittal)->windowTitle(), "Sagittal view");
  ZxSettingsMgr::getInstance()->setUsesAnatomicalNames(false);
  EXPECT_EQ(view(Coronal)->windowTitle(), "XZ view");
  EXPECT_EQ(view(Sagittal)->windowTitle(), "YZ view");
  views->showCoronalView(false);
  views->showCoronalView(true);
  EXPECT_EQ(view(Coronal)->windowTitle(), "XZ view");
  EXPECT_EQ(editor->dockWidgetArea(view(Coronal)), Qt::RightDockWidgetArea);
}

TEST_F(QxViewAlignSlicesOrthogonalTest, SizesAreThoseOfTheStackInItsAspectRatio)
{
  open(nanometres({60, 40, 21}, 10.0f));
  editor->resize(1000, 700);
  editor->show();
  ASSERT_TRUE(waitForExposed(editor.get()));
  views->showSagittalView(true);
  views->showCoronalView(true);
  const QxImageViewer& coronal = *view(Coronal)->viewer();
  EXPECT_EQ(coronal.getImageScreenWidth(), 60.0f);
  EXPECT_NEAR(coronal.getImageScreenHeight(), 52.5f, 1e-3f);
  EXPECT_EQ(coronal.minimumSize(), QSize(70, 62));
  EXPECT_EQ(coronal.sizePolicy(), QSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred));
  const QxImageViewer& sagittal = *view(Sagittal)->viewer();
  EXPECT_EQ(sagittal.minimumSize(), QSize(62, 50));
  EXPECT_EQ(sagittal.sizePolicy(), QSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding));
  EXPECT_TRUE(sagittal.isTransposed());
  // A deep stack takes 200 pixels, a wide one what the slice view has.
  connect(module->portData, nanometres({1400, 900, 3}, 400.0f));
  editor->updateViews(); // The module, whose window this is not, does not say so.
  views->init(module->getDataLattice(), false);
  QCoreApplication::processEvents();
  EXPECT_EQ(editor->size(), QSize(1000, 700));
  EXPECT_GT(editor->getDrawAreaWidth(), 300);
  view(Coronal)->setDrawViewSize();
  view(Sagittal)->setDrawViewSize();
  EXPECT_EQ(view(Coronal)->viewer()->minimumSize(), QSize(editor->getDrawAreaWidth() - 10, 200));
  EXPECT_EQ(view(Sagittal)->viewer()->minimumSize(), QSize(200, editor->getDrawAreaHeight() - 10));
}

TEST_F(QxViewAlignSlicesOrthogonalTest, ShowsGreyValuesOverAFixedRangeAndColours)
{
  openBoth(makeField<std::int16_t>({2, 1, 2}, 1, [](int x, int, int k, int) { return x * 600 + k * 100; }));
  view(Coronal)->resize(300, 300);
  const auto pixel = [this](double x, double z) {
    QxImageViewer& viewer = *view(Coronal)->viewer();
    viewer.resize(200, 200);
    viewer.setZoomFactor(20.0f);
    static_cast<void>(viewer.grab());
    return viewer.snapshot().pixel(viewer.mapImageToWidget({x, z}).toPoint());
  };
  EXPECT_EQ(pixel(0.5, 1.25), qRgb(100, 100, 100));
  EXPECT_EQ(pixel(1.5, 1.25), qRgb(255, 255, 255));
  EXPECT_EQ(pixel(0.5, 0.25), qRgb(0, 0, 0));
  views = {};
  editor.reset();
  openBoth(makeField<std::uint8_t>({2, 1, 2}, 4, [](int x, int, int, int c) { return 50 * c + x + 30; }));
  EXPECT_EQ(pixel(0.5, 1.25), qRgb(30, 80, 130));
  EXPECT_EQ(pixel(1.5, 1.25), qRgb(31, 81, 131));
}

TEST_F(QxViewAlignSlicesOrthogonalTest, TheMarkerFollowsTheAxialSliceAndIgnoresWrongLengths)
{
  openBoth(greyStack({7, 5, 30}));
  views->setSliceNumberAxial(11);
  EXPECT_EQ(view(Sagittal)->lineShape().sliceNumber(), 11);
  EXPECT_EQ(view(Sagittal)->lineShape().orthoViewLineWidth(), 50);
  views->setOrthoViewLineWidth(30);
  views->setOrthoViewLineWidth(101);
  views->setOrthoViewLineWidth(-1);
  EXPECT_EQ(view(Sagittal)->lineShape().orthoViewLineWidth(), 30);
  views->showSagittalView(false);
  views->showSagittalView(true);
  EXPECT_EQ(view(Sagittal)->lineShape().orthoViewLineWidth(), 30);
  EXPECT_EQ(view(Sagittal)->lineShape().sliceNumber(), 11);
}
