#include "zxalign/QxAlignMenuBar.h"

#include "qx/QxMainWindow.h"
#include "qx/ZxHTML.h"
#include "zx/ZxController.h"
#include "zx/ZxSettingsMgr.h"
#include "zx/ZxSkin.h"
#include "zxalign/QxAlignSlices.h"
#include "zxalign/QxOrthoViewManager.h"
#include "zxalign/QxViewAlignSlicesCoronal.h"
#include "zxalign/QxViewAlignSlicesSagittal.h"
#include "zxalign/ZxAutoAlignMethodFabrique.h"

#include <algorithm>
#include <filesystem>
#include <initializer_list>

namespace {

constexpr int extraViewer = 4;
constexpr int builtInMethods = 4;

/// The menu set that is in the bar; there is one bar, and several editors may want it.
QPointer<QxAlignMenuBar> activeMenus;

QMenuBar* theBar()
{
  QxMainWindow* window = QxMainWindow::getTheMainWindow();
  return window ? window->menuBar() : nullptr;
}

bool isUsefulInEditor(const QString& title)
{
  static const QStringList kept{"&File", "&Edit", "&Pool", "Ex&plorer", "&Create", "&Help"};
  return kept.contains(title);
}

QAction* makeCheckable(QAction* action, bool checked = false)
{
  action->setCheckable(true);
  action->setChecked(checked);
  return action;
}

void setEnabled(QAction* action, bool on)
{
  if (action) action->setEnabled(on);
}

void setChecked(QAction* action, bool on)
{
  if (action) action->setChecked(on);
}

bool isChecked(const QAction* action) { return action && action->isChecked(); }

/// Removes the keys of an action that are in a list; false when it has none of them.
bool removeKeys(QAction& action, const QList<QKeySequence>& taken)
{
  QList<QKeySequence> keys = action.shortcuts();
  if (keys.removeIf([&](const QKeySequence& key) { return taken.contains(key); }) == 0) return false;
  action.setShortcuts(keys);
  return true;
}

bool isWithin(const QObject* object, const QObject* ancestor)
{
  for (; object; object = object->parent())
    if (object == ancestor) return true;
  return false;
}

} // namespace

QxAlignMenuBar::QxAlignMenuBar(QxAlignSlices* editor, const char* name)
  : QObject(editor), m_bar(theBar()), m_editor(editor)
{
  setObjectName(name ? name : "alignMenus");
  makeOptionsMenu();
  makeViewMenu();
  makeAlignMenu();
  makeLandmarksMenu();
  assignKeys();
  nameViews();
  m_listener = ZxSettingsMgr::getInstance()->addListener([this] { nameViews(); });
}

QxAlignMenuBar::~QxAlignMenuBar()
{
  ZxSettingsMgr::getInstance()->removeListener(m_listener);
  removeMenu();
  for (const QPointer<QMenu>& menu : {m_optionsMenu, m_viewMenu, m_alignMenu, m_landmarksMenu}) delete menu;
}

QMenu* QxAlignMenuBar::makeMenu(const char* title, const char* objectName)
{
  auto* menu = new QMenu(title, m_bar);
  menu->setObjectName(objectName);
  return menu;
}

QAction* QxAlignMenuBar::addItem(QMenu* menu, const char* text, const char* objectName, Slot slot,
                                 const char* key)
{
  QAction* item = menu->addAction(text, QKeySequence(key), this, slot);
  item->setObjectName(objectName);
  if (key) m_keys.push_back({item, makeOwnAction(item, slot)});
  return item;
}

QAction* QxAlignMenuBar::makeOwnAction(QAction* item, Slot slot)
{
  auto* own = new QAction(item->text(), m_editor);
  own->setObjectName(item->objectName() + "OfEditor");
  own->setShortcut(item->shortcut());
  connect(own, &QAction::triggered, this, slot);
  connect(item, &QAction::enabledChanged, this, &QxAlignMenuBar::assignKeys);
  m_editor->addAction(own);
  return own;
}

