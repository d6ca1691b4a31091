#pragma once

#include <QToolBar>

#include <array>

class QMainWindow;
class QToolButton;
class QxDrawAlignSlices;

/// The toolbar of modes and actions: the automatic method, how and which slice of the pair is edited, and the
/// automatic alignment itself.
///
/// A mode's slot checks its own button, unchecks the others of its group and says so, each time it is called:
/// clicking a checked button chooses its mode once more. Children carry the names of their slots.
class QxAutoAlignToolBar : public QToolBar {
  Q_OBJECT
public:
  /// The name is the title until the toolbar has its own. It starts with least-squares, manual alignment
  /// and the upper slice.
  explicit QxAutoAlignToolBar(QMainWindow* parent, const char* name);

  /// Lower and upper.
  void enableButtons();
  void disableButtons();
  /// Shows that none of the four methods is chosen. Emits nothing.
  void showNoAlignMode();

public Q_SLOTS:
  // The automatic methods. The first two come back to manual alignment; the others leave the edit mode alone.
  void alignGray();
  void alignCenters();
  void alignLandmarks();
  void alignEdgeDetection();
  /// 0 gravity centres, 1 least-squares, 2 landmarks, 3 edge detection. Others are ignored.
  void changeAlignMode(int mode);
  /// Manual alignment.
  void editTransform();
  /// Landmarks are edited for the landmark method, which is chosen with it.
  void editLandmarks();
  /// 1: manual alignment, others: landmarks.
  void changeEditMode(int mode);
  /// Which slice of the pair is edited.
  void lower();
  void upper();
  // Ask for the actions of their names.
  void mirror();
  void doAlign();
  void doAll();
  /// The view whose repaints are held back while several modes change at once; borrowed, may be null.
  void setDrawArea(QxDrawAlignSlices* dArea);

Q_SIGNALS:
  /// -1: the lower slice of the pair is edited, +1: the upper one.
  void sliceToDisplayChanged(int side);
  /// As changeAlignMode().
  void alignModeChanged(int mode);
  /// 1: manual alignment, 3: landmarks.
  void editModeChanged(int mode);
  /// The editable slice is to be mirrored.
  void mirrorSignal();
  /// The current pair is to be aligned.
  void doSignal();
  /// All slices are to be aligned.
  void doAllSignal();

private:
  struct Button;
  using Slot = void (QxAutoAlignToolBar::*)();
  QToolButton* addButton(const Button& button);
  void checkMode(int mode);

  std::array<QToolButton*, 4> m_modes{};   // children, in the order of the modes
  QToolButton* m_transform = nullptr;      // child
  QToolButton* m_landmarks = nullptr;      // child
  QToolButton* m_lower = nullptr;          // child
  QToolButton* m_upper = nullptr;          // child
  QxDrawAlignSlices* m_drawArea = nullptr; // borrowed
};
