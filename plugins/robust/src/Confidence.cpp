#include "Confidence.h"

#include "mc/McMath.h"

#include <algorithm>
#include <cmath>

namespace robust {
namespace {

// Longest side of the level that is judged on.
constexpr int kJudgedSide = 256;
// A quarter that moves by this share of the slice's longer side does not agree.
constexpr double kApart = 0.02;
// A quarter that has less than this share of what overlaps is not asked.
constexpr double kLeastShare = 0.08;

// A runner-up that scores lower by this share may as well be the right one.
constexpr double kEqual = 0.03;
// A side that is not allowed and scores higher by this share is the right one.
constexpr double kTurnedOver = 0.08;
// Slices of fine noisy tissue correlate little when they match: below these log odds, a correlation of 0.23,
// others say more.
constexpr double kLeastOdds = -1.2;
// A lead over the other side that is as good as any larger one.
constexpr double kClearSide = 0.3;
// Quarters that agree less than this speak against a match; above it they hardly tell right from wrong.
constexpr double kAgreeing = 0.4;
// Of the traits, fitted by logistic regression to pairs with known truth: neighbours, slices far apart,
// slices that have nothing in common. `robust_tables FOLDER fit` makes them.
constexpr std::array<double, kTraits> kCoefficients{2.12, 4.02, 3.83, 3.75};

/// 1/2 where a runner-up is as good, 1 where it is worse.
double oneOfTwo(double lead) { return 1.0 - 0.5 * mc::exp(-(lead / kEqual) * (lead / kEqual)); }

/// 1 where the side that is not allowed is no better, 0 where it is clearly better. Nearly symmetric sections
/// score a little higher on the wrong side now and then, so that little must not count.
double notTurned(double lead)
{
  const double square = (lead / kTurnedOver) * (lead / kTurnedOver);
  return mc::exp(-square * square);
}

std::size_t judgedLevel(const Pyramid& pyramid)
{
  std::size_t level = pyramid.levels().size() - 1;
  while (level > 0 &&
         std::max(pyramid.levels()[level - 1].width, pyramid.levels()[level - 1].height) <= kJudgedSide)
    --level;
  return level;
}

/// 1 where the quarter stays, falling towards 0 as far as it moves.
double staying(Comparison& comparison, const Window& quarter, const RigidMotion& motion, double side)
{
  comparison.watch(quarter);
  const RigidMotion own = refinedOn(comparison, motion, false, 0.05, 10, 1, 1);
  const double moved =
      std::hypot(own.shift.x - motion.shift.x, own.shift.y - motion.shift.y) / (kApart * side);
  return 1.0 / (1.0 + moved * moved);
}

/// The quarters around the middle of what overlaps.
double agreementOf(Comparison& comparison, const RigidMotion& motion, double side)
{
  const Comparison::Spread spread = comparison.spread();
  const int x = spread.middleX, y = spread.middleY, w = comparison.width(), h = comparison.height();
  double sum = 0.0, count = 0.0;
  for (const Window& quarter :
       {Window{0, 0, x, y}, Window{x, 0, w, y}, Window{0, y, x, h}, Window{x, y, w, h}}) {
    comparison.watch({0, 0, w, h});
    comparison.moveTo(motion);
    if (comparison.weightIn(quarter) < kLeastShare * spread.weight) continue;
    sum += staying(comparison, quarter, motion, side);
    count += 1.0;
  }
  return count >= 2.0 ? sum / count : 0.0;
}

} // namespace

Evidence evidenceFor(const Pyramid& reference, const Pyramid& moved, const RigidMotion& motion,
                     const std::vector<Candidate>& others, bool bothSides)
{
  const std::size_t level = judgedLevel(reference);
  Comparison comparison(reference.levels()[level], moved.levels()[level], Values::Flat);
  comparison.moveTo(motion);
  const Match match = comparison.match();
  Evidence evidence;
  evidence.correlation = match.correlation;
  evidence.overlap = std::min(1.0, match.overlap);
  const double score = scoreOf(match);
  double sameSide = 0.0, otherSide = 0.0;
  for (const Candidate& other : others) {
    comparison.moveTo(other.motion);
    double& second = other.motion.mirrored == motion.mirrored ? sameSide : otherSide;
    second = std::max(second, scoreOf(comparison.match()));
  }
  const auto lead = [score](double second) {
    return score > 0.0 ? std::max(0.0, 1.0 - second / score) : 0.0;
  };
  evidence.distinctness = lead(sameSide);
  evidence.sidedness = bothSides ? lead(otherSide) : 1.0;
  if (!bothSides && score > 0.0) evidence.turnedOver = std::max(0.0, otherSide / score - 1.0);
  comparison.moveTo(motion);
  evidence.agreement = agreementOf(comparison, motion, std::max(reference.width(), reference.height()));
  return evidence;
}

std::array<double, kTraits> traitsOf(const Evidence& e)
{
  const double shared = std::clamp(e.correlation * e.overlap, 0.01, 0.99);
  return {1.0, std::max(kLeastOdds, mc::log(shared / (1.0 - shared))),
          -mc::log(std::max(0.05, 1.0 - e.distinctness)), std::min(e.sidedness, kClearSide)};
}

double clarityOf(const Evidence& e)
{
  return oneOfTwo(e.distinctness) * oneOfTwo(e.sidedness) * notTurned(e.turnedOver) *
         std::min(1.0, e.agreement / kAgreeing);
}

double confidenceOf(const Evidence& e)
{
  const std::array<double, kTraits> traits = traitsOf(e);
  double evidence = 0.0;
  for (std::size_t i = 0; i < kTraits; ++i) evidence += kCoefficients[i] * traits[i];
  return clarityOf(e) / (1.0 + mc::exp(-evidence));
}

std::string weaknessOf(const Evidence& e)
{
  const std::array<std::pair<double, const char*>, 6> weaknesses{
      {{e.overlap / 0.4, "hardly anything overlaps"},
       {e.correlation / 0.25, "the slices hardly resemble each other"},
       {e.distinctness / 0.2, "another position fits nearly as well"},
       {e.sidedness / 0.15, "it fits nearly as well when it is turned over"},
       {kTurnedOver / std::max(1e-6, 2.0 * e.turnedOver), "it fits better when it is turned over"},
       {e.agreement / kAgreeing, "the parts of the slice do not agree"}}};
  return std::min_element(weaknesses.begin(), weaknesses.end())->second;
}

} // namespace robust
