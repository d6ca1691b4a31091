#pragma once

#include "QxPortWidget.h"

class QComboBox;
class ZxConnection;

/// A choice of the data of the pool that the connection accepts, or none.
class QxConnectionWidget : public QxPortWidget {
  Q_OBJECT
public:
  QxConnectionWidget(ZxConnection& port, QWidget* parent);
  void refresh() override;

private:
  void connectTo(int index);

  ZxConnection& m_connection;
  QComboBox* m_combo; // child
};
