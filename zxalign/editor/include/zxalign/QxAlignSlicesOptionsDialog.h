#pragma once

#include <QDialog>

#include <memory>

class QLabel;
class QSlider;

namespace Ui {
class QxAlignSlicesOptionsDialogBase;
}

/// The settings of automatic alignment, of the resampled output and of the checkerboard: "AlignSlices
/// Options".
///
/// The dialog keeps its controls consistent and knows no module; AlignOptions fills it and reads it back. Its
/// controls are found by their object names.
class QxAlignSlicesOptionsDialog : public QDialog {
  Q_OBJECT
public:
  /// A value that a slider of 1000 steps chooses between two limits, minimum below maximum.
  ///
  /// The value itself is kept: as long as the slider is not moved it is exactly what was given, also when it
  /// lies between two steps or outside of the limits.
  struct Step {
    float minimum;
    float maximum;
    float value;
  };

  explicit QxAlignSlicesOptionsDialog(QWidget* parent = nullptr, const char* name = nullptr,
                                      bool modal = false);
  ~QxAlignSlicesOptionsDialog() override;

  /// The controls by their object names.
  const Ui::QxAlignSlicesOptionsDialogBase& form() const noexcept { return *m_form; }

  /// Steps of the least-squares method: pixels, and degrees. Shown by initSliders().
  void setTranslationStep(const Step& step) noexcept { m_translation = step; }
  void setRotationStep(const Step& step) noexcept { m_rotation = step; }
  float translationStep() const noexcept { return m_translation.value; }
  float rotationStep() const noexcept { return m_rotation.value; }

  /// The typed output size in pixels; 0 where the text is no number.
  int imageWidth() const;
  int imageHeight() const;
  /// Shows an output size. Emits nothing: a preview follows what a person types.
  void setImageSize(int width, int height);
  /// True while the user wants to see the result's borders in the slice view.
  bool showsBorders() const;

public Q_SLOTS:
  /// Paints the swatch of the grey background.
  void updateGray(int value);
  /// Paints the swatch of the coloured background from its three sliders.
  void updateRGB();
  /// Shows the edge length of the checkerboard's tiles.
  void updateChessFieldSizeLabel(int value);
  /// Shows half of the value: the angular step goes in half degrees.
  void updateAngleLabel(int value);
  /// Shows 2 to the power of the value.
  void updateResampleSizeLabel(int value);
  /// Places the sliders of both steps and shows their values, without changing them.
  void initSliders();
  /// Takes the step at a position of its slider, 0 to 1000, and shows it.
  void updateTransValue(int position);
  void updateRotValue(int position);
  /// Asks for the automatic size, when it is switched on.
  void calcNewSize();
  /// Asks for the preview of the typed size to be shown or taken back.
  void showBorder();
  /// Asks for another preview, when previews are switched on.
  void changeBorderSize();

Q_SIGNALS:
  /// The automatic size was switched on.
  void calcNewSizeSignal(bool automatic, bool showBorders);
  /// Previews were switched on or off; the typed size in pixels comes along.
  void showBorderSignal(bool automatic, bool showBorders, int width, int height);
  /// Another size in pixels was typed while previews are on.
  void changeBorderSizeSignal(int width, int height);

private:
  void connectControls();
  static void place(QSlider* slider, QLabel* label, const Step& step);

  std::unique_ptr<Ui::QxAlignSlicesOptionsDialogBase> m_form;
  Step m_translation{0.5f, 2.0f, 1.25f}; // what the form shows before it is filled
  Step m_rotation{0.5f, 1.0f, 0.75f};
};
