#include "RobustSearch.h"

#include <algorithm>

namespace robust {
namespace {

// A motion stands still when the corners of the slice move by less than this, in pixels of the level.
constexpr double kStillness = 0.005;
constexpr int kMostSteps = 25;
// A refined motion this far from where it started, as a share of the slice's longer side, has left its place.
constexpr double kLeft = 0.1;

bool comparable(const Pyramid& reference, const Pyramid& moved)
{
  return !reference.isEmpty() && !moved.isEmpty() && reference.levels().size() == moved.levels().size() &&
         reference.levels().front().plain.size() == moved.levels().front().plain.size();
}

/// The side of the slice that the limits leave out, any way round: where it lies is not known from the other
/// one.
Limits otherSideOf(const Limits& limits)
{
  Limits other = limits;
  other.upright = !limits.upright;
  other.mirrored = !limits.mirrored;
  if (limits.turns()) other.largestDegrees = 180.0;
  return other;
}

/// What the chosen candidate is compared with: those that lost, and the side that was not allowed to win.
std::vector<Candidate> rivals(const Pyramid& reference, const Pyramid& moved, const Limits& limits,
                              const std::vector<Candidate>& candidates, const std::function<bool()>& stopped)
{
  std::vector<Candidate> all(candidates.begin() + 1, candidates.end());
  if (limits.upright && limits.mirrored) return all;
  const std::vector<Candidate> turned =
      findCandidates(reference, moved, otherSideOf(limits), stopped, Effort::Glance);
  all.insert(all.end(), turned.begin(), turned.end());
  return all;
}

} // namespace

RigidMotion refined(const Pyramid& reference, const Pyramid& moved, const RigidMotion& start, bool turns,
                    const std::function<bool()>& stopped)
{
  RigidMotion motion = start;
  for (std::size_t level = reference.levels().size(); level-- > 0 && !stopped();) {
    Comparison comparison(reference.levels()[level], moved.levels()[level], Values::Plain);
    const double stillness = level == 0 ? kStillness : 0.05;
    motion = refinedOn(comparison, motion, turns, stillness, kMostSteps, moved.width(), moved.height());
  }
  return motion;
}

Finding findMotion(const Pyramid& reference, const Pyramid& moved, const Limits& limits,
                   const std::function<bool()>& stopped)
{
  Finding finding;
  if (!comparable(reference, moved)) return finding;
  const std::vector<Candidate> candidates = findCandidates(reference, moved, limits, stopped);
  if (candidates.empty() || !(candidates.front().score > 0.0)) return finding;
  const RigidMotion start = candidates.front().motion;
  finding.motion = refined(reference, moved, start, limits.turns(), stopped);
  const double side = std::max(moved.width(), moved.height());
  if (cornerDistance(start, finding.motion, moved.width(), moved.height()) > kLeft * side)
    finding.motion = start;
  const std::vector<Candidate> others = rivals(reference, moved, limits, candidates, stopped);
  if (stopped()) return finding;
  finding.evidence = evidenceFor(reference, moved, finding.motion, others, limits.upright && limits.mirrored);
  finding.confidence = confidenceOf(finding.evidence);
  finding.found = limits.allow(finding.motion, reference.width());
  if (!finding.found) finding.confidence = 0.0;
  return finding;
}

} // namespace robust