void QxAlignMenuBar::makeOptionsMenu()
{
  m_optionsMenu = makeMenu("O&ptions", "optionsMenu");
  m_undo = addItem(m_optionsMenu, "Undo", "undoAction", &QxAlignMenuBar::undo, "Ctrl+Z");
  m_redo = addItem(m_optionsMenu, "Redo", "redoAction", &QxAlignMenuBar::redo, "Ctrl+Shift+Z");
  m_undo->setEnabled(false);
  m_redo->setEnabled(false);
  m_optionsMenu->addSeparator();
  addItem(m_optionsMenu, "Reset a&ll", "resetAllAction", &QxAlignMenuBar::resetAll, "Ctrl+L");
  addItem(m_optionsMenu, "&Reset", "resetAction", &QxAlignMenuBar::reset, "Ctrl+R");
  m_transformAll = makeCheckable(
      addItem(m_optionsMenu, "Transform all", "transformAllAction", &QxAlignMenuBar::transformAll), true);
  m_fixReference = makeCheckable(
      addItem(m_optionsMenu, "Fix reference", "fixReferenceAction", &QxAlignMenuBar::fixReference));
  m_optionsMenu->addSeparator();
  addItem(m_optionsMenu, "&Read transformation", "readAction", &QxAlignMenuBar::read, "Ctrl+D");
  addItem(m_optionsMenu, "&Save transformation", "saveAction", &QxAlignMenuBar::save, "Ctrl+S");
}

void QxAlignMenuBar::makeViewMenu()
{
  m_viewMenu = makeMenu("&View", "viewMenu");
  QMenu* menu = m_viewMenu;
  addItem(menu, "Zoom in", "zoomInAction", &QxAlignMenuBar::zoomIn, "Ctrl++");
  addItem(menu, "Zoom out", "zoomOutAction", &QxAlignMenuBar::zoomOut, "Ctrl+-");
  menu->addSeparator();
  m_redGreen =
      makeCheckable(addItem(menu, "Red/&Green", "redGreenAction", &QxAlignMenuBar::redGreen, "Ctrl+G"));
  m_chess = makeCheckable(addItem(menu, "C&heckerboard", "chessAction", &QxAlignMenuBar::chess));
  m_avg = makeCheckable(addItem(menu, "&Average", "averageAction", &QxAlignMenuBar::avg, "Ctrl+A"));
  m_invert = makeCheckable(addItem(menu, "In&vert", "invertAction", &QxAlignMenuBar::invert, "Ctrl+I"), true);
  menu->addSeparator();
  m_transformParameters = makeCheckable(addItem(menu, "Transform &parameters", "transformParametersAction",
                                                &QxAlignMenuBar::transformParametersToolBar));
  menu->addSeparator();
  m_coronal = makeCheckable(addItem(menu, "", "coronalAction", &QxAlignMenuBar::coronal));
  m_sagittal = makeCheckable(addItem(menu, "", "sagittalAction", &QxAlignMenuBar::sagittal));
  menu->addSeparator();
  m_extraViewer = addItem(menu, "3D Viewer", "extraViewerAction", &QxAlignMenuBar::showExtraViewer);
  connect(menu, &QMenu::aboutToShow, this, &QxAlignMenuBar::viewMenuConfig);
}

