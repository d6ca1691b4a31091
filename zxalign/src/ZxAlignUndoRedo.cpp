#include "zxalign/ZxAlignUndoRedo.h"

#include "zxalign/AlignRecovery.h"
#include "zxalign/ZxAlignEditor.h"
#include "zxalign/ZxAlignSlices.h"

ZxAlignUndoRedo::ZxAlignUndoRedo(ZxAlignSlices* module, int) : m_module(module) {}

void ZxAlignUndoRedo::saveState()
{
  m_module->history().save(m_module->currentState());
  m_module->recovery().queue();
  tell(&ZxAlignEditor::undoNotEmpty);
}

void ZxAlignUndoRedo::undo()
{
  if (m_module->isRunning()) return; // A method works on the slices.
  AlignHistory& history = m_module->history();
  const std::optional<State> state = history.undo(m_module->currentState());
  if (!state) return;
  restoreState(*state);
  tell(&ZxAlignEditor::redoNotEmpty);
  if (!history.canUndo()) tell(&ZxAlignEditor::undoEmpty);
}

void ZxAlignUndoRedo::redo()
{
  if (m_module->isRunning()) return; // A method works on the slices.
  AlignHistory& history = m_module->history();
  const std::optional<State> state = history.redo(m_module->currentState());
  if (!state) return;
  restoreState(*state);
  tell(&ZxAlignEditor::undoNotEmpty);
  if (!history.canRedo()) tell(&ZxAlignEditor::redoEmpty);
}

void ZxAlignUndoRedo::restoreState(const State& state) { m_module->restoreState(state); }

void ZxAlignUndoRedo::clear()
{
  m_module->history().clear();
  tell(&ZxAlignEditor::undoEmpty);
  tell(&ZxAlignEditor::redoEmpty);
}

void ZxAlignUndoRedo::tell(Notification notification)
{
  if (ZxAlignEditor* editor = m_module->editor()) (editor->*notification)();
}
