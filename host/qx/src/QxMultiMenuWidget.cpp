#include "QxMultiMenuWidget.h"

#include "QxChoiceBox.h"
#include "zx/ZxPort.h"

#include <QHBoxLayout>

QxMultiMenuWidget::QxMultiMenuWidget(ZxPortMultiMenu& port, QWidget* parent)
  : QxPortWidget(port, parent), m_menu(port), m_combo(new QxChoiceBox(this))
{
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(m_combo);
  prepare(m_combo, 0, {});
  for (const std::string& entry : port.getEntries()) m_combo->addItem(QString::fromStdString(entry));
  connect(m_combo, &QComboBox::activated, this,
          [this](int index) { change([&menu = m_menu, index] { menu.setValue(index); }); });
}

void QxMultiMenuWidget::refresh() { m_combo->setCurrentIndex(m_menu.getValue()); }
