#pragma once

#include "QxPortWidget.h"

class QComboBox;
class ZxPortMultiMenu;

/// A choice of one entry.
class QxMultiMenuWidget : public QxPortWidget {
  Q_OBJECT
public:
  QxMultiMenuWidget(ZxPortMultiMenu& port, QWidget* parent);
  void refresh() override;

private:
  ZxPortMultiMenu& m_menu;
  QComboBox* m_combo; // child
};
