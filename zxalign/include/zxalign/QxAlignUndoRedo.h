#pragma once

#include "zxalign/AlignHistory.h"

#include <QObject>

class ZxAlignEditor;

/// The editor's way to the history of its module: as ZxAlignUndoRedo, but it tells by signals what there is
/// to take back and to do again.
///
/// The snapshots belong to the module, so that the editor takes back what a script has saved as well.
class QxAlignUndoRedo : public QObject {
  Q_OBJECT
public:
  using State = AlignState;

  /// The editor outlives this object. The second argument is ignored: the number of snapshots is always
  /// AlignHistory::limit.
  explicit QxAlignUndoRedo(ZxAlignEditor* editor, int ignored = 0);

  /// Keeps the present state; to be called before a change.
  void saveState();
  /// Goes one state back or forward again. Nothing where there is none, and while a method runs.
  void undo();
  void redo();
  /// Copies a snapshot into the module.
  void restoreState(const State& state);

Q_SIGNALS:
  // What can be taken back or done again by now; said after every step.
  void undoEmpty();
  void undoNotEmpty();
  void redoEmpty();
  void redoNotEmpty();

private:
  ZxAlignEditor* m_editor; // borrowed
};
