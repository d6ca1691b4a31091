#pragma once

#include "qx/QxMainWindow.h"
#include "support/Waiting.h"
#include "zxalign/AlignEditorFactory.h"
#include "zxalign/ModuleTest.h"
#include "zxalign/QxAlignMenuBar.h"
#include "zxalign/QxAlignSlices.h"
#include "zxalign/QxAlignUndoRedo.h"
#include "zxalign/QxDrawAlignSlices.h"
#include "zxalign/QxOrthoViewManager.h"
#include "zxalign/ZxAlignEditor.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMessageBox>
#include <QSignalSpy>
#include <QStackedLayout>
#include <QTest>
#include <QTimer>
#include <QToolButton>

/// A module with a stack of seven small slices, whose editor is open in a main window.
class EditorTest : public ModuleTest {
protected:
  void SetUp() override
  {
    ZxAlignEditor::setFactory(&makeAlignEditor);
    host = std::make_unique<QxMainWindow>();
    host->resize(900, 700);
    ZxObjectPool::getThePool().add(stack.get());
    ZxObjectPool::getThePool().add(module.get());
    connect(module->portData, stack);
    press(0);
    host->show();
    host->activateWindow();
    QCoreApplication::processEvents();
    editor = dynamic_cast<QxAlignSlices*>(module->editor());
    ASSERT_TRUE(editor);
    editor->setFocus();
    // A question that nobody expects is a failure, not a hang.
    QObject::connect(&watchdog, &QTimer::timeout, &watchdog, [] {
      QWidget* modal = QApplication::activeModalWidget();
      if (!modal) return;
      ADD_FAILURE() << "unexpected: " << modal->objectName().toStdString();
      modal->close();
    });
    watchdog.start(patience);
  }
  void TearDown() override
  {
    host.reset();
    ZxAlignEditor::setFactory(nullptr);
  }

  template <class T>
  T* child(const char* name)
  {
    T* found = editor->findChild<T*>(name);
    EXPECT_TRUE(found) << name;
    return found;
  }
  QAction* item(const char* name)
  {
    auto* found = host->findChild<QAction*>(name);
    EXPECT_TRUE(found) << name;
    return found;
  }
  /// The items of the editor's menus that can be chosen, the dialog's apart.
  QList<QAction*> items()
  {
    QList<QAction*> all;
    for (const char* menu : {"optionsMenu", "viewMenu", "alignMenu", "landmarksMenu"})
      all += host->findChild<QMenu*>(menu)->actions();
    all.removeIf([](const QAction* a) {
      return a->isSeparator() || !a->isEnabled() || a->objectName() == "optionsAction";
    });
    return all;
  }
  void click(const char* button) { child<QToolButton>(button)->click(); }
  bool isChecked(const char* button) { return child<QToolButton>(button)->isChecked(); }
  void key(int k, Qt::KeyboardModifiers modifiers = {})
  {
    QTest::keyClick(editor, static_cast<Qt::Key>(k), modifiers);
  }

  int current() const { return module->getEditableSlice(); }
  int reference() const { return module->getReferenceSlice(); }
  int side() const { return module->getEditableSide(); }
  const SliceInfo& slice() const { return module->getSlice(current()); }
  /// How many states undo can take back from here; leaves everything as it was.
  int undoDepth()
  {
    AlignHistory copy = module->history();
    int depth = 0;
    for (AlignState state = module->currentState(); auto before = copy.undo(state); ++depth) state = *before;
    return depth;
  }
  void goTo(int editable, int toSide)
  {
    editor->setEditableSlice(toSide);
    editor->sliceChange(static_cast<float>(editable));
    ASSERT_EQ(current(), editable);
    ASSERT_EQ(side(), toSide);
    ASSERT_EQ(reference(), editable - toSide);
  }
  /// Presses a button of the save prompt that is going to open, found by its text.
  void answerPrompt(const char* button)
  {
    QTimer::singleShot(0, host.get(), [button] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      ASSERT_TRUE(box);
      EXPECT_EQ(box->objectName(), "alignSavePrompt");
      for (QAbstractButton* b : box->buttons())
        if (b->text() == button) return b->click();
      ADD_FAILURE() << button;
    });
  }

  McHandle<ZxField3> stack = greyStack({24, 18, 7});
  std::unique_ptr<QxMainWindow> host;
  QxAlignSlices* editor = nullptr;
  QTimer watchdog;
};
