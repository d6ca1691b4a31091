#include "QxPortWidget.h"

#include "QxButtonListWidget.h"
#include "QxConnectionWidget.h"
#include "QxFloatTextWidget.h"
#include "QxMultiMenuWidget.h"
#include "QxObjectText.h"
#include "zx/ZxModule.h"

QxPortWidget::QxPortWidget(ZxPort& port, QWidget* parent) : QWidget(parent), m_port(port)
{
  setObjectName(QString::fromStdString(port.getName()));
}

QxPortWidget* QxPortWidget::create(ZxPort& port, QWidget* parent)
{
  if (auto* connection = dynamic_cast<ZxConnection*>(&port))
    return new QxConnectionWidget(*connection, parent);
  if (auto* text = dynamic_cast<ZxPortFloatTextN*>(&port)) return new QxFloatTextWidget(*text, parent);
  if (auto* menu = dynamic_cast<ZxPortMultiMenu*>(&port)) return new QxMultiMenuWidget(*menu, parent);
  if (auto* buttons = dynamic_cast<ZxPortButtonList*>(&port)) return new QxButtonListWidget(*buttons, parent);
  return nullptr;
}

void QxPortWidget::prepare(QWidget* control, int number, const QString& text)
{
  control->setObjectName(objectName() + '.' + QString::number(number));
  control->setToolTip(QString::fromStdString(m_port.getTip()));
  control->setAccessibleName((QxObjectText::portLabel(m_port) + ' ' + text).trimmed());
}

void QxPortWidget::change(std::function<void()> edit) { m_port.getOwner()->change(std::move(edit)); }
