#include "QxPoolTree.h"

#include "QxObjectText.h"
#include "zx/ZxModule.h"
#include "zx/ZxObjectPool.h"

#include <QHeaderView>
#include <QPainter>
#include <QSignalBlocker>
#include <QTreeWidgetItemIterator>

#include <algorithm>
#include <map>
#include <memory>
#include <set>

namespace {

enum Column { NameColumn, SizeColumn };

/// Shows one object of the pool; what is typed into it becomes the object's label.
class ObjectItem : public QTreeWidgetItem {
public:
  explicit ObjectItem(ZxObject* shown) : object(shown)
  {
    setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable);
    setForeground(SizeColumn, QPalette().brush(QPalette::PlaceholderText));
    refresh();
  }

  void refresh()
  {
    const auto* data = dynamic_cast<const ZxData*>(object);
    const QString mark = data && data->isUnsaved() ? QStringLiteral(" *") : QString();
    const QString tip = QxObjectText::toolTip(*object);
    setIcon(NameColumn, QxObjectText::icon(*object));
    QTreeWidgetItem::setData(NameColumn, Qt::DisplayRole, QxObjectText::label(*object) + mark);
    setText(SizeColumn, QxObjectText::size(*object));
    for (const int column : {NameColumn, SizeColumn}) setToolTip(column, tip);
  }

  QVariant data(int column, int role) const override
  {
    if (column == NameColumn && role == Qt::EditRole) return QxObjectText::label(*object);
    return QTreeWidgetItem::data(column, role);
  }

  void setData(int column, int role, const QVariant& value) override
  {
    if (role != Qt::EditRole || column != NameColumn) return QTreeWidgetItem::setData(column, role, value);
    const std::string label = value.toString().trimmed().toStdString();
    if (!label.empty()) object->setLabel(McString(label));
  }

  ZxObject* const object;
};

using Parents = std::vector<std::pair<ZxObject*, ZxObject*>>;

ZxObject* parentOf(const Parents& parents, const ZxObject* object)
{
  const auto it =
      std::find_if(parents.begin(), parents.end(), [&](const auto& p) { return p.first == object; });
  return it == parents.end() ? nullptr : it->second;
}

/// Each object with the one it stands below: a module below its input, a result below its module.
Parents findParents()
{
  Parents parents;
  const auto& objects = ZxObjectPool::getThePool().objects();
  for (const auto& o : objects) {
    const auto* module = dynamic_cast<const ZxModule*>(o.get());
    parents.emplace_back(o.get(), module ? module->portData.getSource() : nullptr);
  }
  for (const auto& o : objects) {
    const auto* module = dynamic_cast<const ZxCompModule*>(o.get());
    for (int slot = 0; module && slot < module->getNumResults(); ++slot)
      for (auto& [object, parent] : parents)
        if (object == module->getResult(slot)) parent = o.get();
  }
  // A module may read its own result: such a ring begins with the data.
  for (auto& [object, parent] : parents) {
    std::set<ZxObject*> above;
    for (ZxObject* p = parent; p && p != object && above.insert(p).second;) {
      p = parentOf(parents, p);
      if (p == object && dynamic_cast<ZxData*>(object)) parent = nullptr;
    }
  }
  return parents;
}

} // namespace

QxPoolTree::QxPoolTree(QWidget* parent) : QTreeWidget(parent)
{
  setObjectName("poolList");
  setAccessibleName(tr("Objects"));
  setHeaderLabels({tr("Name"), tr("Size")});
  header()->setStretchLastSection(false);
  header()->setSectionResizeMode(NameColumn, QHeaderView::Stretch);
  header()->setSectionResizeMode(SizeColumn, QHeaderView::ResizeToContents);
  setTextElideMode(Qt::ElideMiddle);
  setRootIsDecorated(false);
  setItemsExpandable(false);
  setIndentation(22);
  setUniformRowHeights(true);
  setSelectionMode(ExtendedSelection);
  setEditTriggers(NoEditTriggers); // An action with a key of its own does it.
  setContextMenuPolicy(Qt::CustomContextMenu);
}

