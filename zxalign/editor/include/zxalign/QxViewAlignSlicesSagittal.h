#pragma once

#include "zxalign/QxViewAlignSlicesOrthogonal.h"

/// The stack in the plane x = constant: slices from left to right, y from top to bottom. The rows of the
/// image are the slices here, too; the viewer shows it transposed.
class QxViewAlignSlicesSagittal : public QxViewAlignSlicesOrthogonal {
  Q_OBJECT
public:
  /// Editor and lattice as for the base class.
  QxViewAlignSlicesSagittal(QxAlignSlices* editor, ZxLattice* lattice);
  void setDrawViewSize() override;
};
