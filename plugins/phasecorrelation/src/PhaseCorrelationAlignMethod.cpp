#include "PhaseCorrelationAlignMethod.h"

#include "RigidSearch.h"
#include "mc/McMath.h"
#include "zx/ZxMessage.h"
#include "zx/ZxWorkArea.h"
#include "zxalign/ZxAlignSlices.h"
#include "zxalign/ZxAutoAlignMethodFabrique.h"

namespace {

/// The transform of the editable slice that puts it on the displayed reference slice: the motion between the
/// slices, followed by the turn and the translation of the reference.
SliceXForm placedOn(const SliceXForm& reference, const phasecorrelation::RigidMotion& motion)
{
  double sine = 0.0, cosine = 1.0;
  mc::sinCosDegrees(static_cast<double>(reference.rotation), sine, cosine);
  SliceXForm placed;
  placed.rotation = static_cast<float>(static_cast<double>(reference.rotation) + motion.degrees);
  placed.translationX =
      static_cast<float>(static_cast<double>(reference.translationX) + motion.dx * cosine + motion.dy * sine);
  placed.translationY =
      static_cast<float>(static_cast<double>(reference.translationY) - motion.dx * sine + motion.dy * cosine);
  return placed;
}

/// True when the user wants to stop. Handles pending events, so that a Stop button can be pressed.
bool interrupted() { return ZxWorkArea::getTheWorkArea()->wasInterrupted(1); }

/// The motion between the two slices of the pair, each mirrored as it is displayed.
std::optional<phasecorrelation::RigidMotion> motionOfPair(ZxAlignSlices& module)
{
  const ZxDims& dims = module.getDataLattice()->getDims();
  const SliceXForm& reference = module.getSlice(module.getReferenceSlice());
  const SliceXForm& editable = module.getSlice(module.getEditableSlice());
  const auto referencePicture =
      spectral::pictureOf(module.getComputedReferenceSlicePtr(), dims.width, dims.height, reference.flip);
  const auto editablePicture =
      spectral::pictureOf(module.getComputedEditableSlicePtr(), dims.width, dims.height, editable.flip);
  if (module.alignSettings().rotationAllowed)
    return phasecorrelation::findMotion(referencePicture, editablePicture, &interrupted);
  return phasecorrelation::findDisplacement(referencePicture, editablePicture,
                                            static_cast<double>(editable.rotation - reference.rotation));
}

} // namespace

const char* const PhaseCorrelationAlignMethod::methodName = "PhaseCorrelationAlignMethod";

ZxAutoAlignMethod* PhaseCorrelationAlignMethod::createMethod(ZxAlignSlices* module)
{
  return new PhaseCorrelationAlignMethod(module);
}

int PhaseCorrelationAlignMethod::doLayout()
{
  if (!m_module->getDataLattice()) return 0;
  m_module->mapSlices();
  const auto motion = motionOfPair(*m_module);
  if (!motion && interrupted()) return 0;
  if (!motion) {
    ZxMessage::getTheMsg()->printf("Slices %d and %d have too little in common for a phase correlation.",
                                   m_module->getReferenceSlice(), m_module->getEditableSlice());
    return 0;
  }
  const SliceXForm editable = m_module->getSlice(m_module->getEditableSlice());
  const SliceXForm placed = placedOn(m_module->getSlice(m_module->getReferenceSlice()), *motion);
  // The slices beyond the editable one follow, so both steps go through the module. The turn is about the
  // editable slice's centre and leaves its translation as it is.
  if (m_module->alignSettings().rotationAllowed) m_module->rotateAll(placed.rotation - editable.rotation);
  m_module->translateAll(placed.translationX - editable.translationX,
                         placed.translationY - editable.translationY);
  m_module->setModified(true);
  m_module->updateViews();
  m_module->updateQuality();
  return 1;
}

// The entry symbol that the list of plug-ins names.
extern "C" void registerPhaseCorrelation(ZxAutoAlignMethodFabrique* registry)
{
  registry->registerAutoAlignMethodPlugIn(PhaseCorrelationAlignMethod::getMethodName(),
                                          &PhaseCorrelationAlignMethod::createMethod);
}
