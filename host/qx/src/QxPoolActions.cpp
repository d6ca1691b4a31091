#include "QxPoolActions.h"

#include "QxFileCommands.h"
#include "QxObjectText.h"
#include "QxPoolPanel.h"
#include "QxVolumePage.h"
#include "qx/QxCentralPage.h"
#include "qx/ZxResource.h"
#include "zx/ZxInterpreter.h"
#include "zx/ZxMessage.h"
#include "zx/ZxModule.h"
#include "zx/ZxModuleClasses.h"
#include "zx/ZxObjectPool.h"
#include "zx/ZxWorkArea.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QMessageBox>

#include <algorithm>

namespace {

bool isAnyInPass()
{
  const auto& objects = ZxObjectPool::getThePool().objects();
  return std::any_of(objects.begin(), objects.end(), [](const McHandle<ZxObject>& o) {
    const auto* module = dynamic_cast<const ZxModule*>(o.get());
    return module && module->isInPass();
  });
}

} // namespace

QxPoolActions::QxPoolActions(QxPoolPanel* panel, QxVolumePage* page, QxFileCommands* files,
                             QMainWindow* window)
  : QObject(window), m_panel(panel), m_page(page), m_files(files), m_window(window),
    m_save(makeAction("save", tr("&Save"), "Save.png", &QxPoolActions::saveSelected)),
    m_saveAs(makeAction("saveAs", tr("Save &As..."), "SaveAs.png", &QxPoolActions::saveSelectedAs)),
    m_remove(makeAction("removeObject", tr("&Remove"), "Remove.png", &QxPoolActions::removeSelected)),
    m_rename(makeAction("renameObject", tr("Re&name"), nullptr, &QxPoolActions::renameSelected)),
    m_show(makeAction("showObject", tr("Show in &Viewer"), "Viewer.png", &QxPoolActions::showSelected))
{
  m_save->setShortcut(QKeySequence::Save);
  m_saveAs->setShortcut(QKeySequence("Ctrl+Shift+S"));
  m_remove->setShortcut(QKeySequence::Delete);
  m_rename->setShortcut(QKeySequence("F2"));
  // In the list only: elsewhere these keys edit text.
  for (QAction* action : {m_remove, m_rename}) {
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    panel->addAction(action);
  }
  connect(panel, &QxPoolPanel::selectionChanged, this, &QxPoolActions::follow);
  connect(panel, &QxPoolPanel::menuRequested, this, &QxPoolActions::showContextMenu);
  connect(panel, &QxPoolPanel::activated, page, &QxVolumePage::setObject);
  connect(page, &QxVolumePage::dataChanged, this, &QxPoolActions::follow);
  m_show->setCheckable(true);
  follow();
}

QAction* QxPoolActions::makeAction(const char* name, const QString& text, const char* icon,
                                   void (QxPoolActions::*slot)())
{
  auto* action = new QAction(text, this);
  action->setObjectName(name);
  if (icon) action->setIcon(ZxResource::readIcon(icon));
  connect(action, &QAction::triggered, this, [this, slot] {
    if (!isRefused()) (this->*slot)();
  });
  return action;
}

bool QxPoolActions::isWorkGoingOn()
{
  return ZxWorkArea::getTheWorkArea()->isBusy() || ZxInterpreter::getTheInterpreter().isEvaluating() ||
         isAnyInPass();
}

bool QxPoolActions::isRefused()
{
  if (!isWorkGoingOn()) return false;
  ZxMessage::getTheMsg()->printf(
      "%s", tr("This has to wait until the work that is going on has ended.").toUtf8().constData());
  return true;
}

void QxPoolActions::follow()
{
  const std::vector<ZxObject*> selected = m_panel->selectedObjects();
  const bool hasData = std::any_of(selected.begin(), selected.end(), [](const ZxObject* o) {
    return dynamic_cast<const ZxSpatialData*>(o) != nullptr;
  });
  m_save->setEnabled(hasData);
  m_saveAs->setEnabled(hasData);
  m_remove->setEnabled(!selected.empty());
  m_rename->setEnabled(selected.size() == 1);
  const ZxSpatialData* volume = selected.size() == 1 ? QxVolumePage::volumeOf(selected.front()) : nullptr;
  m_show->setEnabled(volume);
  m_show->setChecked(volume && volume == m_page->data());
}

void QxPoolActions::fillPoolMenu(QMenu* menu)
{
  for (QAction* action : {m_show, m_rename, m_save, m_saveAs}) menu->addAction(action);
  menu->addSeparator();
  menu->addAction(m_remove);
}

