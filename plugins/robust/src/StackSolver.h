#pragma once

#include "Link.h"

#include <map>
#include <vector>

namespace robust {

/// The placements of slices, by slice number: motions from the slice into the aligned frame.
using Placements = std::map<int, RigidMotion>;

/// The placements that fit all links best: the least sum of squared differences between where a slice lies
/// and where each of its links puts it, in pixels on a circle of the given radius, with links that contradict
/// the others weighed down.
///
/// start has every slice that a link names; flips stay as they are there, links that need another flip are
/// left out. The fixed slice stays where it is; slices that no chain of links connects with it stay, too.
Placements solveStack(const Placements& start, const std::vector<Link>& links, int fixed, double radius);

/// How far a link is from the placements, in pixels.
double residualOf(const Link& link, const Placements& placements, double radius);

} // namespace robust
