#include "QxPoolPanel.h"

#include "QxPoolTree.h"
#include "QxPoolWatcher.h"
#include "zx/ZxModule.h"
#include "zx/ZxObjectPool.h"

#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>

QxPoolPanel::QxPoolPanel(QxPoolWatcher* watcher, QWidget* parent)
  : QWidget(parent), m_tree(new QxPoolTree(this)), m_hint(new QLabel(this))
{
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(m_tree);
  m_hint->setObjectName("poolHint");
  m_hint->setText(tr("Right-click a volume to attach a module."));
  m_hint->setWordWrap(true);
  m_hint->setMargin(6);
  m_hint->setForegroundRole(QPalette::PlaceholderText);
  layout->addWidget(m_hint);
  setFocusProxy(m_tree);
  connect(watcher, &QxPoolWatcher::changed, m_tree, &QxPoolTree::refresh);
  connect(watcher, &QxPoolWatcher::changed, this, &QxPoolPanel::showHint);
  connect(watcher, &QxPoolWatcher::removed, m_tree, &QxPoolTree::drop);
  connect(m_tree, &QTreeWidget::itemSelectionChanged, this, &QxPoolPanel::selectionChanged);
  connect(m_tree, &QWidget::customContextMenuRequested, this,
          [this](const QPoint& place) { Q_EMIT menuRequested(m_tree->viewport()->mapToGlobal(place)); });
  connect(m_tree, &QTreeWidget::itemActivated, this, [this] {
    if (ZxObject* object = m_tree->currentObject()) Q_EMIT activated(object);
  });
  m_tree->refresh();
  showHint();
}

void QxPoolPanel::showHint()
{
  const auto& objects = ZxObjectPool::getThePool().objects();
  const bool hasModule = std::any_of(objects.begin(), objects.end(), [](const McHandle<ZxObject>& o) {
    return dynamic_cast<ZxModule*>(o.get()) != nullptr;
  });
  m_hint->setVisible(!objects.empty() && !hasModule);
}

std::vector<ZxObject*> QxPoolPanel::selectedObjects() const { return m_tree->selectedObjects(); }

ZxObject* QxPoolPanel::selectedObject() const
{
  const std::vector<ZxObject*> objects = selectedObjects();
  return objects.size() == 1 ? objects.front() : nullptr;
}

void QxPoolPanel::select(const ZxObject* object)
{
  m_tree->refresh();
  m_tree->select(object);
}

void QxPoolPanel::rename(const ZxObject* object) { m_tree->rename(object); }
