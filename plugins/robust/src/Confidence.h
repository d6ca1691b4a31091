#pragma once

#include "CandidateSearch.h"

#include <array>
#include <string>

namespace robust {

/// What speaks for a motion, measured on a level of some 200 pixels.
struct Evidence {
  double correlation = 0.0;  ///< of brightness and contrast made equal, on the overlap
  double overlap = 0.0;      ///< share of what there is to compare
  double distinctness = 0.0; ///< by how much the runner-up scores lower: 0 as high, 1 nothing at all
  double sidedness =
      0.0; ///< the same for the best position of the slice turned over; 1 where that is not allowed
  double turnedOver = 0.0; ///< by how much the slice turned over scores higher where that is not allowed
  double agreement = 0.0;  ///< share of the image's quarters that want to stay where the motion puts them
};

/// The evidence for a motion; others are the candidates that lost, of both sides. Where only one side was
/// allowed those of the other one count only as far as they are better.
Evidence evidenceFor(const Pyramid& reference, const Pyramid& moved, const RigidMotion& motion,
                     const std::vector<Candidate>& others, bool bothSides);

constexpr std::size_t kTraits = 4;
/// What the logistic function weighs: 1, correlation, distinctness, sidedness, agreement, each on a scale of
/// its own.
std::array<double, kTraits> traitsOf(const Evidence& evidence);

/// A factor of the confidence: 1 where nothing else fits as well, 1/2 where another position or the other
/// side does, for then one of the two is right, and towards 0 where the side that is not allowed fits clearly
/// better or the quarters want to go their own ways.
double clarityOf(const Evidence& evidence);

/// How likely a motion with this evidence is right, in [0, 1]: the clarity times a logistic function of the
/// traits that was fitted to pairs with known truth.
double confidenceOf(const Evidence& evidence);

/// The evidence that is weakest, as a clause for people: "hardly anything overlaps".
std::string weaknessOf(const Evidence& evidence);

} // namespace robust
