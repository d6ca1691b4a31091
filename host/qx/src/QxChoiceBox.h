#pragma once

#include <QComboBox>

/// A combo box in a panel that can be scrolled: the wheel scrolls the panel and changes no choice by
/// accident, and long entries do not widen the panel.
class QxChoiceBox : public QComboBox {
  Q_OBJECT
public:
  explicit QxChoiceBox(QWidget* parent);

protected:
  void wheelEvent(QWheelEvent* event) override;
};
