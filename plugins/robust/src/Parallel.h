#pragma once

#ifndef ZX_SERIAL_KERNELS
#include <oneapi/tbb/parallel_for.h>
#endif

#include <cstddef>

namespace robust {

/// Calls f(0) ... f(count - 1), on all threads that oneTBB may use, and returns when all are done. What f(i)
/// computes may not depend on the order: the pieces are the same for every number of threads, so that their
/// results, put together in order, are too.
template <class F>
void forEach(std::size_t count, const F& f)
{
#ifdef ZX_SERIAL_KERNELS
  for (std::size_t i = 0; i < count; ++i) f(i);
#else
  oneapi::tbb::parallel_for(std::size_t{0}, count, [&f](std::size_t i) { f(i); });
#endif
}

/// Cuts n rows into bands of a fixed height and calls f(band, begin, end) for each.
template <class F>
void forBands(int n, int height, const F& f)
{
  const std::size_t bands = static_cast<std::size_t>((n + height - 1) / height);
  forEach(bands, [&](std::size_t band) {
    const int begin = static_cast<int>(band) * height;
    f(band, begin, begin + height < n ? begin + height : n);
  });
}

} // namespace robust
