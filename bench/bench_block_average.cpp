// Block average of an image pyramid: the kernel on one thread against a copy of its input, which is the least
// that reading it takes, and against the plain loop.

#include "kernels/BlockAverage.h"

#include "reference/PlainBlockAverage.h"
#include "support/Random.h"
#include "support/Threads.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

namespace {

void copy(benchmark::State& state, int channels)
{
  const int edge = static_cast<int>(state.range(0));
  const auto image = Random(4).bytes(countOf(edge, edge, channels));
  std::vector<std::uint8_t> to(image.size());
  for (auto _ : state) {
    std::memcpy(to.data(), image.data(), image.size());
    benchmark::DoNotOptimize(to.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(image.size()));
}

template <class Average>
void time(benchmark::State& state, const Average& average, int channels, int factor, int threads)
{
  const int edge = static_cast<int>(state.range(0));
  const auto image = Random(4).bytes(countOf(edge, edge, channels));
  std::vector<std::uint8_t> mean(countOf(edge / factor, edge / factor, channels));
  std::vector<std::uint8_t> expected(mean.size());
  reference::plainBlockAverage(image.data(), edge, edge, channels, factor, expected.data());
  withThreads(threads, [&] {
    const auto run = [&] {
      average(image.data(), edge, edge, channels, factor, mean.data());
      benchmark::DoNotOptimize(mean.data());
    };
    run();
    if (mean != expected) {
      state.SkipWithError("wrong result");
      return;
    }
    for (auto _ : state) run();
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(image.size()));
  });
}

} // namespace

#define ZX_BENCH(function, name, ...)                                                                        \
  BENCHMARK_CAPTURE(function, name, __VA_ARGS__)                                                             \
      ->Arg(128)                                                                                             \
      ->Arg(1024)                                                                                            \
      ->Arg(4096)                                                                                            \
      ->Unit(benchmark::kMicrosecond)                                                                        \
      ->UseRealTime()
ZX_BENCH(copy, grey, 1);
ZX_BENCH(time, grey_by_2_plain, reference::plainBlockAverage, 1, 2, 1);
ZX_BENCH(time, grey_by_2, kernels::blockAverage, 1, 2, 1);
ZX_BENCH(time, grey_by_3, kernels::blockAverage, 1, 3, 1);
ZX_BENCH(time, grey_by_4, kernels::blockAverage, 1, 4, 1);
ZX_BENCH(time, grey_by_8, kernels::blockAverage, 1, 8, 1);
ZX_BENCH(time, grey_by_16, kernels::blockAverage, 1, 16, 1);
ZX_BENCH(copy, colour, 4);
ZX_BENCH(time, colour_by_2_plain, reference::plainBlockAverage, 4, 2, 1);
ZX_BENCH(time, colour_by_2, kernels::blockAverage, 4, 2, 1);
ZX_BENCH(time, colour_by_4, kernels::blockAverage, 4, 4, 1);
ZX_BENCH(time, colour_by_8, kernels::blockAverage, 4, 8, 1);
