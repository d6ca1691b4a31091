#pragma once

#include "QxPortWidget.h"

#include <vector>

class QPushButton;
class ZxPortButtonList;

/// A row of push buttons.
class QxButtonListWidget : public QxPortWidget {
  Q_OBJECT
public:
  QxButtonListWidget(ZxPortButtonList& port, QWidget* parent);
  void refresh() override;

private:
  ZxPortButtonList& m_list;
  std::vector<QPushButton*> m_buttons; // children
};
