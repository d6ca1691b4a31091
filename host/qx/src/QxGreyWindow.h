#pragma once

#include <QWidget>

class QxFloatField;
class QxRangeSlider;

/// The values that are shown black and white: two fields, a slider with two ends, and a button that takes
/// them from the data. Children: "blackField", "greySlider", "whiteField", "autoGrey".
class QxGreyWindow : public QWidget {
  Q_OBJECT
public:
  explicit QxGreyWindow(QWidget* parent);

  /// Shows a window within the range of values that occur. Emits nothing.
  void set(float black, float white, float minimum, float maximum);

Q_SIGNALS:
  /// The user has entered another window; black may lie above white.
  void entered(float black, float white);
  void autoWanted();

private:
  QxFloatField* m_black; // these three: children
  QxFloatField* m_white;
  QxRangeSlider* m_slider;
};
