#include "zxalign/AlignOptions.h"

#include "mc/McMath.h"
#include "mc/McRound.h"
#include "ui_QxAlignSlicesOptionsDialogBase.h"
#include "zx/ZxMessage.h"
#include "zxalign/QxAlignSlicesOptionsDialog.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignSlices.h"

#include <algorithm>
#include <bit>

namespace {

constexpr float smallestTranslation = 0.1f; // pixels
constexpr float largestTranslation = 5.0f;
constexpr int largestScaleFactor = 8;

/// The power of two that is not above a number of levels, as the slider counts it.
int scaleFactorOf(int levels)
{
  return levels < 1 ? 0
                    : std::min(static_cast<int>(std::bit_width(static_cast<unsigned>(levels))) - 1,
                               largestScaleFactor);
}

/// The angle that moves a point at half the width of a slice by so many pixels.
float degreesFor(double pixels, int width)
{
  return static_cast<float>(pixels * 360.0 / (mc::kPi * std::max(width, 1)));
}

/// A typed side of the output, taken when it is larger than the input's and a volume can have it.
void takeSize(int& setting, int typed, int input, const char* side)
{
  if (typed == setting || typed <= input) return;
  if (typed > ZxAlignSettings::maxOutputSize)
    return ZxMessage::getTheMsg()->printf("A result of %d pixels in %s is too large: %s stays %d.", typed,
                                          side, side, setting);
  setting = typed;
}

} // namespace

AlignOptions::AlignOptions(ZxAlignSlices& module, QxAlignSlicesOptionsDialog& dialog)
  : m_module(module), m_dialog(dialog)
{
}

AlignOptions::~AlignOptions() = default;

void AlignOptions::bind(QSlider* slider, int value, std::function<void(int)> write)
{
  slider->setValue(value);
  m_bindings.push_back({slider->value(), [slider] { return slider->value(); }, std::move(write)});
}

void AlignOptions::bind(QAbstractButton* button, bool* setting)
{
  button->setChecked(*setting);
  m_bindings.push_back({*setting ? 1 : 0, [button] { return button->isChecked() ? 1 : 0; },
                        [setting](int on) { *setting = on != 0; }});
}

void AlignOptions::show(int tileSize)
{
  const auto& f = m_dialog.form();
  m_bindings.clear();
  m_input = McHandle<ZxSpatialData>(m_module.sliceData().getSpatialData());
  m_tileSize = tileSize;
  bind(f.chessFieldSizeSlider, tileSize, [this](int v) { m_tileSize = v; });
  bind(f.rotationCheckBox, &m_module.alignSettings().rotationAllowed);
  showOutput();
  showSize();
  showEdgeDetection();
  showLeastSquares();
}

void AlignOptions::showOutput()
{
  const auto& f = m_dialog.form();
  ZxAlignSettings& s = m_module.alignSettings();
  const int components = m_module.sliceData().getNumDataVars();
  f.GrayGroupBox->setEnabled(components == 1);
  f.ColorGroupBox->setEnabled(components == 4);
  f.backgroundColorFixedButton->setChecked(true);
  bind(f.mostFrequentColorButton, &s.mostFrequentBackground);
  bind(f.GraySlider, mc::roundHalfUp(s.background), [&s](int v) { s.background = static_cast<float>(v); });
  QSlider* const sliders[3] = {f.RSlider, f.GSlider, f.BSlider};
  for (int i = 0; i < 3; ++i)
    bind(sliders[i], mc::roundHalfUp(s.backgroundColour[i]),
         [&s, i](int v) { s.backgroundColour[i] = static_cast<float>(v); });
}

void AlignOptions::showSize()
{
  ZxAlignSettings& s = m_module.alignSettings();
  m_dialog.setImageSize(s.outputWidth, s.outputHeight);
  bind(m_dialog.form().AutomaticSizeCheckBox, &s.automaticOrigin);
}

void AlignOptions::showEdgeDetection()
{
  const auto& f = m_dialog.form();
  ZxAlignSettings& s = m_module.alignSettings();
  bind(f.matDimSlider, s.matrixDimension, [&s](int v) { s.matrixDimension = v; });
  bind(f.matPercSlider, s.percentage, [&s](int v) { s.percentage = v; });
  bind(f.matRastSlider, s.rasterStep, [&s](int v) { s.rasterStep = v; });
  bind(f.imRastSlider, s.imageRasterStep, [&s](int v) { s.imageRasterStep = v; });
  bind(f.flippingCheckBox, &s.mirror);
  bind(f.calcThresCheckBox, &s.calculatedThreshold);
  bind(f.setThresSlider, s.threshold, [&s](int v) { s.threshold = v; });
  f.darkRadio->setChecked(true);
  bind(f.brightRadio, &s.brightBackground);
  bind(f.angleStepSlider, mc::roundHalfUp(2.0 * s.angularStep),
       [&s](int v) { s.angularStep = static_cast<float>(v) * 0.5f; });
}

void AlignOptions::showLeastSquares()
{
  const auto& f = m_dialog.form();
  ZxAlignSettings& s = m_module.alignSettings();
  const int width = m_module.getDataLattice() ? m_module.getDataLattice()->getDims().width : 0;
  f.numIterField->setText(QString::number(s.maxIterations));
  m_dialog.setTranslationStep({smallestTranslation, largestTranslation, s.translationStep});
  m_dialog.setRotationStep({degreesFor(0.2, width), degreesFor(5.0, width), s.rotationStep});
  m_dialog.initSliders();
  bind(f.scaleFactorSlider, scaleFactorOf(s.resamplingLevels), [&s](int v) { s.resamplingLevels = 1 << v; });
}

bool AlignOptions::apply()
{
  if (m_module.sliceData().getSpatialData() != m_input.get()) return false;
  for (const Binding& binding : m_bindings)
    if (const int value = binding.read(); value != binding.shown) binding.write(value);
  m_module.alignSettings().backgroundColour[3] = 255.0f;
  applySize();
  applyLeastSquares();
  return true;
}

void AlignOptions::applySize()
{
  const ZxLattice* input = m_module.getDataLattice();
  if (!input) return;
  ZxAlignSettings& s = m_module.alignSettings();
  takeSize(s.outputWidth, m_dialog.imageWidth(), input->getDims().width, "width");
  takeSize(s.outputHeight, m_dialog.imageHeight(), input->getDims().height, "height");
}

void AlignOptions::applyLeastSquares()
{
  ZxAlignSettings& s = m_module.alignSettings();
  bool isNumber = false;
  const int iterations = m_dialog.form().numIterField->text().toInt(&isNumber);
  if (isNumber && iterations >= 0) s.maxIterations = iterations;
  s.translationStep = m_dialog.translationStep();
  s.rotationStep = m_dialog.rotationStep();
}
