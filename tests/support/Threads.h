#pragma once

#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/task_arena.h>

/// Runs f with that many threads at the kernels' disposal, also on a machine with fewer cores.
template <class F>
void withThreads(int threads, const F& f)
{
  const oneapi::tbb::global_control control(oneapi::tbb::global_control::max_allowed_parallelism,
                                            static_cast<std::size_t>(threads));
  oneapi::tbb::task_arena arena(threads);
  arena.execute(f);
}
