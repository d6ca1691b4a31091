#pragma once

#include <QLineEdit>

/// A field for one finite number, with a decimal point in every locale.
///
/// A number is taken on Return or when the field loses the focus; text that is none brings the value back.
class QxFloatField : public QLineEdit {
  Q_OBJECT
public:
  explicit QxFloatField(QWidget* parent);

  float value() const noexcept { return m_value; }
  /// Shows a value, unless the user is just typing another. Emits nothing.
  void setValue(float value);
  /// Room for nine digits; where there is more it may be stretched.
  QSize sizeHint() const override;

Q_SIGNALS:
  /// The user has entered another number.
  void valueEntered(float value);

protected:
  void keyPressEvent(QKeyEvent* event) override;

private:
  void take();
  void giveBack();

  float m_value = 0.0f;
};
