#include "zxalign/QxAlignMenuBar.h"

#include "qx/QxMainWindow.h"
#include "zx/ZxController.h"
#include "zx/ZxSettingsMgr.h"
#include "zxalign/ModuleTest.h"
#include "zxalign/QxAlignSlices.h"
#include "zxalign/ZxAutoAlignMethodFabrique.h"

#include <QSignalSpy>
#include <QTest>

namespace {

using Strings = QStringList;

/// A window with an editor whose menus are looked at alone: the test stands for all their receivers.
class QxAlignMenuBarTest : public ModuleTest {
protected:
  QxAlignMenuBarTest() { connect(module->portData, stack); }
  ~QxAlignMenuBarTest() override
  {
    menus.reset();
    editor.reset();
  }

  /// An item of the menus.
  QAction* item(const char* name) const
  {
    for (const QMenu* menu : ours)
      if (auto* action = menu->findChild<QAction*>(name)) return action;
    return nullptr;
  }
  /// The titles that are visible in the bar, in their order.
  Strings bar() const
  {
    Strings titles;
    for (const QAction* action : host->menuBar()->actions())
      if (action->isVisible()) titles << action->text();
    return titles;
  }
  std::unique_ptr<QxAlignMenuBar> makeMenus()
  {
    const QList<QMenu*> before = host->menuBar()->findChildren<QMenu*>();
    auto made = std::make_unique<QxAlignMenuBar>(editor.get());
    ours.clear();
    for (QMenu* menu : host->menuBar()->findChildren<QMenu*>())
      if (!before.contains(menu)) ours << menu;
    return made;
  }

