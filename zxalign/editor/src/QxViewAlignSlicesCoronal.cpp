#include "zxalign/QxViewAlignSlicesCoronal.h"

#include "qx/QxImageViewer.h"
#include "zxalign/QxAlignSlices.h"

QxViewAlignSlicesCoronal::QxViewAlignSlicesCoronal(QxAlignSlices* editor, ZxLattice* lattice)
  : QxViewAlignSlicesOrthogonal(editor, lattice, OrthoOrientation::Coronal)
{
  setObjectName("coronalView");
  setTitles("Coronal view", "XZ view");
  QxViewAlignSlicesCoronal::setDrawViewSize();
  viewer()->show();
}

void QxViewAlignSlicesCoronal::setDrawViewSize()
{
  viewer()->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  viewer()->setMinimumSize(drawSize(editor()->getDrawAreaWidth()), getMinimumZSize());
}