void QxAlignMenuBar::makeAlignMenu()
{
  m_alignMenu = makeMenu("&Align", "alignMenu");
  QMenu* menu = m_alignMenu;
  m_methods = {{0, addItem(menu, "Gravity centers", "gravityAction", &QxAlignMenuBar::centers)},
               {1, addItem(menu, "Least-squares", "leastSquaresAction", &QxAlignMenuBar::gray)},
               {2, addItem(menu, "Landmarks", "landmarksAction", &QxAlignMenuBar::landmarks)},
               {3, addItem(menu, "Edge detection", "edgeDetectionAction", &QxAlignMenuBar::edgeDetection)}};
  for (const Method& method : m_methods) makeCheckable(method.item, method.id == 1);
  m_methodsEnd = menu->addSeparator();
  addPlugInMethods();
  // A plug-in may be loaded while the editor is there.
  connect(menu, &QMenu::aboutToShow, this, &QxAlignMenuBar::addPlugInMethods);
  addItem(menu, "Align current pair", "alignPairAction", &QxAlignMenuBar::doIt);
  addItem(menu, "Align all slices", "alignAllAction", &QxAlignMenuBar::doAll);
  menu->addSeparator();
  m_options = addItem(menu, "Options...", "optionsAction", &QxAlignMenuBar::showParameters);
}

void QxAlignMenuBar::addPlugInMethods()
{
  McDArray<int> ids;
  McDArray<McString> names;
  ZxAutoAlignMethodFabrique::getInstance()->getAutoAlignMethods(ids, names);
  for (std::size_t i = 0; i < ids.size(); ++i) {
    const int id = ids[i];
    if (std::any_of(m_methods.begin(), m_methods.end(), [id](const Method& m) { return m.id == id; }))
      continue;
    if (m_methods.size() == builtInMethods) m_alignMenu->insertSeparator(m_methodsEnd);
    // A name may hold an ampersand, which is no key here.
    auto* item = new QAction(QString::fromStdString(names[i].str()).replace("&", "&&"), m_alignMenu);
    connect(item, &QAction::triggered, this, [this, id] { chooseMode(id); });
    item->setObjectName(QString("method%1Action").arg(id));
    m_alignMenu->insertAction(m_methodsEnd, makeCheckable(item, false));
    m_methods.push_back({id, item});
  }
}

void QxAlignMenuBar::makeLandmarksMenu()
{
  m_landmarksMenu = makeMenu("Land&marks", "landmarksMenu");
  m_addLandmark =
      addItem(m_landmarksMenu, "Add", "addLandmarkAction", &QxAlignMenuBar::addLandmark, "Ctrl+Ins");
  m_removeLandmark =
      addItem(m_landmarksMenu, "Remove", "removeLandmarkAction", &QxAlignMenuBar::removeLandmark, "Ctrl+Del");
}

void QxAlignMenuBar::nameViews()
{
  if (!m_coronal || !m_sagittal) return;
  const bool anatomical = ZxSettingsMgr::getInstance()->usesAnatomicalNames();
  m_coronal->setText(anatomical ? "C&oronal view" : "&XZ view");
  m_sagittal->setText(anatomical ? "Sagi&ttal view" : "&YZ view");
}

void QxAlignMenuBar::addMenu()
{
  if (isIn()) removeMenu();
  if (activeMenus) activeMenus->removeMenu(); // Shown beside those of another editor, they would be theirs.
  if (!m_bar) return;
  hideOtherMenus();
  for (QMenu* menu : {m_viewMenu.data(), m_optionsMenu.data(), m_alignMenu.data(), m_landmarksMenu.data()})
    m_inserted.append(m_bar->addMenu(menu));
  activeMenus = this;
  borrowKeys();
  assignKeys();
}

void QxAlignMenuBar::hideOtherMenus() const
{
  const QList<QAction*> actions = m_bar->actions();
  for (QAction* action : actions)
    if (!isUsefulInEditor(action->text())) action->setVisible(false);
}

void QxAlignMenuBar::removeMenu()
{
  if (!isIn()) return;
  if (m_bar) {
    for (QAction* action : std::as_const(m_inserted)) m_bar->removeAction(action);
    const QList<QAction*> actions = m_bar->actions();
    for (QAction* action : actions) action->setVisible(true);
  }
  m_inserted.clear();
  if (activeMenus == this) activeMenus = nullptr;
  giveKeysBack();
  assignKeys();
}

