#pragma once

#include <QToolBar>

class QCheckBox;
class QDoubleSpinBox;
class QMainWindow;
class QSpinBox;

/// Shows and edits the transform of the current slice as numbers.
///
/// Holds no state of the alignment: a setter never emits, and what is typed counts when it is finished.
/// Children: "translationX", "translationY" (pixels), "rotation" (degrees), "flip".
class QxAlignTransformToolBar : public QToolBar {
  Q_OBJECT
public:
  /// The name is the title until the toolbar has its own.
  explicit QxAlignTransformToolBar(QMainWindow* parent, const char* name);

  // Show numbers; values beyond the fields' limits are shown as the limit.
  /// Translation in pixels, x to the right.
  void setTransX(int t);
  /// Translation in pixels, y downwards.
  void setTransY(int t);
  /// Rotation in degrees.
  void setRot(float r);
  /// Whether the slice is mirrored.
  void setFlip(bool b);

public Q_SLOTS:
  // One for each field: says that it was changed.
  void transXChange(int t);
  void transYChange(int t);
  void rotChange(double r);
  void flipChange(bool b);

Q_SIGNALS:
  // A person has entered another value, in the units of the setters.
  void transXChanged(int t);
  void transYChanged(int t);
  void rotChanged(float r);
  void flipChanged(bool b);

private:
  void addLabel(const char* text);
  QSpinBox* addPixels(const char* label, const char* name);

  QSpinBox* m_x;         // child
  QSpinBox* m_y;         // child
  QDoubleSpinBox* m_rot; // child
  QCheckBox* m_flip;     // child
};
