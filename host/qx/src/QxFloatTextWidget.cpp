#include "QxFloatTextWidget.h"

#include "QxFloatField.h"
#include "QxFlowLayout.h"
#include "zx/ZxPort.h"

#include <QHBoxLayout>
#include <QLabel>

QxFloatTextWidget::QxFloatTextWidget(ZxPortFloatTextN& port, QWidget* parent)
  : QxPortWidget(port, parent), m_texts(port)
{
  auto* layout = new QxFlowLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  for (int i = 0; i < port.getNum(); ++i) {
    const QString text = QString::fromStdString(port.getFieldLabel(i));
    auto* field = new QxFloatField(this);
    prepare(field, i, text);
    auto* label = new QLabel(text, this);
    label->setToolTip(field->toolTip());
    label->setBuddy(field);
    connect(field, &QxFloatField::valueEntered, this,
            [this, i](float value) { change([&texts = m_texts, i, value] { texts.setValue(i, value); }); });
    auto* pair = new QWidget(this);
    auto* row = new QHBoxLayout(pair);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(label);
    row->addWidget(field);
    layout->addWidget(pair);
    m_fields.push_back(field);
  }
}

void QxFloatTextWidget::refresh()
{
  for (int i = 0; i < m_texts.getNum(); ++i)
    m_fields[static_cast<std::size_t>(i)]->setValue(m_texts.getValue(i));
}
