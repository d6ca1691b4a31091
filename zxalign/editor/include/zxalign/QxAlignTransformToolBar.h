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
  explicit QxAlignTransformToolBar(QMainWindow* parent, const char* name);

  void setTransX(int t);
  void setTransY(int t);
  void setRot(float r);
  void setFlip(bool b);

public Q_SLOTS:
  void transXChange(int t);
  void transYChange(int t);
  void rotChange(double r);
  void flipChange(bool b);

Q_SIGNALS:
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
