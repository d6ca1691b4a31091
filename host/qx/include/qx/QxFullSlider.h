#pragma once

#include <QString>
#include <QWidget>

class QLineEdit;
class QxSlider;

/// A QxSlider with a text field that shows its value and takes a typed one.
///
/// A typed value is taken on Return or when the field loses the focus; text that is no number, or Escape,
/// brings the old value back. Up and Down in the field step by the increment. Children: "slider", "field".
class QxFullSlider : public QWidget {
  Q_OBJECT
  Q_PROPERTY(float value READ getValue WRITE setValue NOTIFY valueChanged USER true)
public:
  /// The name is the object's name, and what a screen reader calls it.
  explicit QxFullSlider(QWidget* parent = nullptr, const char* name = nullptr);

  /// The value of the slider.
  float getValue() const noexcept;
  /// As QxSlider::setMinMax(). The field becomes as wide as the longest value of the range.
  void setMinMax(float minimum, float maximum);
  float getMinimum() const noexcept;
  float getMaximum() const noexcept;
  /// As QxSlider::setIncrement().
  void setIncrement(float increment);
  /// How the field shows the value, a printf format of one double: "%.0f".
  void setFormat(const char* format);
  /// The frame style of the slider inside.
  void setSliderFrameStyle(int style);
  /// The parts.
  QxSlider* slider() const noexcept { return m_slider; }
  QLineEdit* field() const noexcept { return m_field; }

public Q_SLOTS:
  /// Clamps to the limits; emits valueChanged() when that is another value. NaN changes nothing.
  void setValue(float value);

Q_SIGNALS:
  /// The value is another one, whoever has changed it.
  void valueChanged(float value);

protected:
  void keyPressEvent(QKeyEvent* event) override;
  void changeEvent(QEvent* event) override;

private:
  QString textOf(float value) const;
  void showValue();
  void takeText();
  void fitField();

  QxSlider* m_slider; // child
  QLineEdit* m_field; // child
  QString m_format = QStringLiteral("%g");
};
