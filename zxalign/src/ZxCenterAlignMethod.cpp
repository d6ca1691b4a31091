#include "ZxCenterAlignMethod.h"

#include "AlignmentMatrix.h"
#include "mc/McMath.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignSlices.h"

int ZxCenterAlignMethod::doLayout()
{
  m_module->mapSlices();
  measure();
  if (m_module->alignSettings().rotationAllowed) m_module->rotateAll(bestTurn());
  const McVec2f way = wayToReference(editable());
  m_module->translateAll(way.x, way.y);
  m_module->setModified(true);
  m_module->updateViews();
  m_module->updateQuality();
  return 1;
}

void ZxCenterAlignMethod::measure()
{
  computeCenterAndOrientation(m_module->getComputedReferenceSlicePtr(), m_referenceCentre, m_referenceAngle,
                              reference().flip);
  computeCenterAndOrientation(m_module->getComputedEditableSlicePtr(), m_editableCentre, m_editableAngle,
                              editable().flip);
}

float ZxCenterAlignMethod::bestTurn() const
{
  // A rotation by a takes a direction phi to phi - a: the axes are parallel when both slices have the same
  // difference of axis and rotation.
  const double axes =
      (static_cast<double>(m_editableAngle) - static_cast<double>(m_referenceAngle)) * 180.0 / mc::kPi;
  const double turn =
      static_cast<double>(reference().rotation) - static_cast<double>(editable().rotation) + axes;
  const auto plain = static_cast<float>(turn);
  const auto opposite = static_cast<float>(turn + 180.0);
  return m_module->computeQuality(turned(opposite)) > m_module->computeQuality(turned(plain)) ? opposite
                                                                                              : plain;
}

SliceXForm ZxCenterAlignMethod::turned(float degrees) const
{
  SliceXForm xform = editable();
  xform.rotate(degrees, xform.translationX, xform.translationY);
  const McVec2f way = wayToReference(xform);
  xform.translationX += way.x;
  xform.translationY += way.y;
  return xform;
}

McVec2f ZxCenterAlignMethod::wayToReference(const SliceXForm& xform) const
{
  const ZxDims& dims = m_module->sliceData().getDims();
  const float cx = sliceCentre(dims.width);
  const float cy = sliceCentre(dims.height);
  return reference().map(m_referenceCentre, cx, cy) - xform.map(m_editableCentre, cx, cy);
}

const SliceXForm& ZxCenterAlignMethod::reference() const
{
  return m_module->getSlice(m_module->getReferenceSlice());
}

const SliceXForm& ZxCenterAlignMethod::editable() const
{
  return m_module->getSlice(m_module->getEditableSlice());
}
