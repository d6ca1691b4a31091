#include "zxalign/AlignOptions.h"

#include "zxalign/ModuleTest.h"
#include "zxalign/QxAlignSlicesOptionsDialog.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>

namespace {

class AlignOptionsTest : public ModuleTest {
protected:
  AlignOptionsTest() { connect(module->portData, greyStack({30, 20, 3})); }

  QSlider* slider(const char* name) { return find<QSlider>(name); }
  QAbstractButton* button(const char* name) { return find<QAbstractButton>(name); }
  QString label(const char* name) { return find<QLabel>(name)->text(); }
  void type(const char* name, const char* text) { find<QLineEdit>(name)->setText(text); }
  template <class Widget>
  Widget* find(const char* name)
  {
    auto* widget = dialog.findChild<Widget*>(name);
    EXPECT_TRUE(widget) << name;
    return widget;
  }
  std::vector<std::string> settings()
  {
    std::vector<std::string> all;
    for (const ZxAlignSetting& s : module->settings())
      all.push_back(std::string(s.name) + "=" + module->getSetting(s.name));
    return all;
  }
  ZxAlignSettings& s() { return module->alignSettings(); }

  QxAlignSlicesOptionsDialog dialog{nullptr, "Options", true};
  AlignOptions options{*module, dialog};
};

TEST_F(AlignOptionsTest, OkWithoutAChangeChangesNoSetting)
{
  options.show(50);
  s().backgroundColour[3] = 255;
  auto before = settings();
  EXPECT_TRUE(options.apply());
  EXPECT_EQ(settings(), before);
  EXPECT_EQ(options.chessFieldSize(), 50);

  // Values that no control can show, and those beyond the ends of the sliders.
  s().matrixDimension = 400;
  s().rasterStep = 33;
  s().angularStep = 0.3f;
  s().resamplingLevels = 100;
  s().translationStep = 17.3f;
  s().rotationStep = 0.001f;
  s().maxIterations = 2147483647;
  s().background = -3.25f;
  s().backgroundColour[1] = 1e9f;
  s().outputWidth = 7; // below the input's
  s().outputHeight = 1 << 20;
  before = settings();
  options.show(7);
  EXPECT_TRUE(options.apply());
  EXPECT_EQ(settings(), before);
  EXPECT_EQ(options.chessFieldSize(), 7);
}

TEST_F(AlignOptionsTest, ShowsTheSettings)
{
  s().rotationAllowed = false;
  s().mostFrequentBackground = true;
  s().background = 77;
  s().automaticOrigin = s().mirror = s().calculatedThreshold = s().brightBackground = true;
  s().matrixDimension = 3;
  s().percentage = 61;
  s().threshold = 9;
  s().angularStep = 2.5f;
  s().outputWidth = 44;
  options.show(70);
  EXPECT_FALSE(button("rotationCheckBox")->isChecked());
  EXPECT_TRUE(button("mostFrequentColorButton")->isChecked());
  EXPECT_FALSE(button("backgroundColorFixedButton")->isChecked());
  EXPECT_EQ(label("GrayValueLabel"), "77");
  EXPECT_EQ(find<QWidget>("GrayFrame")->palette().color(QPalette::Window), QColor(77, 77, 77));
  for (const char* name : {"AutomaticSizeCheckBox", "flippingCheckBox", "calcThresCheckBox", "brightRadio"})
    EXPECT_TRUE(button(name)->isChecked()) << name;
  EXPECT_EQ(label("matDimValueLabel"), "3");
  EXPECT_EQ(label("matPercValueLabel"), "61");
  EXPECT_EQ(label("matRastValueLabel"), "1");
  EXPECT_EQ(label("imRastValueLabel"), "2");
  EXPECT_EQ(label("setThresValueLabel"), "9");
  EXPECT_EQ(slider("angleStepSlider")->value(), 5);
  EXPECT_EQ(label("angleStepValueLabel"), "2.50");
  EXPECT_EQ(slider("scaleFactorSlider")->value(), 7);
  EXPECT_EQ(label("scaleFactorValueLabel"), "128");
  EXPECT_EQ(find<QLineEdit>("ImageWidthLineEdit")->text(), "44");
  EXPECT_EQ(find<QLineEdit>("ImageHeightLineEdit")->text(), "20");
  EXPECT_EQ(find<QLineEdit>("numIterField")->text(), "1000");
  EXPECT_EQ(label("transLabel"), "1.00");
  EXPECT_EQ(label("chessFieldSizeValueLabel"), "70");
  EXPECT_TRUE(find<QWidget>("GrayGroupBox")->isEnabled());
  EXPECT_FALSE(find<QWidget>("ColorGroupBox")->isEnabled());
  connect(module->portData, makeField<std::uint8_t>({30, 20, 3}, 4, greyAt));
  options.show(70);
  EXPECT_FALSE(find<QWidget>("GrayGroupBox")->isEnabled());
  EXPECT_TRUE(find<QWidget>("ColorGroupBox")->isEnabled());
}

TEST_F(AlignOptionsTest, EveryControlSetsItsSettingAndNoOther)
{
  struct Row {
    const char* control;
    int value;
    const char* expected; ///< "name=value" of the setting that changes
  };
  options.show(50);
  s().backgroundColour[3] = 255;
  for (const Row& row :
       std::initializer_list<Row>{{"rotationCheckBox", 0, "rotation=off"},
                                  {"AutomaticSizeCheckBox", 1, "automatic-origin=on"},
                                  {"mostFrequentColorButton", 1, "most-frequent-background=on"},
                                  {"GraySlider", 201, "background=201"},
                                  {"RSlider", 1, "background-colour=1,0,0,255"},
                                  {"GSlider", 2, "background-colour=1,2,0,255"},
                                  {"BSlider", 3, "background-colour=1,2,3,255"},
                                  {"matDimSlider", 100, "matrix-dimension=100"},
                                  {"matPercSlider", 0, "percentage=0"},
                                  {"matRastSlider", 20, "raster-step=20"},
                                  {"imRastSlider", 1, "image-raster-step=1"},
                                  {"flippingCheckBox", 1, "mirror=on"},
                                  {"calcThresCheckBox", 1, "calculated-threshold=on"},
                                  {"setThresSlider", 0, "threshold=0"},
                                  {"brightRadio", 1, "bright-background=on"},
                                  {"angleStepSlider", 5, "angular-step=2.5"},
                                  {"scaleFactorSlider", 3, "levels=8"}}) {
    options.show(50);
    auto expected = settings();
    const std::string name = std::string(row.expected, std::strcspn(row.expected, "=") + 1);
    for (std::string& line : expected)
      if (line.starts_with(name)) line = row.expected;
    if (auto* control = dialog.findChild<QSlider*>(row.control))
      control->setValue(row.value);
    else
      button(row.control)->setChecked(row.value != 0);
    ASSERT_TRUE(options.apply());
    EXPECT_EQ(settings(), expected) << row.control;
  }
  slider("transSlider")->setValue(1000);
  slider("rotSlider")->setValue(0);
  type("numIterField", "12");
  slider("chessFieldSizeSlider")->setValue(20);
  options.apply();
  EXPECT_FLOAT_EQ(s().translationStep, 5.0f);
  EXPECT_FLOAT_EQ(s().rotationStep, 0.2f * 360.0f / (3.14159265f * 30.0f)) << "the angle of 0.2 pixels";
  EXPECT_EQ(s().maxIterations, 12);
  EXPECT_EQ(options.chessFieldSize(), 20);
  EXPECT_EQ(label("transLabel"), "5.00");
}

TEST_F(AlignOptionsTest, ASizeIsTakenWhenItIsLargerThanTheInput)
{
  const auto take = [this](const char* width, const char* height) {
    options.show(50);
    type("ImageWidthLineEdit", width);
    type("ImageHeightLineEdit", height);
    options.apply();
    return std::pair(s().outputWidth, s().outputHeight);
  };
  EXPECT_EQ(take("31", "20"), std::pair(31, 20));
  EXPECT_EQ(take("30", "500"), std::pair(31, 500)) << "as large as the input is not larger";
  EXPECT_EQ(take("", "x"), std::pair(31, 500));
  console.take();
  EXPECT_EQ(take("2000000", "-40"), std::pair(31, 500));
  EXPECT_EQ(console.take(), Lines{"A result of 2000000 pixels in width is too large: width stays 31."});
}

TEST_F(AlignOptionsTest, WritesNothingOfOneInputToAnother)
{
  options.show(50);
  button("rotationCheckBox")->setChecked(false);
  connect(module->portData, greyStack({30, 20, 3}));
  EXPECT_FALSE(options.apply());
  EXPECT_TRUE(s().rotationAllowed);
}

TEST(QxAlignSlicesOptionsDialog, ShowsAStepBetweenItsLimitsAndKeepsItUntilTheSliderMoves)
{
  QxAlignSlicesOptionsDialog dialog;
  EXPECT_EQ(dialog.windowTitle(), "AlignSlices Options");
  auto* slider = dialog.findChild<QSlider*>("transSlider");
  auto* label = dialog.findChild<QLabel*>("transLabel");
  EXPECT_EQ(label->text(), "1.25");
  EXPECT_EQ(dialog.findChild<QLabel*>("rotLabel")->text(), "0.75");
  slider->setValue(99); // above the range to come
  dialog.setTranslationStep({0.5f, 2.0f, 1.25f});
  dialog.initSliders();
  EXPECT_EQ(slider->value(), 500);
  EXPECT_EQ(slider->maximum(), 1000);
  EXPECT_EQ(label->text(), "1.25");
  dialog.setTranslationStep({0.1f, 5.0f, 1.0f});
  dialog.initSliders();
  EXPECT_EQ(dialog.translationStep(), 1.0f);
  slider->setValue(0);
  EXPECT_EQ(dialog.translationStep(), 0.1f);
  EXPECT_EQ(label->text(), "0.10");
}

TEST(QxAlignSlicesOptionsDialog, TellsOfSizesOnlyWhatAPersonAsksFor)
{
  using Dialog = QxAlignSlicesOptionsDialog;
  Dialog dialog;
  QSignalSpy automatic(&dialog, &Dialog::calcNewSizeSignal);
  QSignalSpy border(&dialog, &Dialog::showBorderSignal);
  QSignalSpy typed(&dialog, &Dialog::changeBorderSizeSignal);
  auto* width = dialog.findChild<QLineEdit*>("ImageWidthLineEdit");
  auto* showBorders = dialog.findChild<QCheckBox*>("ShowBorderCheckBox");
  auto* size = dialog.findChild<QCheckBox*>("AutomaticSizeCheckBox");
  dialog.setImageSize(640, 480);
  width->setText("700");
  EXPECT_TRUE(typed.isEmpty()) << "no borders are shown";
  showBorders->click();
  EXPECT_EQ(border.takeFirst(), QVariantList({false, true, 700, 480}));
  width->setText("70");
  EXPECT_EQ(typed.takeFirst(), QVariantList({70, 480}));
  dialog.setImageSize(640, 480);
  EXPECT_TRUE(typed.isEmpty());
  size->click();
  EXPECT_EQ(automatic.takeFirst(), QVariantList({true, true}));
  size->click();
  EXPECT_TRUE(automatic.isEmpty());
  showBorders->click();
  EXPECT_EQ(border.takeFirst(), QVariantList({false, false, 640, 480}));
}

TEST(QxAlignSlicesOptionsDialog, LabelsShowWhatSlidersMean)
{
  QxAlignSlicesOptionsDialog dialog;
  const auto shown = [&](const char* slider, int value, const char* label) {
    dialog.findChild<QSlider*>(slider)->setValue(value);
    return dialog.findChild<QLabel*>(label)->text();
  };
  EXPECT_EQ(shown("scaleFactorSlider", 8, "scaleFactorValueLabel"), "256");
  EXPECT_EQ(shown("angleStepSlider", 1, "angleStepValueLabel"), "0.50");
  EXPECT_EQ(shown("BSlider", 255, "BValueLabel"), "255");
  EXPECT_EQ(dialog.findChild<QWidget*>("RGBAFrame")->palette().color(QPalette::Window), QColor(0, 0, 255));
  dialog.findChild<QPushButton*>("buttonOk")->click();
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

} // namespace
