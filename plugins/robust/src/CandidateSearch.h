#pragma once

#include "Comparison.h"
#include "Limits.h"
#include "Pyramid.h"

#include <functional>
#include <vector>

namespace robust {

/// A motion that may be the right one.
struct Candidate {
  RigidMotion motion;
  Match match;
  double score = 0.0; ///< the higher the better, comparable between candidates of one pair and level
};

/// How much a match says: its correlation, less where little overlaps.
double scoreOf(const Match& match);

/// How thoroughly candidates are looked for: well enough to choose one, or to see whether there is a good
/// one.
enum class Effort { Full, Glance };

/// The motions under which two slices may match, best first, no two of them alike; all over the circle and
/// mirrored where the limits allow it.
///
/// Angles come from two sources: the log-polar spectra of the slices, whose magnitudes do not see a
/// displacement, and a sweep of all angles on the coarsest level, for slices whose spectra have no direction.
/// At each angle the highest peaks of the phase correlation give displacements. Every candidate is refined
/// and verified by the masked correlation on the overlap, first on the coarsest level, the best of them on
/// finer ones.
///
/// stopped is asked between pieces of the work; nothing is found after it has said yes.
std::vector<Candidate> findCandidates(const Pyramid& reference, const Pyramid& moved, const Limits& limits,
                                      const std::function<bool()>& stopped, Effort effort = Effort::Full);

/// Goes on from a motion on one level of both pyramids until it stands still to within a share of a pixel of
/// that level.
RigidMotion refinedOn(Comparison& comparison, const RigidMotion& start, bool turns, double stillness,
                      int mostSteps, int width, int height);

} // namespace robust
