#pragma once

#include "QxPortWidget.h"

#include <vector>

class QxFloatField;
class ZxPortFloatTextN;

/// A row of labelled number fields.
class QxFloatTextWidget : public QxPortWidget {
  Q_OBJECT
public:
  QxFloatTextWidget(ZxPortFloatTextN& port, QWidget* parent);
  void refresh() override;

private:
  ZxPortFloatTextN& m_texts;
  std::vector<QxFloatField*> m_fields; // children
};
