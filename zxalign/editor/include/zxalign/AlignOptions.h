#pragma once

#include <memory>

class QxAlignSlicesOptionsDialog;
class ZxAlignSlices;
class ZxLattice;

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
  /// The tile size that is chosen.
  int chessFieldSize() const;

private:
  /// What the controls showed at first.
  struct Shown;
  void showOutput();
  void showEdgeDetection();
  void showLeastSquares();
  void applyOutput();
  void applyEdgeDetection();
  void applyLeastSquares();

  ZxAlignSlices& m_module;
  QxAlignSlicesOptionsDialog& m_dialog;
  const ZxLattice* m_input = nullptr; // to compare with only
  std::unique_ptr<Shown> m_shown;
};
