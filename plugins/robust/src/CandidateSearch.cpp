#include "CandidateSearch.h"

#include "Parallel.h"
#include "PolarSpectrum.h"
#include "TurnedSpectra.h"
#include "mc/McRound.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

namespace robust {
namespace {

// Steps of the sweep in half a turn: 4 degrees.
constexpr int kSweep = 45;
constexpr int kPeaks = 2;
// Longest side of the level whose spectra are compared in polar coordinates.
constexpr int kPolarSide = 192;
constexpr spectral::PolarGrid kPolarGrid{360, 64, 0.06, 0.8};
constexpr int kPolarAngles = 4;
// How many of the sweep's guesses of each side are verified.
constexpr std::size_t kVerified = 40;
// Less than this share in common is no match.
constexpr double kLeastOverlap = 0.2;
// Candidates nearer than this share of the slice's longer side are one.
constexpr double kSame = 0.06;

/// A displacement at an angle, with the height of its peak.
struct Guess {
  RigidMotion motion;
  double height;
};

/// How many candidates of each side go on: to be refined on the coarsest level, on the next one, and on those
/// after it.
struct Numbers {
  std::size_t coarsest, next, last;
};

Numbers numbersFor(Effort effort) { return effort == Effort::Full ? Numbers{12, 4, 3} : Numbers{4, 2, 1}; }

/// What both slices are compared with.
struct Pair {
  const Pyramid& reference;
  const Pyramid& moved;
  const Limits& limits;

  ShiftReach reach() const { return {limits.middle.shift, limits.largestShift * reference.width()}; }
  double side() const { return std::max(reference.width(), reference.height()); }
  double distance(const RigidMotion& a, const RigidMotion& b) const
  {
    return cornerDistance(a, b, moved.width(), moved.height());
  }
};

std::vector<bool> sidesOf(const Limits& limits)
{
  std::vector<bool> sides;
  if (limits.upright) sides.push_back(false);
  if (limits.mirrored) sides.push_back(true);
  return sides;
}

/// The guesses at one angle and at the opposite one, as far as the limits allow them.
std::vector<Guess> guessesAt(const TurnedSpectra& spectra, const Pair& pair, double degrees, bool mirrored)
{
  std::vector<Guess> guesses;
  const double opposite = degrees + 180.0;
  if (!pair.limits.allow(degrees) && !pair.limits.allow(opposite)) return guesses;
  const auto peaks = spectra.peaksAt(degrees, mirrored, pair.reach(), kPeaks);
  const auto add = [&](double angle, const std::vector<ShiftPeak>& found) {
    if (!pair.limits.allow(angle)) return;
    for (const ShiftPeak& peak : found)
      guesses.push_back({{withinCircle(angle), peak.shift, mirrored}, peak.height});
  };
  add(degrees, peaks.here);
  add(opposite, peaks.opposite);
  return guesses;
}

/// The guesses at a list of angles, in the order of the angles.
std::vector<Guess> guessesAt(const TurnedSpectra& spectra, const Pair& pair,
                             const std::vector<double>& angles, bool mirrored)
{
  std::vector<std::vector<Guess>> parts(angles.size());
  forEach(angles.size(), [&](std::size_t i) { parts[i] = guessesAt(spectra, pair, angles[i], mirrored); });
  std::vector<Guess> guesses;
  for (const auto& part : parts) guesses.insert(guesses.end(), part.begin(), part.end());
  return guesses;
}

/// All angles of half a turn in equal steps, or as many as the limits leave.
std::vector<double> sweptAngles(const Limits& limits)
{
  std::vector<double> angles;
  if (!limits.turns()) return {limits.middle.degrees};
  const double step = std::min(180.0 / kSweep, limits.largestDegrees / 2.0);
  const int steps = mc::truncToInt(std::min(90.0, limits.largestDegrees) / step + 0.5);
  for (int i = -steps; i < steps + (limits.largestDegrees < 90.0 ? 1 : 0); ++i)
    angles.push_back(limits.middle.degrees + i * step);
  return angles;
}

/// Angles at which the log-polar spectra match, best first, known up to half a turn.
std::vector<double> polarAngles(const TurnedSpectra& spectra, bool mirrored)
{
  const auto reference = spectral::polarSpectrum(spectra.referenceSpectrum(), spectra.side(), kPolarGrid);
  const auto moved =
      spectral::polarSpectrum(spectra.movedSpectrum(0.0, mirrored), spectra.side(), kPolarGrid);
  const auto surface = spectral::phaseCorrelation(
      spectral::spectrumOf(reference), spectral::spectrumOf(moved), kPolarGrid.radii, kPolarGrid.angles, 1.0);
  std::vector<double> angles;
  for (const double place : spectral::highestOfRow(surface.values.data(), kPolarGrid.angles, kPolarAngles))
    angles.push_back(-place * 180.0 / kPolarGrid.angles);
  return angles;
}

/// The coarsest level whose longer side is at least half of kPolarSide: where spectra have enough detail.
std::size_t polarLevel(const Pyramid& pyramid)
{
  std::size_t level = pyramid.levels().size() - 1;
  while (level > 0 &&
         std::max(pyramid.levels()[level - 1].width, pyramid.levels()[level - 1].height) <= kPolarSide)
    --level;
  return level;
}

std::vector<Guess> guessesOf(const Pair& pair)
{
  std::vector<Guess> guesses;
  const TurnedSpectra sweep(pair.reference.levels().back(), pair.moved.levels().back());
  const std::size_t fine = polarLevel(pair.reference);
  const TurnedSpectra polar(pair.reference.levels()[fine], pair.moved.levels()[fine]);
  for (const bool mirrored : sidesOf(pair.limits)) {
    std::vector<Guess> swept = guessesAt(sweep, pair, sweptAngles(pair.limits), mirrored);
    std::stable_sort(swept.begin(), swept.end(),
                     [](const Guess& a, const Guess& b) { return a.height > b.height; });
    if (swept.size() > kVerified) swept.resize(kVerified);
    guesses.insert(guesses.end(), swept.begin(), swept.end());
    if (!pair.limits.turns()) continue;
    const std::vector<Guess> turned = guessesAt(polar, pair, polarAngles(polar, mirrored), mirrored);
    guesses.insert(guesses.end(), turned.begin(), turned.end());
  }
  return guesses;
}

/// Best first, without those that are like a better one: the best of each side, count at most.
void sortAndThin(std::vector<Candidate>& candidates, const Pair& pair, std::size_t count)
{
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const Candidate& a, const Candidate& b) { return a.score > b.score; });
  std::vector<Candidate> kept;
  std::array<std::size_t, 2> ofSide{};
  for (const Candidate& candidate : candidates) {
    std::size_t& same = ofSide[candidate.motion.mirrored ? 1 : 0];
    const bool known = std::any_of(kept.begin(), kept.end(), [&](const Candidate& other) {
      return other.motion.mirrored == candidate.motion.mirrored &&
             pair.distance(other.motion, candidate.motion) < kSame * pair.side();
    });
    if (known || same == count) continue;
    kept.push_back(candidate);
    ++same;
  }
  candidates = std::move(kept);
}

