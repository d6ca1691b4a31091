#include "ModuleTest.h"
#include "zxalign/QxAlignUndoRedo.h"
#include "zxalign/ZxAlignEditor.h"

namespace {

/// An editor window that only writes down what it is told.
class RecordingEditor : public ZxAlignEditor {
public:
  RecordingEditor(ZxAlignSlices& module, Lines& told) : m_module(module), m_told(told) {}

  void updateViews() override {}
  void setSliceInfo(const SliceInfo&) override {}
  void reinitialise() override {}
  void setUseMaxIntProjection(bool) override {}
  void setActive(bool) override {}
  bool cancel() override { return true; }
  void repaintSliceView() override {}
  ZxAlignSlices& module() override { return m_module; }
  void suspendUpdates() override { m_told.push_back("suspend"); }
  void resumeUpdates() override { m_told.push_back("resume"); }
  void showPair() override { m_told.push_back("pair " + std::to_string(m_module.getEditableSlice())); }
  void undoEmpty() override { m_told.push_back("undoEmpty"); }
  void undoNotEmpty() override { m_told.push_back("undoNotEmpty"); }
  void redoEmpty() override { m_told.push_back("redoEmpty"); }
  void redoNotEmpty() override { m_told.push_back("redoNotEmpty"); }

private:
  ZxAlignSlices& m_module;
  Lines& m_told;
};

class ZxAlignUndoRedoTest : public ModuleTest {
protected:
  void SetUp() override { connect(module->portData, stack); }
  void giveEditor() { module->setEditor(std::make_unique<RecordingEditor>(*module, told)); }
  void selectPair(int editable, int side)
  {
    module->setEditableSide(side);
    module->setReferenceSlice(editable - side);
    module->setSlice(editable);
  }

  McHandle<ZxField3> stack = greyStack({12, 9, 5});
  Lines told;
};

} // namespace

TEST_F(ZxAlignUndoRedoTest, GivesBackSlicesLandmarksAndPair)
{
  ZxAlignUndoRedo& history = module->undoRedo();
  selectPair(1, -1);
  const std::vector<int> editable = editableImage(), reference = referenceImage();
  setTransform(3, {1, 2, 3, true});
  history.saveState();

  selectPair(4, +1);
  module->translate(5, 6, false);
  module->addPoint({7, 8});
  history.undo();
  EXPECT_EQ(module->getEditableSlice(), 1);
  EXPECT_EQ(module->getReferenceSlice(), 2);
  EXPECT_EQ(module->getEditableSide(), -1);
  EXPECT_EQ(editableImage(), editable);
  EXPECT_EQ(referenceImage(), reference);
  EXPECT_TRUE(isAt(3, {1, 2, 3, true}));
  EXPECT_TRUE(isAt(4, {}));
  EXPECT_EQ(module->getSlice(0).landmarks.size(), 2U);

  history.redo();
  EXPECT_EQ(module->getEditableSlice(), 4);
  EXPECT_EQ(module->getReferenceSlice(), 3);
  EXPECT_TRUE(isAt(4, {5, 6, 0, false}));
  ASSERT_EQ(module->getSlice(2).landmarks.size(), 3U);
  EXPECT_EQ(module->getSlice(2).landmarks[2], QPoint(7, 8));
}

TEST_F(ZxAlignUndoRedoTest, TellsTheEditorWhatIsPossible)
{
  giveEditor();
  ZxAlignUndoRedo& history = module->undoRedo();
  history.undo();
  history.redo();
  EXPECT_EQ(told, Lines());
  history.saveState();
  module->translate(1, 0, false);
  history.saveState();
  module->translate(2, 0, false);
  told.clear();
  history.undo();
  EXPECT_EQ(std::exchange(told, {}), (Lines{"suspend", "pair 2", "resume", "redoNotEmpty"}));
  history.undo();
  EXPECT_EQ(std::exchange(told, {}), (Lines{"suspend", "pair 2", "resume", "redoNotEmpty", "undoEmpty"}));
  history.redo();
  history.redo();
  EXPECT_EQ(told.back(), "redoEmpty");
  EXPECT_EQ(module->getSlice(2).translationX, 2.0f);
}

TEST_F(ZxAlignUndoRedoTest, SharesOneHistoryWithTheEditor)
{
  giveEditor();
  QxAlignUndoRedo fromEditor(module->editor(), 7);
  Lines signalled;
  const auto record = [&](const char* name) { return [&signalled, name] { signalled.push_back(name); }; };
  QObject::connect(&fromEditor, &QxAlignUndoRedo::undoEmpty, record("undoEmpty"));
  QObject::connect(&fromEditor, &QxAlignUndoRedo::undoNotEmpty, record("undoNotEmpty"));
  QObject::connect(&fromEditor, &QxAlignUndoRedo::redoEmpty, record("redoEmpty"));
  QObject::connect(&fromEditor, &QxAlignUndoRedo::redoNotEmpty, record("redoNotEmpty"));

  module->undoRedo().saveState();
  module->rotate(40, false);
  fromEditor.undo(); // what the script saved
  EXPECT_EQ(module->getSlice(2).rotation, 0.0f);
  EXPECT_EQ(std::exchange(signalled, {}), (Lines{"redoNotEmpty", "undoEmpty"}));
  fromEditor.undo();
  EXPECT_EQ(signalled, Lines());
  fromEditor.redo();
  EXPECT_EQ(module->getSlice(2).rotation, 40.0f);
  EXPECT_EQ(std::exchange(signalled, {}), (Lines{"undoNotEmpty", "redoEmpty"}));
  fromEditor.saveState();
  EXPECT_EQ(signalled, Lines{"undoNotEmpty"});
  module->rotate(50, false);
  module->undoRedo().undo();
  EXPECT_EQ(module->getSlice(2).rotation, 40.0f);
}

TEST_F(ZxAlignUndoRedoTest, RecordsRelativeChangesWhileTheEditorIsOpen)
{
  module->translateRelative(1, 1);
  EXPECT_FALSE(module->history().canUndo());
  giveEditor();
  module->doIt(1);
  module->translateRelative(3, 4);
  module->rotateRelative(10);
  EXPECT_TRUE(isAt(2, {3, 4, 10, false}));
  module->undoRedo().undo();
  EXPECT_TRUE(isAt(2, {3, 4, 0, false}));
  module->undoRedo().undo();
  EXPECT_TRUE(isAt(2, {}));

  // Snapshots of one input are of no use to another.
  module->undoRedo().redo();
  const McHandle<ZxField3> other = greyStack({6, 7, 3});
  connect(module->portData, other);
  module->undoRedo().undo();
  module->undoRedo().redo();
  EXPECT_EQ(module->getSlices().size(), 3U);
}