void QxAlignMenuBar::borrowKeys()
{
  QList<QKeySequence> taken;
  for (const Key& key : m_keys) taken += key.item->shortcuts();
  const auto isOurs = [this](const QAction* action) {
    return isWithin(action, m_editor) ||
           std::any_of(m_keys.begin(), m_keys.end(), [action](const Key& key) { return key.item == action; });
  };
  const auto borrowFrom = [&](const QWidget& widget) {
    const QList<QAction*> actions = widget.actions();
    for (QAction* action : actions) {
      const QList<QKeySequence> before = action->shortcuts();
      if (!isOurs(action) && removeKeys(*action, taken)) m_borrowed.push_back({action, before});
    }
  };
  const QWidget* window = m_bar->window();
  borrowFrom(*window);
  const QList<QWidget*> widgets = window->findChildren<QWidget*>();
  for (const QWidget* widget : widgets) borrowFrom(*widget);
}

void QxAlignMenuBar::giveKeysBack()
{
  for (const Borrowed& borrowed : m_borrowed)
    if (borrowed.action) borrowed.action->setShortcuts(borrowed.keys);
  m_borrowed.clear();
}

void QxAlignMenuBar::assignKeys()
{
  // A disabled action has no key. Two enabled ones with the same key would be ambiguous: neither would act.
  for (const Key& key : m_keys) setEnabled(key.own, !isIn() && key.item && key.item->isEnabled());
}

void QxAlignMenuBar::enableFixReference() { setEnabled(m_fixReference, true); }
void QxAlignMenuBar::disableFixReference() { setEnabled(m_fixReference, false); }
void QxAlignMenuBar::enableTransformAll() { setEnabled(m_transformAll, true); }
void QxAlignMenuBar::disableTransformAll() { setEnabled(m_transformAll, false); }

void QxAlignMenuBar::showTransformAll(bool on) { setChecked(m_transformAll, on); }
void QxAlignMenuBar::showFixReference(bool on) { setChecked(m_fixReference, on); }
void QxAlignMenuBar::showTransformParameters(bool on) { setChecked(m_transformParameters, on); }

void QxAlignMenuBar::zoomIn() { Q_EMIT zoomInSignal(); }
void QxAlignMenuBar::zoomOut() { Q_EMIT zoomOutSignal(); }
void QxAlignMenuBar::cancel() { Q_EMIT cancelSignal(); }
void QxAlignMenuBar::resetAll() { Q_EMIT resetAllSignal(); }
void QxAlignMenuBar::reset() { Q_EMIT resetSignal(); }
void QxAlignMenuBar::transformAll() { Q_EMIT transformAllSignal(); }
void QxAlignMenuBar::fixReference() { Q_EMIT fixReferenceSignal(); }
void QxAlignMenuBar::read() { Q_EMIT readSignal(); }
void QxAlignMenuBar::save() { Q_EMIT saveSignal(); }
void QxAlignMenuBar::undo() { Q_EMIT undoSignal(); }
void QxAlignMenuBar::redo() { Q_EMIT redoSignal(); }
void QxAlignMenuBar::doIt() { Q_EMIT doItSignal(); }
void QxAlignMenuBar::doAll() { Q_EMIT doAllSignal(); }
void QxAlignMenuBar::addLandmark() { Q_EMIT addLandmarkSignal(); }
void QxAlignMenuBar::removeLandmark() { Q_EMIT removeLandmarkSignal(); }
void QxAlignMenuBar::showParameters() { Q_EMIT showParametersSignal(); }

void QxAlignMenuBar::undoEmpty() { setEnabled(m_undo, false); }
void QxAlignMenuBar::undoNotEmpty() { setEnabled(m_undo, true); }
void QxAlignMenuBar::redoEmpty() { setEnabled(m_redo, false); }
void QxAlignMenuBar::redoNotEmpty() { setEnabled(m_redo, true); }
void QxAlignMenuBar::enableLandmarkAdd(bool on) { setEnabled(m_addLandmark, on); }
void QxAlignMenuBar::enableLandmarkRemove(bool on) { setEnabled(m_removeLandmark, on); }

