// Pair difference: the kernel on one thread against the plain loop over all grid points.

#include "kernels/PairDifference.h"

#include "reference/PlainPairDifference.h"
#include "support/Random.h"
#include "support/Threads.h"

#include <benchmark/benchmark.h>

namespace {

using kernels::Affine16;
using kernels::PairDifference;
using kernels::PairImage;

// An unturned pair is compared row against row; a turn of 5 degrees looks up every pixel.
constexpr Affine16 kShift{65536, 0, 0, 65536, 7 * 65536 + 1234, -3 * 65536 - 999};
constexpr Affine16 kTurn{65287, 5712, -5712, 65287, 7 * 65536 + 1234, -3 * 65536 - 999};

struct Setup {
  Setup(const benchmark::State& state, int channelCount)
    : edge(static_cast<int>(state.range(0))), channels(channelCount),
      a(Random(1).bytes(static_cast<std::size_t>(edge) * static_cast<std::size_t>(edge * channels))),
      b(Random(2).bytes(a.size()))
  {
  }
  template <class Compare>
  PairDifference run(const Compare& compare, const Affine16& m) const
  {
    return compare(PairImage{a.data(), edge, edge}, Affine16{}, PairImage{b.data(), edge, edge}, m, edge,
                   edge, channels);
  }
  int edge;
  int channels;
  std::vector<std::uint8_t> a, b;
};

PairDifference plain(const PairImage& a, const Affine16& ma, const PairImage& b, const Affine16& mb,
                     int width, int height, int channels)
{
  return reference::plainPairDifference(a, ma, b, mb, width, height, channels);
}

template <class Compare>
void time(benchmark::State& state, const Compare& compare, const Affine16& m, int channels, int threads)
{
  const Setup setup(state, channels);
  withThreads(threads, [&] {
    const PairDifference expected = setup.run(plain, m);
    if (expected.count == 0 || !(setup.run(compare, m) == expected)) {
      state.SkipWithError("wrong result");
      return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(setup.run(compare, m));
    state.SetItemsProcessed(state.iterations() * setup.edge * setup.edge);
  });
}

} // namespace

// Seconds per call at the edge length given by the last argument; points of the grid per second.
#define ZX_BENCH(name, ...)                                                                                  \
  BENCHMARK_CAPTURE(time, name, __VA_ARGS__)                                                                 \
      ->Arg(128)                                                                                             \
      ->Arg(1024)                                                                                            \
      ->Unit(benchmark::kMicrosecond)                                                                        \
      ->UseRealTime()
ZX_BENCH(shifted_plain, plain, kShift, 1, 1);
ZX_BENCH(shifted, kernels::pairDifference, kShift, 1, 1);
ZX_BENCH(shifted_2_threads, kernels::pairDifference, kShift, 1, 2);
ZX_BENCH(turned_plain, plain, kTurn, 1, 1);
ZX_BENCH(turned, kernels::pairDifference, kTurn, 1, 1);
ZX_BENCH(turned_2_threads, kernels::pairDifference, kTurn, 1, 2);
ZX_BENCH(turned_colour_plain, plain, kTurn, 4, 1);
ZX_BENCH(turned_colour, kernels::pairDifference, kTurn, 4, 1);
