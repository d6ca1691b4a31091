#pragma once

#include <QDialog>

class QComboBox;
class QRadioButton;

/// The preferences: names of the cross-sections, and how viewers draw. They are taken up with OK.
///
/// Children: "anatomicalNames", "axisNames", "viewerDrawing".
class QxPreferencesDialog : public QDialog {
  Q_OBJECT
public:
  explicit QxPreferencesDialog(QWidget* parent);
  void accept() override;

private:
  QWidget* makeNames();
  QWidget* makeDrawing();

  QRadioButton* m_anatomical = nullptr; // these two: children
  QComboBox* m_drawing = nullptr;
};
