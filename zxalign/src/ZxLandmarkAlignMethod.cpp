#include "ZxLandmarkAlignMethod.h"

#include "AlignmentMatrix.h"
#include "mc/McMath.h"
#include "zx/ZxMessage.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignSlices.h"

int ZxLandmarkAlignMethod::doLayout()
{
  if (!haveLandmarks()) return 0;
  if (m_module->alignSettings().rotationAllowed)
    m_module->rotateAll(static_cast<float>(fittedAngle() + static_cast<double>(reference().rotation) -
                                           static_cast<double>(editable().rotation)));
  const ZxDims& dims = m_module->sliceData().getDims();
  const float cx = sliceCentre(dims.width);
  const float cy = sliceCentre(dims.height);
  McVec2f referenceCentre, editableCentre;
  computeCenter(reference().landmarks, referenceCentre);
  computeCenter(editable().landmarks, editableCentre);
  const McVec2f way = reference().map(referenceCentre, cx, cy) - editable().map(editableCentre, cx, cy);
  m_module->translateAll(way.x, way.y);
  m_module->setModified(true);
  m_module->updateViews();
  m_module->updateQuality();
  return 1;
}

bool ZxLandmarkAlignMethod::haveLandmarks() const
{
  for (const int slice : {m_module->getReferenceSlice(), m_module->getEditableSlice()}) {
    if (!m_module->getSlice(slice).landmarks.isEmpty()) continue;
    ZxMessage::getTheMsg()->printf("Slice %d has no landmarks; slice %d stays where it is.", slice,
                                   m_module->getEditableSlice());
    return false;
  }
  return true;
}

double ZxLandmarkAlignMethod::fittedAngle() const
{
  const int width = m_module->sliceData().getDims().width;
  McDArray<QPoint> referencePoints, editablePoints;
  reference().getLandmarks(referencePoints, width);
  editable().getLandmarks(editablePoints, width);
  const QTransform fit = m_module->getTransform(referencePoints, editablePoints);
  const auto radians = static_cast<float>(mc::atan2(fit.m12(), fit.m11()));
  return static_cast<double>(radians * 180.0f) / mc::kPi;
}

void ZxLandmarkAlignMethod::computeCenter(const McDArray<QPoint>& landmarks, McVec2f& center)
{
  center = {};
  for (const QPoint& p : landmarks)
    center = center + McVec2f{static_cast<float>(p.x()), static_cast<float>(p.y())};
  const auto n = static_cast<float>(landmarks.size());
  center = {center.x / n, center.y / n};
}

const SliceInfo& ZxLandmarkAlignMethod::reference() const
{
  return m_module->getSlice(m_module->getReferenceSlice());
}

const SliceInfo& ZxLandmarkAlignMethod::editable() const
{
  return m_module->getSlice(m_module->getEditableSlice());
}
