#pragma once

#include "Picture.h"

#include <functional>
#include <optional>

namespace phasecorrelation {

using spectral::Picture;

/// How one picture lies on another: a point v of the moved one lies at u = R v + (dx, dy) of the reference,
/// both counted from the slice centre in pixels of the slice, with R v = (v.x cos a + v.y sin a, -v.x sin a +
/// v.y cos a), the sense of the slice transforms.
struct RigidMotion {
  double degrees = 0.0; ///< a, above -180 and up to 180
  double dx = 0.0;
  double dy = 0.0;
  double significance = 0.0; ///< of the peak that it was read from, in standard deviations
};

/// Finds the motion over the full circle, from the Fourier-Mellin transform: the magnitudes of the spectra do
/// not see a displacement, and in polar coordinates a turn is one. Displacements reach up to half the
/// picture; beyond a third too little is shared to rely on. Nothing where no peak stands out.
///
/// stopped is asked between pieces of the work, some hundredths of a second apart; nothing is found after it
/// has said yes.
std::optional<RigidMotion> findMotion(
    const Picture& reference, const Picture& moved,
    const std::function<bool()>& stopped = [] { return false; });

/// Finds the displacement alone, for a turn that is known.
std::optional<RigidMotion> findDisplacement(const Picture& reference, const Picture& moved, double degrees);

} // namespace phasecorrelation