  McHandle<ZxField3> stack = greyStack({20, 16, 4});
  std::unique_ptr<QxMainWindow> host = std::make_unique<QxMainWindow>();
  QList<QMenu*> ours;
  std::unique_ptr<QxAlignSlices> editor = std::make_unique<QxAlignSlices>(module.get());
  std::unique_ptr<QxAlignMenuBar> menus = makeMenus();
};

/// "text|key|checkable, checked or neither|enabled" of the items of a menu.
Strings describe(const QMenu* menu)
{
  Strings lines;
  for (const QAction* action : menu->actions()) {
    const QString state = !action->isCheckable() ? "" : action->isChecked() ? "x" : "o";
    lines << (action->isSeparator() ? QString("-")
                                    : action->text() + '|' + action->shortcut().toString() + '|' + state +
                                          (action->isEnabled() ? "" : "|disabled"));
  }
  return lines;
}

TEST_F(QxAlignMenuBarTest, TheMenusHaveTheirItemsInOrder)
{
  ZxSettingsMgr::getInstance()->setUsesAnatomicalNames(true);
  menus->addMenu();
  const QList<QAction*> actions = host->menuBar()->actions();
  ASSERT_GE(actions.size(), 4);
  const QList<QAction*> last = actions.last(4);
  EXPECT_EQ(describe(last[0]->menu()),
            Strings({"Zoom in|Ctrl++|", "Zoom out|Ctrl+-|", "-", "Red/&Green|Ctrl+G|o", "C&heckerboard||o",
                     "&Average|Ctrl+A|o", "In&vert|Ctrl+I|x", "-", "Transform &parameters||o", "-",
                     "C&oronal view||o", "Sagi&ttal view||o", "-", "3D Viewer||"}));
  EXPECT_EQ(describe(last[1]->menu()),
            Strings({"Undo|Ctrl+Z||disabled", "Redo|Ctrl+Shift+Z||disabled", "-", "Reset a&ll|Ctrl+L|",
                     "&Reset|Ctrl+R|", "Transform all||x", "Fix reference||o", "-",
                     "&Read transformation|Ctrl+D|", "&Save transformation|Ctrl+S|"}));
  EXPECT_EQ(describe(last[2]->menu()),
            Strings({"Gravity centers||o", "Least-squares||x", "Landmarks||o", "Edge detection||o", "-",
                     "Align current pair||", "Align all slices||", "-", "Options...||"}));
  EXPECT_EQ(describe(last[3]->menu()), Strings({"Add|Ctrl+Ins|", "Remove|Ctrl+Del|"}));
  ZxSettingsMgr::getInstance()->setUsesAnatomicalNames(false);
  EXPECT_EQ(describe(last[0]->menu()).mid(10, 2), Strings({"&XZ view||o", "&YZ view||o"}));
  ZxSettingsMgr::getInstance()->setUsesAnatomicalNames(true);
}

TEST_F(QxAlignMenuBarTest, TheBarHoldsTheMenusOnceAndGetsItsOwnBackInOrder)
{
  host->menuBar()->addMenu("E&xtra");
  const Strings before = bar();
  const Strings during{"&File", "&Edit", "&Pool",    "Ex&plorer", "&Create",
                       "&Help", "&View", "O&ptions", "&Align",    "Land&marks"};
  menus->addMenu();
  EXPECT_EQ(bar(), during);
  menus->addMenu();
  EXPECT_EQ(bar(), during);
  {
    QxAlignSlices otherEditor(module.get());
    QxAlignMenuBar other(&otherEditor);
    other.addMenu();
    EXPECT_EQ(bar(), during) << "the menus of two editors at once";
    other.removeMenu();
    EXPECT_EQ(bar(), before);
    menus->addMenu();
  }
  EXPECT_EQ(bar(), during) << "another editor that goes leaves the menus alone";
  menus.reset();
  EXPECT_EQ(bar(), before);
}

TEST_F(QxAlignMenuBarTest, EveryItemEmitsItsSignalOnce)
{
  using Menus = QxAlignMenuBar;
  menus->addMenu();
  menus->undoNotEmpty();
  menus->redoNotEmpty();
  const std::vector<std::pair<const char*, void (Menus::*)()>> plain{
      {"undoAction", &Menus::undoSignal},
      {"redoAction", &Menus::redoSignal},
      {"resetAllAction", &Menus::resetAllSignal},
      {"resetAction", &Menus::resetSignal},
      {"transformAllAction", &Menus::transformAllSignal},
      {"fixReferenceAction", &Menus::fixReferenceSignal},
      {"readAction", &Menus::readSignal},
      {"saveAction", &Menus::saveSignal},
      {"zoomInAction", &Menus::zoomInSignal},
      {"zoomOutAction", &Menus::zoomOutSignal},
      {"redGreenAction", &Menus::redGreenSignal},
      {"chessAction", &Menus::chessSignal},
      {"averageAction", &Menus::avgSignal},
      {"invertAction", &Menus::invertSignal},
      {"alignPairAction", &Menus::doItSignal},
      {"alignAllAction", &Menus::doAllSignal},
      {"optionsAction", &Menus::showParametersSignal},
      {"addLandmarkAction", &Menus::addLandmarkSignal},
      {"removeLandmarkAction", &Menus::removeLandmarkSignal}};
  for (const auto& [name, signal] : plain) {
    QSignalSpy spy(menus.get(), signal);
    ASSERT_TRUE(item(name)) << name;
    item(name)->trigger();
    EXPECT_EQ(spy.size(), 1) << name;
  }
  const std::vector<std::pair<const char*, void (Menus::*)(bool)>> toggles{
      {"transformParametersAction", &Menus::transformToolBarSignal},
      {"coronalAction", &Menus::coronalSignal},
      {"sagittalAction", &Menus::sagittalSignal}};
  for (const auto& [name, signal] : toggles) {
    QSignalSpy spy(menus.get(), signal);
    item(name)->trigger();
    item(name)->trigger();
    ASSERT_EQ(spy.size(), 2) << name;
    EXPECT_TRUE(spy[0][0].toBool());
    EXPECT_FALSE(spy[1][0].toBool());
  }
}

TEST_F(QxAlignMenuBarTest, ChoicesAreExclusiveAlsoWhenTheSameIsChosenAgain)
{
  const auto checked = [this](const std::vector<const char*>& names) {
    Strings on;
    for (const char* name : names)
      if (item(name)->isChecked()) on << name;
    return on;
  };
  const std::vector<const char*> modes{"gravityAction", "leastSquaresAction", "landmarksAction",
                                       "edgeDetectionAction"};
  QSignalSpy mode(menus.get(), &QxAlignMenuBar::alignModeChanged);
  for (const int i : {0, 2, 2, 3, 1}) {
    item(modes[static_cast<std::size_t>(i)])->trigger();
    EXPECT_EQ(checked(modes), Strings(modes[static_cast<std::size_t>(i)]));
    EXPECT_EQ(mode.takeFirst().at(0).toInt(), i);
  }
  menus->changeMode(3);
  EXPECT_EQ(checked(modes), Strings("edgeDetectionAction"));
  for (const int unknown : {-1, 4, 99}) menus->changeMode(unknown);
  EXPECT_EQ(checked(modes), Strings("edgeDetectionAction"));
  EXPECT_TRUE(mode.isEmpty()) << "an echo";

  const std::vector<const char*> compositions{"redGreenAction", "chessAction", "averageAction",
                                              "invertAction"};
  for (const char* name : {"chessAction", "chessAction", "averageAction", "redGreenAction", "invertAction"}) {
    item(name)->trigger();
    EXPECT_EQ(checked(compositions), Strings(name));
  }
}

TEST_F(QxAlignMenuBarTest, WhatIsEnabledFollowsTheSlots)
{
  struct Row {
    const char* item;
    std::function<void()> on, off;
  };
  QxAlignMenuBar& m = *menus;
  for (const Row& row : std::initializer_list<Row>{
           {"undoAction", [&] { m.undoNotEmpty(); }, [&] { m.undoEmpty(); }},
           {"redoAction", [&] { m.redoNotEmpty(); }, [&] { m.redoEmpty(); }},
           {"addLandmarkAction", [&] { m.enableLandmarkAdd(true); }, [&] { m.enableLandmarkAdd(false); }},
           {"removeLandmarkAction", [&] { m.enableLandmarkRemove(true); },
            [&] { m.enableLandmarkRemove(false); }},
           {"transformAllAction", [&] { m.enableTransformAll(); }, [&] { m.disableTransformAll(); }},
           {"fixReferenceAction", [&] { m.enableFixReference(); }, [&] { m.disableFixReference(); }}}) {
    row.off();
    EXPECT_FALSE(item(row.item)->isEnabled()) << row.item;
    row.on();
    EXPECT_TRUE(item(row.item)->isEnabled()) << row.item;
  }
}

/// A controller with viewer 4.
class OneViewer : public ZxController, public ZxViewer {
public:
  OneViewer() { setTheController(this); }
  ~OneViewer() override { setTheController(nullptr); }
  ZxViewer* viewer(int number, int) override { return number == 4 ? this : nullptr; }
  void show(int) override { shown = true; }
  void hide() override { shown = false; }
  bool isShown() const override { return shown; }
  bool shown = false;
};

TEST_F(QxAlignMenuBarTest, TheExtraViewerIsHiddenAndNeverShown)
{
  item("extraViewerAction")->trigger(); // without any viewer
  OneViewer viewer;
  for (const bool shown : {false, true, true}) {
    viewer.shown = shown;
    menus->viewMenuConfig();
    item("extraViewerAction")->trigger();
    EXPECT_FALSE(viewer.shown);
  }
}

TEST_F(QxAlignMenuBarTest, TheCheckMarksOfTheViewsFollowWhatIsShown)
{
  QSignalSpy coronal(menus.get(), &QxAlignMenuBar::coronalSignal);
  item("coronalAction")->setChecked(true); // nobody listens: the view stays hidden
  menus->viewMenuConfig();
  EXPECT_FALSE(item("coronalAction")->isChecked());
  ASSERT_EQ(coronal.size(), 1);
  EXPECT_FALSE(coronal[0][0].toBool());
  menus->viewMenuConfig();
  EXPECT_EQ(coronal.size(), 1);
}

TEST_F(QxAlignMenuBarTest, KeysOfTheMainWindowAreBorrowedAndGivenBack)
{
  QAction save("Save data");
  save.setShortcuts({QKeySequence("Ctrl+S"), QKeySequence("F2")});
  host->menuBar()->actions().first()->menu()->addAction(&save);
  menus->addMenu();
  EXPECT_EQ(save.shortcuts(), QList<QKeySequence>{QKeySequence("F2")});
  menus->addMenu();
  menus->removeMenu();
  EXPECT_EQ(save.shortcuts(), (QList<QKeySequence>{QKeySequence("Ctrl+S"), QKeySequence("F2")}));
}

TEST_F(QxAlignMenuBarTest, OutlivesTheBar)
{
  menus->addMenu();
  editor->setParent(nullptr); // A window would take the page with it.
  host.reset();
  menus->undoNotEmpty();
  menus->gray();
  menus->viewMenuConfig();
  menus->addMenu();
  menus->removeMenu();
}

// The last one: what is registered stays for the rest of the program.
TEST_F(QxAlignMenuBarTest, MethodsOfPlugInsFollowBehindASeparator)
{
  const auto create = [](ZxAlignSlices*) -> ZxAutoAlignMethod* { return nullptr; };
  ZxAutoAlignMethodFabrique* registry = ZxAutoAlignMethodFabrique::getInstance();
  registry->registerAutoAlignMethodPlugIn("Waves & such", create);
  menus = makeMenus();
  registry->registerAutoAlignMethodPlugIn("Other", create);
  Q_EMIT ours[2]->aboutToShow(); // finds what came after the menu
  EXPECT_EQ(describe(ours[2]).mid(2, 6),
            Strings({"Landmarks||o", "Edge detection||o", "-", "Waves && such||o", "Other||o", "-"}));
  QSignalSpy mode(menus.get(), &QxAlignMenuBar::alignModeChanged);
  item("method5Action")->trigger();
  EXPECT_EQ(mode.takeFirst().at(0).toInt(), 5);
  EXPECT_TRUE(item("method5Action")->isChecked());
  EXPECT_FALSE(item("leastSquaresAction")->isChecked());
  menus->changeMode(4);
  EXPECT_TRUE(item("method4Action")->isChecked());
  menus->changeMode(0);
  EXPECT_FALSE(item("method4Action")->isChecked());
  EXPECT_TRUE(mode.isEmpty());
}

} // namespace
