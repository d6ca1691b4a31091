#pragma once

#include <QString>
#include <QWidget>

class QLineEdit;
class QxSlider;

/// A QxSlider with a text field that shows its value and takes a typed one.
///
/// A typed value is taken on Return or when the field loses the focus; text that is no number brings the old
/// value back. Children: "slider", "field".
class QxFullSlider : public QWidget {
  Q_OBJECT
public:
  explicit QxFullSlider(QWidget* parent = nullptr, const char* name = nullptr);

  float getValue() const noexcept;
  void setMinMax(float minimum, float maximum);
  void setIncrement(float increment);
  /// How the field shows the value, a printf format of one double: "%.0f".
  void setFormat(const char* format);
  /// The frame style of the slider inside.
  void setSliderFrameStyle(int style);
  QxSlider* slider() const noexcept { return m_slider; }
  QLineEdit* field() const noexcept { return m_field; }

public Q_SLOTS:
  /// Clamps to the limits; emits valueChanged() when that is another value.
  void setValue(float value);

Q_SIGNALS:
  void valueChanged(float value);

private:
  void showValue();

  QxSlider* m_slider; // child
  QLineEdit* m_field; // child
  QString m_format = QStringLiteral("%g");
};
