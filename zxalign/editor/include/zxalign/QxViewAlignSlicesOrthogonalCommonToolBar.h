#pragma once

#include <QToolBar>

class QCheckBox;
class QLabel;
class QLineEdit;
class QxAlignSlices;
class QxFullSlider;
class QxOrthoViewManager;

/// The toolbar "Ortho View Settings" of both orthogonal views: cut positions, z window, update, zoom.
///
/// Setting a value from code tells nobody; what a person changes goes to the manager.
class QxViewAlignSlicesOrthogonalCommonToolBar : public QToolBar {
  Q_OBJECT
public:
  /// Limits and values of the cut sliders and the width of the z window are the manager's.
  QxViewAlignSlicesOrthogonalCommonToolBar(QxOrthoViewManager* manager, QxAlignSlices* editor, int dimX,
                                           int dimY);
  ~QxViewAlignSlicesOrthogonalCommonToolBar() override;

  /// Forgets the manager, for the time until it is deleted.
  void detach() { m_manager = nullptr; }

  /// Whether the views follow every change.
  bool getAutoUpdate() const noexcept { return m_autoUpdate; }
  /// Switches "Auto update"; on also updates the views, once.
  void setAutoUpdate(bool on);
  // Show what is so by now; they change no view.
  /// The z window: whether there is one, and its slices on either side of the current one.
  void setShowZRange(bool show);
  void setZRange(int halfWidth);
  /// The zoom of the views.
  void setZoomLabel(const char* text);
  /// Whether a view's slider is there.
  void showSagittal(bool show);
  void showCoronal(bool show);
  /// First and last column or row in pixels, and the one that is cut.
  void setSagittalSliderRange(int min, int max);
  void setCoronalSliderRange(int min, int max);
  void setSagittalSlice(int x);
  void setCoronalSlice(int y);

public Q_SLOTS:
  /// Cut another column or row, rounded to a whole pixel.
  void sagittalSliceNumberChange(float value);
  void coronalSliceNumberChange(float value);
  /// Limits the views to the z window, or shows all slices.
  void showZRangeCheckBoxChange(bool show);
  /// Takes up the width that was typed; what is no number from 0 on brings the old one back.
  void zRangeChange();
  /// Recomputes both views, also while "Auto update" is off.
  void updateView();
  /// As setAutoUpdate(), from the check box.
  void autoCheckBoxChange(bool on);
  /// One step of the zoom of both views.
  void zoomIn();
  void zoomOut();

Q_SIGNALS:
  /// Never emitted.
  void updateViewSignal();

private:
  struct Cut {
    QLabel* label;
    QxFullSlider* slider;
    QAction* labelAction;
    QAction* sliderAction;
  };
  Cut addCut(const char* name, int max, int value);
  void addZWindow();
  void addUpdateControls();
  void addZoomControls();
  void showNames();
  void enableZRange(bool on);

  QxOrthoViewManager* m_manager; // borrowed
  QxAlignSlices* m_editor;       // borrowed
  bool m_autoUpdate = true;
  bool m_showZRange = false;
  int m_zRange;
  // Children.
  Cut m_sagittal;
  Cut m_coronal;
  QCheckBox* m_showZRangeBox = nullptr;
  QLabel* m_zRangeLabel = nullptr;
  QLineEdit* m_zRangeField = nullptr;
  QCheckBox* m_autoUpdateBox = nullptr;
  QLabel* m_zoomLabel = nullptr;
  int m_settingsListener;
};
