#pragma once

#include "mc/McDArray.h"
#include "zxalign/SliceInfo.h"

#include <cstddef>
#include <optional>
#include <vector>

/// A snapshot of the alignment: the records of all slices and the pair that was being edited.
struct AlignState {
  McDArray<SliceInfo> slices;
  int currentSlice = 0; ///< the editable slice
  int side = 1;         ///< +1: the editable slice is the upper one of the pair, -1: the lower one

  friend bool operator==(const AlignState& a, const AlignState& b)
  {
    return a.side == b.side && a.currentSlice == b.currentSlice && a.slices == b.slices;
  }
};

/// Two stacks of snapshots that take changes back and do them again. A plain value.
///
/// Each stack keeps the newest `limit` snapshots. A new snapshot leaves the redo stack as it is,
/// deliberately: what was taken back before can still be done again.
class AlignHistory {
public:
  static constexpr std::size_t limit = 100;

  /// Keeps the present state, before it is changed. Where it equals the newest snapshot there is still only
  /// one of them.
  void save(AlignState present);
  /// The state to go back to, while the present one waits for redo(); none when there is nothing to take
  /// back.
  std::optional<AlignState> undo(AlignState present);
  /// The mirror image of undo().
  std::optional<AlignState> redo(AlignState present);
  /// Forgets all snapshots.
  void clear() noexcept;

  /// Whether undo() or redo() would give a state.
  bool canUndo() const noexcept { return !m_undo.empty(); }
  bool canRedo() const noexcept { return !m_redo.empty(); }

private:
  using Stack = std::vector<AlignState>; // oldest first
  static void push(Stack& stack, AlignState state);
  static std::optional<AlignState> step(Stack& from, Stack& to, AlignState present);

  Stack m_undo;
  Stack m_redo;
};
