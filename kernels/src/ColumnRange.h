#pragma once

#include "mc/McRound.h"

#include <algorithm>

namespace kernels {

/// Columns [begin, end) of a row; none when begin >= end.
struct ColumnRange {
  int begin = 0;
  int end = 0;
};

/// The first column of `within` for which holds(column) is true, or its end; holds changes at most once, from
/// false to true.
template <class Holds>
int firstColumn(ColumnRange within, const Holds& holds)
{
  int low = within.begin;
  int high = within.end;
  while (low < high) {
    const int middle = low + (high - low) / 2;
    if (holds(middle))
      high = middle;
    else
      low = middle + 1;
  }
  return low;
}

/// The same in a few steps where the answer lies next to the guess.
template <class Holds>
int firstColumn(ColumnRange within, const Holds& holds, int guess)
{
  const int middle = std::clamp(guess, within.begin, within.end);
  const ColumnRange close{middle - std::min(2, middle - within.begin),
                          middle + std::min(2, within.end - middle)};
  const bool notBefore = close.begin == within.begin || !holds(close.begin - 1);
  const bool notAfter = close.end == within.end || holds(close.end);
  return firstColumn(notBefore && notAfter ? close : within, holds);
}

/// The columns of `within` with 0 <= coordinate(column) < limit, where coordinate is a linear function of
/// that slope, up to rounding that keeps it monotone.
///
/// Division only guesses the answer: what counts are the coordinates themselves.
template <class Coordinate>
ColumnRange columnsInside(ColumnRange within, double slope, const Coordinate& coordinate, double limit)
{
  const double start = coordinate(0);
  const auto guess = [&](double value) { return mc::truncToInt((value - start) / slope); };
  const auto negative = [&](int i) { return !(coordinate(i) >= 0.0); };
  const auto beyond = [&](int i) { return !(coordinate(i) < limit); };
  if (slope >= 0.0) {
    const int begin = firstColumn(
        within, [&](int i) { return !negative(i); }, guess(0.0));
    return {begin, firstColumn({begin, within.end}, beyond, guess(limit))};
  }
  const int begin = firstColumn(
      within, [&](int i) { return !beyond(i); }, guess(limit));
  return {begin, firstColumn({begin, within.end}, negative, guess(0.0))};
}

/// The columns of `within` whose coordinate(column) passes both above and below, where the coordinate never
/// falls (rising) or never rises (!rising) with the column.
///
/// Both tests are made with the very values that a test of every pixel would use. A rounded linear function
/// is monotone, so the answer is the same and the pixels between need no test.
template <class Coordinate, class Above, class Below>
ColumnRange columnsInside(ColumnRange within, bool rising, const Coordinate& coordinate, const Above& above,
                          const Below& below)
{
  const auto isAbove = [&](int i) { return above(coordinate(i)); };
  const auto isBelow = [&](int i) { return below(coordinate(i)); };
  const auto notAbove = [&](int i) { return !isAbove(i); };
  const auto notBelow = [&](int i) { return !isBelow(i); };
  if (rising) {
    const int begin = firstColumn(within, isAbove);
    return {begin, firstColumn({begin, within.end}, notBelow)};
  }
  const int begin = firstColumn(within, isBelow);
  return {begin, firstColumn({begin, within.end}, notAbove)};
}

} // namespace kernels
