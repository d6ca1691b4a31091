#pragma once

#include <array>
#include <cstdint>

/// The grey value t that divides a histogram into the two classes i <= t and i > t of largest entropy:
/// -(sum over each class of p(i) log2 p(i)); the first of equal ones.
///
/// The class sums are deliberately not normalised by the probabilities of the classes. Both together are then
/// the entropy of the whole histogram whatever t is, so that it is the rounding of the two sums that decides.
/// They are formed in a fixed order, each from its lowest grey value upwards, which makes the result the same
/// everywhere; 0 for an empty histogram and for one of a few grey values.
int entropyThreshold(const std::array<std::uint64_t, 256>& histogram);
