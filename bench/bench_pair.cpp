// Pair difference: the kernels on one thread against the plain loop over all grid points of both images.
// "<case>_plain" and "<case>" of the same size belong together.

#include "kernels/PairDifference.h"
#include "kernels/SampledComparison.h"

#include "reference/PlainPairDifference.h"
#include "support/Random.h"
#include "support/Threads.h"

#include <benchmark/benchmark.h>
#include <hwy/targets.h>

namespace {

using kernels::Affine16;
using kernels::PairDifference;
using kernels::PairImage;

constexpr Affine16 kPlaced{};
constexpr Affine16 kShift{65536, 0, 0, 65536, 7 * 65536 + 1234, -3 * 65536 - 999};

/// Both slices turned, about no special point and each by itself.
struct Mappings {
  Affine16 a, b;
};
// 5 degrees, about a corner: most of the points lie in both slices.
constexpr Mappings kTurned5{{65287, 5712, -5712, 65287, 9 * 65536 + 77, -11 * 65536},
                            {65287, 5712, -5712, 65287, 7 * 65536 + 1234, -3 * 65536 - 999}};
// A fifth of a degree.
constexpr Mappings kTurnedLittle{{65536, 229, -229, 65536, 9 * 65536 + 77, -11 * 65536},
                                 {65535, 343, -343, 65535, 7 * 65536 + 1234, -3 * 65536 - 999}};
constexpr Mappings kTurned45{{46341, 46341, -46341, 46341, 9 * 65536 + 77, -11 * 65536},
                             {46341, 46341, -46341, 46341, 7 * 65536 + 1234, -3 * 65536 - 999}};
constexpr Mappings kUnturned{kPlaced, kShift};

struct Setup {
  Setup(int edgeLength, int channelCount, const Mappings& m)
    : edge(edgeLength), channels(channelCount), mappings(m),
      a(Random(1).bytes(countOf(edgeLength, edgeLength, channelCount))), b(Random(2).bytes(a.size()))
  {
  }
  PairImage imageA() const { return {a.data(), edge, edge}; }
  PairImage imageB() const { return {b.data(), edge, edge}; }

  int edge;
  int channels;
  Mappings mappings;
  std::vector<std::uint8_t> a, b;
};

/// The difference by the plain loop, ...
struct Plain {
  explicit Plain(const Setup& setup) : s(setup) {}
  PairDifference operator()()
  {
    return reference::plainPairDifference(s.imageA(), s.mappings.a, s.imageB(), s.mappings.b, s.edge, s.edge,
                                          s.channels);
  }
  const Setup& s;
};

/// ... with both images sampled in the call ...
struct InOneCall {
  explicit InOneCall(const Setup& setup) : s(setup) {}
  PairDifference operator()()
  {
    return kernels::pairDifference(s.imageA(), s.mappings.a, s.imageB(), s.mappings.b, s.edge, s.edge,
                                   s.channels);
  }
  const Setup& s;
};

/// ... and with the reference sampled before.
struct Presampled {
  explicit Presampled(const Setup& setup) : s(setup)
  {
    sampled.reserve(s.edge, s.edge, s.channels);
    sampled.sample(s.imageA(), s.mappings.a, s.edge, s.edge, s.channels);
    comparison.reserve(s.edge);
  }
  PairDifference operator()()
  {
    comparison.start(sampled, s.imageB(), s.mappings.b);
    return {comparison.add(0, comparison.bands()), comparison.count()};
  }
  const Setup& s;
  kernels::SampledReference sampled;
  kernels::SampledComparison comparison;
};

/// What a benchmark is about. Instruction sets: the best one when 0.
struct Case {
  Mappings mappings;
  int channels = 1;
  int threads = 1;
  std::int64_t instructionSet = 0;
};

bool choose(std::int64_t instructionSet)
{
  hwy::SetSupportedTargetsForTest(0);
  const std::int64_t supported = hwy::SupportedTargets();
  if (instructionSet) hwy::SetSupportedTargetsForTest(instructionSet);
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
  return !instructionSet || (supported & instructionSet);
}

template <class Compare>
void time(benchmark::State& state, const Case& c)
{
  const Setup setup(static_cast<int>(state.range(0)), c.channels, c.mappings);
  if (!choose(c.instructionSet)) return state.SkipWithError("not an instruction set of this machine");
  withThreads(c.threads, [&] {
    Compare compare(setup);
    const PairDifference expected = Plain(setup)();
    if (expected.count == 0 || !(compare() == expected)) {
      state.SkipWithError("wrong result");
      return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(compare());
    state.SetItemsProcessed(state.iterations() * setup.edge * setup.edge);
  });
}

// Seconds per call at the edge length given by the last argument; points of the grid per second.
void add(const char* name, void (*run)(benchmark::State&, const Case&), const Case& c)
{
  benchmark::RegisterBenchmark(name, [=](benchmark::State& state) { run(state, c); })
      ->Arg(128)
      ->Arg(1024)
      ->Arg(4096)
      ->Unit(benchmark::kMicrosecond)
      ->UseRealTime();
}

const bool added = [] {
  add("turned5_plain", time<Plain>, {kTurned5});
  add("turned5_presampled", time<Presampled>, {kTurned5});
  if (hwy::SupportedTargets() & HWY_AVX2)
    add("turned5_presampled_avx2", time<Presampled>, {kTurned5, 1, 1, HWY_AVX2});
  add("turned5_presampled_2_threads", time<Presampled>, {kTurned5, 1, 2});
  add("turned5_in_one_call", time<InOneCall>, {kTurned5});
  add("turned_little_plain", time<Plain>, {kTurnedLittle});
  add("turned_little_presampled", time<Presampled>, {kTurnedLittle});
  add("turned45_plain", time<Plain>, {kTurned45});
  add("turned45_presampled", time<Presampled>, {kTurned45});
  add("turned45_in_one_call", time<InOneCall>, {kTurned45});
  add("unturned_plain", time<Plain>, {kUnturned});
  add("unturned_presampled", time<Presampled>, {kUnturned});
  add("unturned_in_one_call", time<InOneCall>, {kUnturned});
  add("turned5_colour_plain", time<Plain>, {kTurned5, 4});
  add("turned5_colour_presampled", time<Presampled>, {kTurned5, 4});
  add("turned5_colour_in_one_call", time<InOneCall>, {kTurned5, 4});
  return true;
}();

} // namespace
