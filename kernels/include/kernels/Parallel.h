#pragma once

#ifndef ZX_SERIAL_KERNELS
#include <oneapi/tbb/blocked_range.h>
#include <oneapi/tbb/parallel_for.h>
#include <oneapi/tbb/parallel_reduce.h>
#endif

#include <algorithm>
#include <utility>

/// Work on bands of rows with all threads that oneTBB may use; on the calling thread alone where
/// ZX_SERIAL_KERNELS is defined. A call returns when all of its work is done.
///
/// How the rows are cut into bands depends on the number of threads, so nothing that a function computes may
/// depend on the band it is called with.
namespace kernels {

/// Rows of a band that make starting a task worth while, for rows of a given number of points.
inline int rowGrain(int pointsPerRow) noexcept { return std::max(1, 32768 / std::max(1, pointsPerRow)); }

/// Calls f(rowBegin, rowEnd) for bands that together cover [begin, end), each row once, no band smaller than
/// about grain / 2 rows.
template <class F>
void forRows(int begin, int end, int grain, const F& f)
{
  if (begin >= end) return;
#ifdef ZX_SERIAL_KERNELS
  static_cast<void>(grain);
  f(begin, end);
#else
  using Rows = oneapi::tbb::blocked_range<int>;
  const auto rowsOf = static_cast<Rows::size_type>(std::max(1, grain));
  oneapi::tbb::parallel_for(Rows(begin, end, rowsOf), [&f](const Rows& r) { f(r.begin(), r.end()); });
#endif
}

/// The sum of f(rowBegin, rowEnd) over bands that together cover [begin, end).
///
/// Sum is default-constructed as zero and has an exact operator+ (integers), so that the order of the bands
/// does not matter.
template <class Sum, class F>
Sum sumRows(int begin, int end, int grain, const F& f)
{
  if (begin >= end) return Sum{};
#ifdef ZX_SERIAL_KERNELS
  static_cast<void>(grain);
  return f(begin, end);
#else
  using Rows = oneapi::tbb::blocked_range<int>;
  const auto rowsOf = static_cast<Rows::size_type>(std::max(1, grain));
  return oneapi::tbb::parallel_reduce(
      Rows(begin, end, rowsOf), Sum{},
      [&f](const Rows& r, const Sum& sum) { return sum + f(r.begin(), r.end()); },
      [](const Sum& a, const Sum& b) { return a + b; });
#endif
}

} // namespace kernels
