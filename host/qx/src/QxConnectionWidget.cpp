#include "QxConnectionWidget.h"

#include "QxChoiceBox.h"
#include "QxObjectText.h"
#include "zx/ZxModule.h"
#include "zx/ZxObjectPool.h"

#include <QHBoxLayout>

namespace {

QVariant pointerOf(ZxData* data) { return QVariant::fromValue(static_cast<void*>(data)); }

struct Choice {
  QString text;
  QIcon icon;
  QVariant data;
};

std::vector<Choice> choicesFor(const ZxConnection& connection)
{
  std::vector<Choice> choices{{QxConnectionWidget::tr("none"), {}, pointerOf(nullptr)}};
  for (const McHandle<ZxObject>& o : ZxObjectPool::getThePool().objects())
    if (auto* data = dynamic_cast<ZxData*>(o.get()); data && connection.accepts(*data))
      choices.push_back({QxObjectText::label(*data), QxObjectText::icon(*data), pointerOf(data)});
  return choices;
}

} // namespace

QxConnectionWidget::QxConnectionWidget(ZxConnection& port, QWidget* parent)
  : QxPortWidget(port, parent), m_connection(port), m_combo(new QxChoiceBox(this))
{
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(m_combo);
  prepare(m_combo, 0, {});
  connect(m_combo, &QComboBox::activated, this, &QxConnectionWidget::connectTo);
}

void QxConnectionWidget::refresh()
{
  const std::vector<Choice> choices = choicesFor(m_connection);
  while (m_combo->count() > static_cast<int>(choices.size())) m_combo->removeItem(m_combo->count() - 1);
  for (int i = 0; i < static_cast<int>(choices.size()); ++i) {
    const Choice& choice = choices[static_cast<std::size_t>(i)];
    if (i == m_combo->count()) m_combo->addItem(QString());
    m_combo->setItemText(i, choice.text);
    m_combo->setItemIcon(i, choice.icon);
    m_combo->setItemData(i, choice.data);
    if (choice.data == pointerOf(m_connection.getSource())) m_combo->setCurrentIndex(i);
  }
}

void QxConnectionWidget::connectTo(int index)
{
  auto* chosen = static_cast<ZxData*>(m_combo->itemData(index).value<void*>());
  const McHandle<ZxData> source(ZxObjectPool::getThePool().contains(chosen) ? chosen : nullptr);
  change([&connection = m_connection, source] {
    if (!source || source->isInPool()) connection.connect(source.get());
  });
}