void QxAlignMenuBar::chooseComposition(const QAction* item)
{
  for (QAction* action : {m_redGreen.data(), m_chess.data(), m_avg.data(), m_invert.data()})
    setChecked(action, action == item);
}

void QxAlignMenuBar::redGreen()
{
  chooseComposition(m_redGreen);
  Q_EMIT redGreenSignal();
}

void QxAlignMenuBar::chess()
{
  chooseComposition(m_chess);
  Q_EMIT chessSignal();
}

void QxAlignMenuBar::avg()
{
  chooseComposition(m_avg);
  Q_EMIT avgSignal();
}

void QxAlignMenuBar::invert()
{
  chooseComposition(m_invert);
  Q_EMIT invertSignal();
}

void QxAlignMenuBar::changeMode(int mode)
{
  addPlugInMethods();
  const auto has = [mode](const Method& method) { return method.id == mode; };
  if (std::none_of(m_methods.begin(), m_methods.end(), has)) return;
  for (const Method& method : m_methods) setChecked(method.item, method.id == mode);
}

void QxAlignMenuBar::chooseMode(int mode)
{
  changeMode(mode);
  Q_EMIT alignModeChanged(mode);
}

void QxAlignMenuBar::centers() { chooseMode(0); }

void QxAlignMenuBar::gray()
{
  setEnabled(m_options, true);
  chooseMode(1);
}

void QxAlignMenuBar::landmarks() { chooseMode(2); }

void QxAlignMenuBar::edgeDetection()
{
  setEnabled(m_options, true);
  chooseMode(3);
}

void QxAlignMenuBar::transformParametersToolBar()
{
  Q_EMIT transformToolBarSignal(isChecked(m_transformParameters));
}

void QxAlignMenuBar::coronal() { Q_EMIT coronalSignal(isChecked(m_coronal)); }

void QxAlignMenuBar::sagittal() { Q_EMIT sagittalSignal(isChecked(m_sagittal)); }

void QxAlignMenuBar::viewMenuConfig()
{
  const ZxViewer* viewer = ZxController::getTheController()->viewer(extraViewer, 0);
  setChecked(m_extraViewer, viewer && viewer->isShown());
  QxOrthoViewManager* views = m_editor->getOrthoViewManager();
  const QWidget* coronalView = views ? views->getCoronalView() : nullptr;
  const QWidget* sagittalView = views ? views->getSagittalView() : nullptr;
  checkView(m_coronal, coronalView && coronalView->isVisible(), &QxAlignMenuBar::coronal);
  checkView(m_sagittal, sagittalView && sagittalView->isVisible(), &QxAlignMenuBar::sagittal);
}

void QxAlignMenuBar::checkView(QAction* item, bool shown, Slot slot)
{
  if (!item || item->isChecked() == shown) return;
  item->setChecked(shown);
  (this->*slot)();
}

void QxAlignMenuBar::showExtraViewer()
{
  ZxController* controller = ZxController::getTheController();
  const ZxViewer* present = controller->viewer(extraViewer, 0);
  setChecked(m_extraViewer, !(present && present->isShown()));
  ZxViewer* viewer = controller->viewer(extraViewer, 1);
  if (!viewer) return;
  // An action that is not checkable is never checked, whatever it was set to: see the declaration.
  if (isChecked(m_extraViewer))
    viewer->show(1);
  else
    viewer->hide();
}

void QxAlignMenuBar::menuUsersguide()
{
  const std::string page = ZxSkin::getGlobalInstance()->getPathToHelpFile("zxalign", "ZxAlignSlices.html");
  std::error_code error;
  ZxHTML* browser = ZxHTML::getTheBrowser();
  if (std::filesystem::exists(page, error))
    browser->load(QString::fromStdString(page));
  else
    browser->home();
  browser->show();
}
