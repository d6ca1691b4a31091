#include "Camera.h"
#include "Scenes.h"
#include "Stage.h"

#include <QAbstractScrollArea>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QTabWidget>

namespace {

constexpr int shownSlice = 40;

/// A part of the slice view around its middle.
void takeSlices(Stage& stage, const Camera& manual, const QString& name)
{
  constexpr QSize size(320, 240);
  QWidget& view = *stage.find<QAbstractScrollArea>("drawArea").viewport();
  manual.takeWidget(name, view, QRect(view.rect().center() - QPoint(size.width(), size.height()) / 2, size));
}

/// Every way to compose a pair, of a pair that is not yet aligned.
void takeCompositions(Stage& stage, const Camera& manual)
{
  const struct {
    const char* action;
    const char* name;
  } ways[] = {{"redGreenAction", "editor-red-green"},
              {"chessAction", "editor-checkerboard"},
              {"averageAction", "editor-average"},
              {"invertAction", "editor-inverted"}};
  for (const auto& way : ways) {
    stage.find<QAction>(way.action).trigger();
    takeSlices(stage, manual, way.name);
  }
}

/// An open menu with its title and the one before it.
QRect placeOf(QMainWindow& window, const QMenu& menu)
{
  constexpr int margin = 12;
  const QMenuBar& bar = *window.menuBar();
  QAction* before = nullptr;
  for (QAction* title : bar.actions()) {
    if (title == menu.menuAction()) break;
    if (title->isVisible()) before = title;
  }
  const int left = before ? bar.actionGeometry(before).left() : 0;
  const QPoint corner = window.mapFromGlobal(menu.mapToGlobal(menu.rect().bottomRight()));
  return QRect(QPoint(left, 0), corner + QPoint(margin, margin));
}

void takeMenus(Stage& stage, const Camera& manual)
{
  for (const char* name : {"view", "options", "align", "landmarks"}) {
    const QByteArray menu = QByteArray(name) + "Menu";
    stage.whileMenuIsOpen(menu.constData(), [&](QMenu& opened) {
      manual.takeWindow(QString("menu-%1").arg(name), stage.window(), placeOf(stage.window(), opened));
    });
  }
}

void takeOptions(Stage& stage, const Camera& manual)
{
  const auto open = [&] { stage.find<QAction>("optionsAction").trigger(); };
  Stage::whileOpen(open, [&](QWidget& dialog) {
    auto* const tabs = dialog.findChild<QTabWidget*>("optionsTabWidget");
    if (!tabs) Stage::fail("The options have no tabs.");
    for (int i = 0; i < tabs->count(); ++i) {
      tabs->setCurrentIndex(i);
      const QString name = tabs->tabText(i).remove('&').toLower().replace(' ', '-');
      manual.takeWidget("options-" + name, dialog);
    }
  });
}

/// The same places of two neighbouring slices, and one of them selected.
void takeLandmarks(Stage& stage, const Camera& manual)
{
  stage.find<QWidget>("editLandmarks").setFocus();
  stage.script("align setEditMode 3; align addLandmark 120 150; align addLandmark 290 110");
  manual.takeWindow("editor-landmarks", stage.window());
  stage.script("align undo; align undo; align setEditMode 1");
}

void takePairQuality(Stage& stage, const Camera& manual)
{
  QWidget& dock = stage.find("pairQualityDock");
  dock.show();
  const auto& state = stage.find<QLabel>("pairQualityState");
  Stage::waitFor("the pair qualities", [&state] {
    return state.text().startsWith("Worst") && !state.text().contains("up to date");
  });
  manual.takeWidget("pair-quality", dock);
}

} // namespace

void takeEditor(Stage& stage, const Camera& manual)
{
  stage.script("align edit");
  stage.script(QString("align setSliceNumber %1").arg(shownSlice));
  takeCompositions(stage, manual);
  takeMenus(stage, manual);
  takeOptions(stage, manual);
  takeLandmarks(stage, manual);
  stage.script(QString("align setAlignMode 1; align alignAll; align setSliceNumber %1").arg(shownSlice));
  stage.script("align showCoronalView 1; align showSagittalView 1");
  stage.showDock("consoleDock", false);
  manual.takeWindow("editor-orthogonal", stage.window());
  takePairQuality(stage, manual);
  manual.takeWindow("editor", stage.window());
}
