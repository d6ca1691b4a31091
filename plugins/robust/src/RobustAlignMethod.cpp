#include "RobustAlignMethod.h"

#include "Chain.h"
#include "Outcome.h"
#include "PairMatcher.h"
#include "RobustSettings.h"
#include "zx/ZxMessage.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignSlices.h"
#include "zxalign/ZxAutoAlignMethodFabrique.h"

#include <algorithm>

using namespace robust;

namespace {

Outcome outcomeOf(const Finding& finding, int reference, double leastConfidence)
{
  Outcome outcome{reference, finding.confidence, {}};
  if (!finding.found)
    outcome.reason = "nothing that they share was found";
  else if (finding.confidence < leastConfidence)
    outcome.reason = weaknessOf(finding.evidence);
  return outcome;
}

/// Half the longer side: where a turn is measured in pixels.
double radiusOf(ZxAlignSlices& module)
{
  const ZxDims& dims = module.getDataLattice()->getDims();
  return std::max(dims.width, dims.height) / 2.0;
}

/// The links of a slice with slices of the chain, and the best outcome of them.
struct Measured {
  std::vector<Link> links;
  Outcome outcome;
};

Measured measure(PairMatcher& matcher, int slice, const std::vector<int>& references, double leastConfidence)
{
  Measured measured;
  for (const int reference : references) {
    if (PairMatcher::interrupted()) return measured;
    const Finding finding = matcher.match(reference);
    const Outcome outcome = outcomeOf(finding, reference, leastConfidence);
    // The tissue between slices far apart changes more: such a link says less.
    const double apart = slice - reference;
    if (outcome.reason.empty())
      measured.links.push_back({slice, reference, finding.motion, finding.confidence / (apart * apart)});
    if (reference == references.front() || outcome.confidence > measured.outcome.confidence)
      measured.outcome = outcome;
  }
  return measured;
}

} // namespace

const char* const RobustAlignMethod::methodName = "RobustAlignMethod";

ZxAutoAlignMethod* RobustAlignMethod::createMethod(ZxAlignSlices* module)
{
  return new RobustAlignMethod(module);
}

int RobustAlignMethod::doLayout()
{
  if (!m_module->getDataLattice()) return 0;
  std::string problem;
  const std::optional<RobustSettings> settings = RobustSettings::current(problem);
  if (!settings) {
    ZxMessage::getTheMsg()->printf("%s", problem.c_str());
    return 0;
  }
  m_module->mapSlices();
  PairMatcher matcher(*m_module, *settings);
  const int changed =
      settings->neighbours > 1 ? alignInChain(matcher, *settings) : alignPair(matcher, *settings);
  if (!changed) return 0;
  m_module->setModified(true);
  m_module->updateViews();
  m_module->updateQuality();
  return 1;
}

int RobustAlignMethod::alignPair(PairMatcher& matcher, const RobustSettings& settings)
{
  const int reference = m_module->getReferenceSlice();
  const Finding finding = matcher.match(reference);
  if (PairMatcher::interrupted()) return 0;
  const Outcome outcome = outcomeOf(finding, reference, settings.leastConfidence);
  report(outcome);
  if (!outcome.reason.empty()) return 0;
  place(placementOf(m_module->getSlice(reference)).after(finding.motion));
  return 1;
}

int RobustAlignMethod::alignInChain(PairMatcher& matcher, const RobustSettings& settings)
{
  const int slice = m_module->getEditableSlice(), reference = m_module->getReferenceSlice();
  Chain& chain = Chain::of(*m_module);
  const Measured measured =
      measure(matcher, slice, chain.predecessors(slice, m_module->getEditableSide(), settings.neighbours),
              settings.leastConfidence);
  m_module->setReferenceSlice(reference);
  if (PairMatcher::interrupted()) return 0;
  report(measured.outcome);
  const RigidMotion present = placementOf(m_module->getSlice(slice));
  const RigidMotion before = placementOf(m_module->getSlice(reference));
  const auto best = std::max_element(measured.links.begin(), measured.links.end(),
                                     [](const Link& a, const Link& b) { return a.weight < b.weight; });
  const bool found = best != measured.links.end();
  const RigidMotion start =
      found ? placementOf(m_module->getSlice(best->reference)).after(best->motion) : present;
  chain.add(slice, start, measured.links, {slice, reference, before.inverse().after(present), 1.0});
  if (!found) {
    chain.keep(*m_module);
    return 0;
  }
  const Placements solved = chain.solve(radiusOf(*m_module));
  for (const auto& [k, placement] : solved)
    if (k != slice && k != chain.fixed()) m_module->getSlice(k).setXForm(transformOf(placement));
  place(solved.at(slice));
  chain.keep(*m_module);
  return 1;
}

void RobustAlignMethod::place(const RigidMotion& placement)
{
  const SliceXForm wanted = transformOf(placement);
  SliceInfo& editable = m_module->getSlice(m_module->getEditableSlice());
  editable.flip = wanted.flip;
  // The slices beyond follow, so both steps go through the module. The turn is about the editable slice's
  // centre and leaves its translation as it is.
  m_module->rotateAll(wanted.rotation - editable.rotation);
  m_module->translateAll(wanted.translationX - editable.translationX,
                         wanted.translationY - editable.translationY);
}

void RobustAlignMethod::report(const Outcome& outcome)
{
  const int slice = m_module->getEditableSlice();
  if (ZxParamBundle* parameters = m_module->sliceData().getParameters())
    storeOutcome(*parameters, slice, outcome);
  if (outcome.reason.empty()) return;
  ZxMessage::getTheMsg()->printf("Slices %d and %d are left as they are: %s (confidence %.2f).",
                                 outcome.reference, slice, outcome.reason.c_str(), outcome.confidence);
}

// The entry symbol that the list of plug-ins names.
extern "C" void registerRobust(ZxAutoAlignMethodFabrique* registry)
{
  registry->registerAutoAlignMethodPlugIn(RobustAlignMethod::getMethodName(),
                                          &RobustAlignMethod::createMethod);
  registry->registerSettings({RobustSettings::kVariable, RobustSettings::table(), &RobustSettings::check});
}
