#include "QxButtonListWidget.h"

#include "QxFlowLayout.h"
#include "zx/ZxPort.h"

#include <QPushButton>

QxButtonListWidget::QxButtonListWidget(ZxPortButtonList& port, QWidget* parent)
  : QxPortWidget(port, parent), m_list(port)
{
  auto* layout = new QxFlowLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  for (int i = 0; i < port.getNum(); ++i) {
    auto* button = new QPushButton(this);
    prepare(button, i, QString::fromStdString(port.getButtonLabel(i)));
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, [this, i] { change([&list = m_list, i] { list.hit(i); }); });
    layout->addWidget(button);
    m_buttons.push_back(button);
  }
}

void QxButtonListWidget::refresh()
{
  for (int i = 0; i < m_list.getNum(); ++i) {
    QPushButton* button = m_buttons[static_cast<std::size_t>(i)];
    button->setText(QString::fromStdString(m_list.getButtonLabel(i)));
    button->setEnabled(m_list.isButtonSensitive(i));
  }
}
