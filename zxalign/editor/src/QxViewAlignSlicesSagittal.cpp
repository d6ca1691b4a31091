#include "zxalign/QxViewAlignSlicesSagittal.h"

#include "qx/QxImageViewer.h"
#include "zxalign/QxAlignSlices.h"

QxViewAlignSlicesSagittal::QxViewAlignSlicesSagittal(QxAlignSlices* editor, ZxLattice* lattice)
  : QxViewAlignSlicesOrthogonal(editor, lattice, OrthoOrientation::Sagittal)
{
  setObjectName("sagittalView");
  setTitles("Sagittal view", "YZ view");
  QxViewAlignSlicesSagittal::setDrawViewSize();
  viewer()->show();
}

void QxViewAlignSlicesSagittal::setDrawViewSize()
{
  viewer()->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
  viewer()->setMinimumSize(getMinimumZSize(), drawSize(editor()->getDrawAreaHeight()));
}
