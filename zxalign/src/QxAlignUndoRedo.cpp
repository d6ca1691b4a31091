#include "zxalign/QxAlignUndoRedo.h"

#include "zxalign/AlignRecovery.h"
#include "zxalign/ZxAlignEditor.h"
#include "zxalign/ZxAlignSlices.h"

QxAlignUndoRedo::QxAlignUndoRedo(ZxAlignEditor* editor, int) : m_editor(editor) {}

void QxAlignUndoRedo::saveState()
{
  ZxAlignSlices& module = m_editor->module();
  module.history().save(module.currentState());
  module.recovery().queue();
  Q_EMIT undoNotEmpty();
}

void QxAlignUndoRedo::undo()
{
  ZxAlignSlices& module = m_editor->module();
  if (module.isRunning()) return; // A method works on the slices.
  const std::optional<State> state = module.history().undo(module.currentState());
  if (!state) return;
  restoreState(*state);
  Q_EMIT redoNotEmpty();
  if (!module.history().canUndo()) Q_EMIT undoEmpty();
}

void QxAlignUndoRedo::redo()
{
  ZxAlignSlices& module = m_editor->module();
  if (module.isRunning()) return; // A method works on the slices.
  const std::optional<State> state = module.history().redo(module.currentState());
  if (!state) return;
  restoreState(*state);
  Q_EMIT undoNotEmpty();
  if (!module.history().canRedo()) Q_EMIT redoEmpty();
}

void QxAlignUndoRedo::restoreState(const State& state) { m_editor->module().restoreState(state); }
