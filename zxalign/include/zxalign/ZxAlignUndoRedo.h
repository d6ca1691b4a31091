#pragma once

#include "zxalign/AlignHistory.h"

class ZxAlignEditor;
class ZxAlignSlices;

/// The module's way to its history: takes snapshots of the module, restores them, and tells the menu bar of
/// an open editor what there is to take back and to do again.
///
/// The snapshots belong to the module; QxAlignUndoRedo works on the same ones.
class ZxAlignUndoRedo {
public:
  using State = AlignState;

  /// The module outlives this object. The second argument is ignored: the number of snapshots is always
  /// AlignHistory::limit.
  explicit ZxAlignUndoRedo(ZxAlignSlices* module, int ignored = 0);

  /// Keeps the present state; to be called before a change.
  void saveState();
  void undo();
  void redo();
  /// Copies a snapshot into the module.
  void restoreState(const State& state);
  /// Forgets everything, as a new input asks for.
  void clear();

private:
  using Notification = void (ZxAlignEditor::*)();
  void tell(Notification notification);

  ZxAlignSlices* m_module; // borrowed
};
