#pragma once

#include "RobustSearch.h"
#include "RobustSettings.h"

class ZxAlignSlices;
struct SliceXForm;

namespace robust {

/// A slice's transform as a motion into the aligned frame, and back.
RigidMotion placementOf(const SliceXForm& transform);
SliceXForm transformOf(const RigidMotion& placement);

/// Takes slices from the module and searches.
class PairMatcher {
public:
  PairMatcher(ZxAlignSlices& module, const RobustSettings& settings);

  /// How the module's editable slice lies on another one. The other one becomes the module's reference slice.
  Finding match(int reference);

  /// True when the user wants to stop. Handles pending events, so that a Stop button can be pressed.
  static bool interrupted();

private:
  const Pyramid& editable();
  Limits limitsFrom(int reference) const;

  ZxAlignSlices& m_module;
  RobustSettings m_settings;
  std::optional<Pyramid> m_editable;
};

} // namespace robust