Candidate verified(Comparison& comparison, const RigidMotion& motion)
{
  comparison.moveTo(motion);
  const Match match = comparison.match();
  return {motion, match, scoreOf(match)};
}

/// Every candidate refined on a level, scored there.
void refineAll(std::vector<Candidate>& candidates, const Pair& pair, std::size_t level, int steps)
{
  forEach(candidates.size(), [&](std::size_t i) {
    Comparison comparison(pair.reference.levels()[level], pair.moved.levels()[level], Values::Flat);
    const RigidMotion motion = refinedOn(comparison, candidates[i].motion, pair.limits.turns(), 0.1, steps,
                                         pair.moved.width(), pair.moved.height());
    Candidate refined = verified(comparison, motion);
    if (!pair.limits.allow(motion, pair.reference.width())) refined.score = -1.0;
    candidates[i] = refined;
  });
}

/// Whether another level of flat values above this one is there.
bool hasFlat(const Pair& pair, std::size_t level)
{
  return !pair.reference.levels()[level].flat.empty() && !pair.moved.levels()[level].flat.empty();
}

} // namespace

double scoreOf(const Match& match)
{
  if (match.overlap < kLeastOverlap || !(match.correlation > 0.0)) return 0.0;
  return match.correlation * std::sqrt(std::min(1.0, match.overlap));
}

RigidMotion refinedOn(Comparison& comparison, const RigidMotion& start, bool turns, double stillness,
                      int mostSteps, int width, int height)
{
  RigidMotion motion = start;
  for (int i = 0; i < mostSteps; ++i) {
    comparison.moveTo(motion);
    const RigidMotion step = comparison.step(turns);
    motion = step.after(motion);
    if (cornerDistance(step, {}, width, height) < stillness * comparison.pixel()) break;
  }
  return motion;
}

std::vector<Candidate> findCandidates(const Pyramid& reference, const Pyramid& moved, const Limits& limits,
                                      const std::function<bool()>& stopped, Effort effort)
{
  const Pair pair{reference, moved, limits};
  const Numbers numbers = numbersFor(effort);
  const std::size_t coarsest = reference.levels().size() - 1;
  const std::vector<Guess> guesses = guessesOf(pair);
  if (stopped()) return {};
  std::vector<Candidate> candidates(guesses.size());
  forEach(guesses.size(), [&](std::size_t i) {
    Comparison comparison(reference.levels()[coarsest], moved.levels()[coarsest], Values::Flat);
    candidates[i] = verified(comparison, guesses[i].motion);
  });
  sortAndThin(candidates, pair, numbers.coarsest);
  refineAll(candidates, pair, coarsest, 12);
  sortAndThin(candidates, pair, numbers.next);
  for (std::size_t level = coarsest; level-- > 0 && hasFlat(pair, level) && !stopped();) {
    refineAll(candidates, pair, level, 6);
    sortAndThin(candidates, pair, numbers.last);
  }
  if (stopped()) return {};
  return candidates;
}

} // namespace robust