void QxPoolActions::fillCreateMenu(QMenu* menu)
{
  menu->clear();
  const ZxObject* object = m_panel->selectedObject();
  const auto classes = object ? ZxModuleClasses::attachableTo(*object) : std::vector<const McTypeInfo*>();
  for (const McTypeInfo* type : classes) {
    const QString name = QString::fromStdString(type->name());
    QAction* action = menu->addAction(ZxResource::readIcon("Module.png"), name);
    action->setObjectName("attach:" + name);
    connect(action, &QAction::triggered, this, [this, type] { attach(*type); });
  }
  if (!classes.empty()) return;
  const QString reason =
      object ? tr("No module takes this object") : tr("Select one volume to attach a module to");
  menu->addAction(reason)->setEnabled(false);
}

void QxPoolActions::showContextMenu(const QPoint& place)
{
  if (m_panel->selectedObjects().empty()) return;
  QMenu menu(m_window);
  menu.setObjectName("objectMenu");
  QMenu* create = menu.addMenu(tr("&Attach"));
  fillCreateMenu(create);
  menu.addSeparator();
  fillPoolMenu(&menu);
  menu.exec(place);
}

void QxPoolActions::attach(const McTypeInfo& moduleClass)
{
  ZxObject* object = m_panel->selectedObject();
  if (!object || isRefused()) return;
  if (ZxModule* module = ZxModuleClasses::attach(moduleClass, *object)) Q_EMIT attached(module);
}

void QxPoolActions::removeSelected()
{
  std::vector<McHandle<ZxObject>> objects;
  for (ZxObject* object : m_panel->selectedObjects()) objects.emplace_back(object);
  const QList<QPointer<QWidget>> pages = pagesOf(objects);
  for (const QPointer<QWidget>& page : pages) // Their answers may change the data that are asked about next.
    if (auto* asked = dynamic_cast<QxCentralPage*>(page.data()); asked && !asked->canClose()) return;
  QStringList unsaved;
  for (const McHandle<ZxObject>& object : objects)
    if (const auto* data = dynamic_cast<const ZxData*>(object.get()); data && data->isUnsaved())
      unsaved << QxObjectText::label(*data);
  const QString question =
      tr("%1 has changes that are not saved. Remove it all the same?").arg(unsaved.join(", "));
  if (!unsaved.isEmpty() &&
      QMessageBox::question(m_window, tr("Remove"), question, QMessageBox::Yes | QMessageBox::Cancel,
                            QMessageBox::Cancel) != QMessageBox::Yes)
    return;
  for (const QPointer<QWidget>& page : pages)
    if (auto* closed = dynamic_cast<QxCentralPage*>(page.data())) closed->closePage();
  for (const McHandle<ZxObject>& object : objects) ZxObjectPool::getThePool().remove(object.get());
}

QList<QPointer<QWidget>> QxPoolActions::pagesOf(const std::vector<McHandle<ZxObject>>& objects) const
{
  const auto isAmongThem = [&](const ZxObject* object) {
    return object && std::any_of(objects.begin(), objects.end(),
                                 [object](const McHandle<ZxObject>& o) { return o.get() == object; });
  };
  QList<QPointer<QWidget>> pages;
  for (QWidget* widget : m_window->centralWidget()->findChildren<QWidget*>()) {
    const auto* page = dynamic_cast<const QxCentralPage*>(widget);
    const ZxObject* edited = page ? page->editedObject() : nullptr;
    const auto* module = dynamic_cast<const ZxModule*>(edited);
    if (isAmongThem(edited) || (module && isAmongThem(module->portData.getSource()))) pages << widget;
  }
  return pages;
}

void QxPoolActions::renameSelected()
{
  if (const ZxObject* object = m_panel->selectedObject()) m_panel->rename(object);
}

void QxPoolActions::showSelected()
{
  if (m_show->isChecked())
    m_page->setObject(m_panel->selectedObject());
  else
    m_page->clear();
}

template <class Save>
void QxPoolActions::forSelectedData(Save save)
{
  std::vector<McHandle<ZxSpatialData>> selected;
  for (ZxObject* object : m_panel->selectedObjects())
    if (auto* data = dynamic_cast<ZxSpatialData*>(object)) selected.emplace_back(data);
  for (const McHandle<ZxSpatialData>& data : selected)
    if (!save(*data)) return;
}

void QxPoolActions::saveSelected()
{
  forSelectedData([this](ZxSpatialData& data) { return m_files->save(data); });
}

void QxPoolActions::saveSelectedAs()
{
  forSelectedData([this](ZxSpatialData& data) { return m_files->saveAs(data); });
}
