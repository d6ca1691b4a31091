#pragma once

#include "zx/ZxData.h"

#include <functional>
#include <vector>

class QAbstractButton;
class QSlider;
class QxAlignSlicesOptionsDialog;
class ZxAlignSlices;

/// The settings of a module in the controls of the options dialog, and back.
///
/// Only what was changed is written back: a setting that a control cannot show exactly, such as a matrix
/// dimension beyond the slider's end, stays what it was until the control is moved. Use:
///
///   AlignOptions options(module, dialog);
///   options.show(tileSize);
///   if (dialog.exec() == QDialog::Accepted && options.apply()) tileSize = options.chessFieldSize();
class AlignOptions {
public:
  /// Both outlive this object.
  AlignOptions(ZxAlignSlices& module, QxAlignSlicesOptionsDialog& dialog);
  ~AlignOptions();

  /// Fills the dialog. tileSize: edge length of the checkerboard's tiles in screen pixels. The automatic
  /// size is for the window to compute.
  void show(int tileSize);
  /// Writes back what was changed; a size only where it is larger than the input's, and the background's
  /// alpha as 255 in every case. False, and nothing is written, when the module has another input by now.
  bool apply();
  /// The tile size that is chosen, known after apply().
  int chessFieldSize() const noexcept { return m_tileSize; }

private:
  /// A setting and the control that shows it, as a number. write is called with another number only.
  struct Binding {
    int shown;
    std::function<int()> read;
    std::function<void(int)> write;
  };

  void bind(QSlider* slider, int value, std::function<void(int)> write);
  void bind(QAbstractButton* button, bool* setting);
  void showOutput();
  void showSize();
  void showEdgeDetection();
  void showLeastSquares();
  void applySize();
  void applyLeastSquares();

  ZxAlignSlices& m_module;
  QxAlignSlicesOptionsDialog& m_dialog;
  McHandle<ZxSpatialData> m_input; // that the dialog was filled for
  std::vector<Binding> m_bindings;
  int m_tileSize = 0;
};