void QxPoolTree::refresh()
{
  m_refreshIsDue = state() == EditingState; // It would take away what is being typed.
  if (m_refreshIsDue) return;
  Parents parents = findParents();
  if (parents != m_shown) {
    m_shown = std::move(parents);
    rebuild();
    return;
  }
  for (QTreeWidgetItemIterator it(this); *it; ++it) static_cast<ObjectItem*>(*it)->refresh();
}

void QxPoolTree::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint)
{
  QTreeWidget::closeEditor(editor, hint);
  if (m_refreshIsDue) refresh();
}

void QxPoolTree::rebuild()
{
  const std::vector<ZxObject*> selected = selectedObjects();
  const ZxObject* current = currentObject();
  {
    const QSignalBlocker quiet(this);
    clear();
    std::map<ZxObject*, ObjectItem*> items;
    for (const auto& [object, parent] : m_shown) items[object] = new ObjectItem(object);
    for (const auto& [object, parent] : m_shown)
      if (const auto above = items.find(parent); above != items.end())
        above->second->addChild(items[object]);
      else
        addTopLevelItem(items[object]);
    expandAll();
    for (ZxObject* object : selected)
      if (items.count(object)) items[object]->setSelected(true);
    if (auto* item = itemOf(current)) setCurrentItem(item, NameColumn, QItemSelectionModel::NoUpdate);
  }
  Q_EMIT itemSelectionChanged();
}

void QxPoolTree::drop(const ZxObject* object)
{
  std::unique_ptr<QTreeWidgetItem> item(itemOf(object));
  if (!item) return;
  std::erase_if(m_shown, [&](const auto& shown) { return shown.first == object || shown.second == object; });
  {
    const QSignalBlocker quiet(this);
    for (QTreeWidgetItem* child : item->takeChildren()) addTopLevelItem(child);
    QTreeWidgetItem* above = item->parent() ? item->parent() : invisibleRootItem();
    above->removeChild(item.get());
  }
  item.reset();
  Q_EMIT itemSelectionChanged();
}

QTreeWidgetItem* QxPoolTree::itemOf(const ZxObject* object) const
{
  for (QTreeWidgetItemIterator it(const_cast<QxPoolTree*>(this)); *it; ++it)
    if (static_cast<ObjectItem*>(*it)->object == object) return *it;
  return nullptr;
}

std::vector<ZxObject*> QxPoolTree::selectedObjects() const
{
  std::vector<ZxObject*> objects;
  for (QTreeWidgetItemIterator it(const_cast<QxPoolTree*>(this)); *it; ++it)
    if ((*it)->isSelected()) objects.push_back(static_cast<ObjectItem*>(*it)->object);
  return objects;
}

ZxObject* QxPoolTree::currentObject() const
{
  const auto* item = static_cast<ObjectItem*>(currentItem());
  return item ? item->object : nullptr;
}

void QxPoolTree::select(const ZxObject* object)
{
  if (QTreeWidgetItem* item = itemOf(object)) setCurrentItem(item);
}

void QxPoolTree::rename(const ZxObject* object)
{
  if (QTreeWidgetItem* item = itemOf(object)) editItem(item, NameColumn);
}

void QxPoolTree::drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const
{
  painter->save();
  painter->setPen(QPen(palette().color(QPalette::Disabled, QPalette::Text), 1));
  int right = rect.right() + 1;
  bool isOwn = true;
  for (QModelIndex i = index; i.parent().isValid(); i = i.parent()) {
    const int x = right - indentation() / 2 - 2;
    const bool hasNext = i.siblingAtRow(i.row() + 1).isValid();
    const int middle = rect.center().y();
    if (isOwn || hasNext) painter->drawLine(x, rect.top(), x, hasNext ? rect.bottom() : middle);
    if (isOwn) painter->drawLine(x, middle, right - 3, middle);
    isOwn = false;
    right -= indentation();
  }
  painter->restore();
}
