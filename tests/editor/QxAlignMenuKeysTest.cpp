// The keys of the editor's menus, in a real window.
#include "qx/QxMainWindow.h"
#include "support/Waiting.h"
#include "zxalign/AlignEditorFactory.h"
#include "zxalign/ModuleTest.h"
#include "zxalign/QxAlignMenuBar.h"
#include "zxalign/QxAlignSlices.h"
#include "zxalign/QxDrawAlignSlices.h"
#include "zxalign/ZxAlignEditor.h"

#include <QSignalSpy>
#include <QTest>

namespace {

using Menus = QxAlignMenuBar;

struct Row {
  const char* name;
  Qt::Key key;
  Qt::KeyboardModifiers modifiers;
  void (Menus::*signal)();
};

const Row rows[] = {{"undo", Qt::Key_Z, Qt::ControlModifier, &Menus::undoSignal},
                    {"redo", Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier, &Menus::redoSignal},
                    {"reset all", Qt::Key_L, Qt::ControlModifier, &Menus::resetAllSignal},
                    {"reset", Qt::Key_R, Qt::ControlModifier, &Menus::resetSignal},
                    {"read", Qt::Key_D, Qt::ControlModifier, &Menus::readSignal},
                    {"save", Qt::Key_S, Qt::ControlModifier, &Menus::saveSignal},
                    {"zoom in", Qt::Key_Plus, Qt::ControlModifier, &Menus::zoomInSignal},
                    {"zoom out", Qt::Key_Minus, Qt::ControlModifier, &Menus::zoomOutSignal},
                    {"red/green", Qt::Key_G, Qt::ControlModifier, &Menus::redGreenSignal},
                    {"average", Qt::Key_A, Qt::ControlModifier, &Menus::avgSignal},
                    {"invert", Qt::Key_I, Qt::ControlModifier, &Menus::invertSignal},
                    {"add", Qt::Key_Insert, Qt::ControlModifier, &Menus::addLandmarkSignal},
                    {"remove", Qt::Key_Delete, Qt::ControlModifier, &Menus::removeLandmarkSignal}};

class QxAlignMenuKeysTest : public ModuleTest {
protected:
  QxAlignMenuKeysTest()
  {
    connect(module->portData, stack);
    ZxAlignEditor::setFactory(&makeAlignEditor);
  }
  ~QxAlignMenuKeysTest() override
  {
    module = {};
    ZxAlignEditor::setFactory({});
  }
  void show(QWidget& window)
  {
    window.resize(900, 700);
    window.show();
    ASSERT_TRUE(waitForExposed(&window));
    window.activateWindow();
    ASSERT_TRUE(waitForActive(&window));
  }
  /// Every key emits its signal once, wherever in the editor the focus is.
  void expectKeysActOnce(QxAlignSlices& editor)
  {
    Menus& menus = *editor.menuSet();
    for (QWidget* focus : std::initializer_list<QWidget*>{&editor, editor.drawArea()}) {
      focus->setFocus();
      for (const Row& row : rows) {
        menus.undoNotEmpty();
        menus.redoNotEmpty();
        menus.enableLandmarkAdd(true);
        menus.enableLandmarkRemove(true);
        QSignalSpy spy(&menus, row.signal);
        QTest::keyClick(focus, row.key, row.modifiers);
        EXPECT_EQ(spy.size(), 1) << row.name;
      }
    }
  }

  McHandle<ZxField3> stack = greyStack({20, 16, 4});
};

TEST_F(QxAlignMenuKeysTest, EachKeyActsOnceWhileTheMenusAreInTheBar)
{
  QxMainWindow host;
  QAction* hostItem = host.menuBar()->actions().first()->menu()->addAction("Save", QKeySequence("Ctrl+S"));
  QSignalSpy hostSaves(hostItem, &QAction::triggered);
  show(host);
  module->doIt(1);
  auto* editor = dynamic_cast<QxAlignSlices*>(module->editor());
  ASSERT_TRUE(editor);
  expectKeysActOnce(*editor);
  EXPECT_TRUE(hostSaves.isEmpty());

  // Disabled together: neither the item nor the editor's action goes below two landmarks.
  QSignalSpy removals(editor->menuSet(), &Menus::removeLandmarkSignal);
  editor->menuSet()->enableLandmarkRemove(false);
  QTest::keyClick(editor, Qt::Key_Delete, Qt::ControlModifier);
  EXPECT_TRUE(removals.isEmpty());

  // Put away, the editor has no keys, and the window has its own again.
  QSignalSpy saves(editor->menuSet(), &Menus::saveSignal);
  editor->setActive(false);
  QTest::keyClick(&host, Qt::Key_S, Qt::ControlModifier);
  EXPECT_TRUE(saves.isEmpty());
  EXPECT_EQ(hostSaves.size(), 1);
  editor->setParent(nullptr);
  module = {};
}

TEST_F(QxAlignMenuKeysTest, EachKeyActsOnceInAnEditorWithoutAMainWindow)
{
  QxAlignSlices editor(module.get());
  editor.setWindowFlags(Qt::Window);
  show(editor);
  expectKeysActOnce(editor);
  QSignalSpy removals(editor.menuSet(), &Menus::removeLandmarkSignal);
  editor.menuSet()->enableLandmarkRemove(false);
  QTest::keyClick(&editor, Qt::Key_Delete, Qt::ControlModifier);
  EXPECT_TRUE(removals.isEmpty());
}

} // namespace
