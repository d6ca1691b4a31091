#include "Camera.h"
#include "Scenes.h"
#include "Stage.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QScrollArea>
#include <QTreeWidget>

namespace {

/// The context menu of the selected object with its first submenu, as after a right click on it.
void takeContextMenu(Stage& stage, const Camera& tour)
{
  auto& pool = stage.find<QTreeWidget>("poolList");
  pool.setFocus(Qt::MouseFocusReason);
  const QPoint place = pool.visualItemRect(pool.currentItem()).center();
  const auto click = [&] {
    QContextMenuEvent event(QContextMenuEvent::Mouse, place, pool.viewport()->mapToGlobal(place));
    QApplication::sendEvent(pool.viewport(), &event);
  };
  Stage::whileOpen(click, [&](QWidget& opened) {
    auto* const attach = opened.findChild<QMenu*>();
    if (!attach) Stage::fail("The context menu has no submenu.");
    auto& menu = dynamic_cast<QMenu&>(opened);
    menu.setActiveAction(attach->menuAction());
    Stage::waitFor("the submenu", [attach] { return attach->isVisible(); });
    attach->setActiveAction(attach->actions().first());
    tour.takeWindow("desktop-attach", stage.window());
  });
}

void takePorts(Stage& stage, const Camera& manual)
{
  constexpr int margin = 8;
  auto& page = *stage.find<QScrollArea>("portPanel").widget();
  manual.takeWidget("ports", page, QRect(0, 0, page.width(), page.childrenRect().bottom() + margin));
}

void takeHelp(Stage& stage, const Camera& tour)
{
  stage.find<QAction>("helpContents").trigger();
  QWidget* help = nullptr;
  Stage::waitFor("the help", [&help] {
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows)
      if (window->objectName() == "help" && window->isVisible()) help = window;
    return help != nullptr;
  });
  help->resize(960, 640);
  tour.takeWidget("desktop-help", *help);
  help->close();
}

} // namespace

void takeDesktop(Stage& stage, const Camera& tour, const Camera& manual, const char* stack)
{
  tour.takeWindow("desktop-empty", stage.window());
  stage.open(stack);
  tour.takeWindow("desktop-stack", stage.window());
  takeContextMenu(stage, tour);
  stage.script("create ZxAlignSlices align; align data connect stack.nrrd; align fire");
  auto& pool = stage.find<QTreeWidget>("poolList");
  pool.setCurrentItem(pool.findItems("align", Qt::MatchExactly | Qt::MatchRecursive).first());
  Stage::settle();
  tour.takeWindow("desktop-module", stage.window());
  takePorts(stage, manual);
  Stage::whileOpen([&] { stage.find<QAction>("preferencesAction").trigger(); },
                   [&](QWidget& dialog) { tour.takeWidget("desktop-preferences", dialog); });
  takeHelp(stage, tour);
}
