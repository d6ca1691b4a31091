#pragma once

#include "zxalign/QxViewAlignSlicesOrthogonal.h"

/// The stack in the plane y = constant: x from left to right, slices from top to bottom.
class QxViewAlignSlicesCoronal : public QxViewAlignSlicesOrthogonal {
  Q_OBJECT
public:
  /// Editor and lattice as for the base class.
  QxViewAlignSlicesCoronal(QxAlignSlices* editor, ZxLattice* lattice);
  void setDrawViewSize() override;
};
