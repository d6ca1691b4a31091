#pragma once

#include <QToolBar>

class QLabel;
class QMainWindow;
class QxFullSlider;

/// The toolbar of slice number and zoom.
///
/// Holds no state of the alignment: setters never emit. Children: "Slice", "zoom".
class QxAlignToolBar : public QToolBar {
  Q_OBJECT
public:
  /// The name is the title until the toolbar has its own.
  explicit QxAlignToolBar(QMainWindow* parent, const char* name);

  /// First and last slice of the slider.
  void setSlicesRange(int min, int max);
  /// Shows the slice number and marks the reference slice on the slider.
  void setSlice(int slice, int reference);

public Q_SLOTS:
  /// Says that another slice was chosen.
  void sliceChange(float slice);
  /// Steps of the zoom: ..., 1:4, 1:2, 1:1, 2:1, 3:1, 4:1, 6:1, 9:1, 14:1, 21:1, ... without a limit.
  void zoomIn();
  void zoomOut();

Q_SIGNALS:
  /// Another slice was chosen; to be rounded.
  void sliceChanged(float slice);
  /// Screen pixels per slice pixel.
  void zoomChanged(float zoom);
  /// Never emitted.
  void editModeChanged(int mode);

private:
  void setZoom(float zoom);

  QLabel* m_zoomLabel;   // child
  QxFullSlider* m_slice; // child
  float m_zoom = 1.0f;
};
