#include "QxSliderAccessible.h"

#include "qx/QxSlider.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace {

class SliderInterface : public QAccessibleWidget, public QAccessibleValueInterface {
public:
  explicit SliderInterface(QxSlider* slider)
    : QAccessibleWidget(slider, QAccessible::Slider), m_slider(slider)
  {
  }

  void* interface_cast(QAccessible::InterfaceType type) override
  {
    if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
  }
  QString text(QAccessible::Text kind) const override
  {
    return kind == QAccessible::Value ? QString::number(double(m_slider->getValue()))
                                      : QAccessibleWidget::text(kind);
  }

  QVariant currentValue() const override { return m_slider->getValue(); }
  void setCurrentValue(const QVariant& value) override { m_slider->setValue(value.toFloat()); }
  QVariant maximumValue() const override { return m_slider->getMaximum(); }
  QVariant minimumValue() const override { return m_slider->getMinimum(); }
  QVariant minimumStepSize() const override { return m_slider->getIncrement(); }

private:
  QxSlider* m_slider; // outlives its interface
};

QAccessibleInterface* makeInterface(const QString&, QObject* object)
{
  auto* slider = qobject_cast<QxSlider*>(object);
  return slider ? new SliderInterface(slider) : nullptr;
}

} // namespace

void installSliderAccessibility()
{
  static const bool installed = [] {
    QAccessible::installFactory(makeInterface);
    return true;
  }();
  Q_UNUSED(installed);
}

void announceSliderValue(QxSlider* slider)
{
  QAccessibleValueChangeEvent event(slider, slider->getValue());
  QAccessible::updateAccessibility(&event);
}
