#pragma once

#include "mc/McBox2i.h"
#include "mc/McDArray.h"
#include "zxalign/OrthoOrientation.h"
#include "zxalign/SliceXForm.h"

#include <cstdint>

/// What the orthogonal views know of their columns: per slice the transform to be shown, and per slice and
/// view whether the column is stale. Sagittal or Coronal names the view, never Both.
///
/// In projection mode there is also one box per slice: the part of its columns that is valid, the y range for
/// the sagittal and the x range for the coronal view. Not thread-safe: the owner guards it.
class OrthoColumns {
public:
  enum class State {
    UpToDate = 0,
    ToClear = 1,  ///< to be blanked
    ToCompute = 2 ///< to be recomputed
  };
  struct Column {
    State state = State::UpToDate;
    std::uint64_t changes = 0; ///< grows with everything that makes a computation in progress worthless
    float shownX = 0.0f;       ///< the slice's translation that the pixels stand for, moves of them included
    float shownY = 0.0f;
  };
  /// Pixels of a column, both included; first is -1 when there is none.
  struct Range {
    int first = -1;
    int last = -1;
    bool contains(int i) const noexcept { return first != -1 && i >= first && i <= last; }
    friend bool operator==(const Range&, const Range&) = default;
  };

  /// So many slices, all columns up to date, without boxes.
  void reset(int slices);
  int slices() const noexcept { return static_cast<int>(m_transforms.size()); }

  /// The column of a slice in a view.
  Column& column(OrthoOrientation view, int z) noexcept;
  const Column& column(OrthoOrientation view, int z) const noexcept;
  /// Sets the state of a column after a change of it.
  void mark(OrthoOrientation view, int z, State state) noexcept;

  /// The transform under which a slice is to be shown.
  SliceXForm& transform(int z) noexcept { return m_transforms[static_cast<std::size_t>(z)]; }
  const SliceXForm& transform(int z) const noexcept { return m_transforms[static_cast<std::size_t>(z)]; }

  bool hasBoxes() const noexcept { return !m_boxes.isEmpty(); }
  /// Fresh boxes with nothing valid.
  void createBoxes();
  void deleteBoxes() { m_boxes.release(); }
  /// The whole box of a slice; nothing valid without boxes.
  McBox2i box(int z) const;
  /// The valid part of a column; nothing without boxes.
  Range valid(OrthoOrientation view, int z) const noexcept;
  /// Does nothing without boxes.
  void setValid(OrthoOrientation view, int z, Range range) noexcept;

private:
  McDArray<SliceXForm> m_transforms;
  McDArray<Column> m_columns; // sagittal and coronal of slice 0, of slice 1, ...
  McDArray<McBox2i> m_boxes;
};
