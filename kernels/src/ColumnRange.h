#pragma once

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
