// Resampling of a slice: the kernel on one and two threads against the plain loop with a test of every pixel.

#include "kernels/Resample.h"

#include "reference/PlainResample.h"
#include "support/Random.h"
#include "support/Threads.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

using kernels::Interpolation;
using kernels::ResampleFrame;

ResampleFrame frameOf(int edge)
{
  // Turned by 5 degrees, with a border of some pixels.
  return {
      edge, edge, edge + 20, edge + 12, 11, 5, {0.99619470, 0.08715574, -0.08715574, 0.99619470, 7.3, -9.6}};
}

template <class T>
void plain(const ResampleFrame& frame, const T* source, int channels, Interpolation mode,
           const float* background, T* output, int, int)
{
  reference::plainResample(frame, source, channels, mode, background, output);
}

struct Case {
  Interpolation mode;
  int channels = 1;
  int threads = 1;
};

template <class T, class Resample>
void time(benchmark::State& state, const Resample& resample, const Case& c)
{
  const ResampleFrame frame = frameOf(static_cast<int>(state.range(0)));
  const std::vector<std::uint8_t> bytes = Random(3).bytes(countOf(frame.width, frame.height, c.channels));
  const std::vector<T> source(bytes.begin(), bytes.end());
  std::vector<T> output(countOf(frame.outWidth, frame.outHeight, c.channels));
  std::vector<T> expected(output.size());
  const float background[] = {9.0f, 8.0f, 7.0f, 6.0f};
  plain(frame, source.data(), c.channels, c.mode, background, expected.data(), 0, frame.outHeight);
  withThreads(c.threads, [&] {
    const auto run = [&] {
      resample(frame, source.data(), c.channels, c.mode, background, output.data(), 0, frame.outHeight);
      benchmark::DoNotOptimize(output.data());
    };
    run();
    if (output != expected) {
      state.SkipWithError("wrong result");
      return;
    }
    for (auto _ : state) run();
    state.SetItemsProcessed(state.iterations() * frame.outWidth * frame.outHeight);
  });
}

template <class Resample>
void timeByte(benchmark::State& state, const Resample& resample, const Case& c)
{
  time<std::uint8_t>(state, resample, c);
}

template <class Resample>
void timeShort(benchmark::State& state, const Resample& resample, const Case& c)
{
  time<std::uint16_t>(state, resample, c);
}

template <class Resample>
void timeFloat(benchmark::State& state, const Resample& resample, const Case& c)
{
  time<float>(state, resample, c);
}

} // namespace

// Seconds per call at the edge length given by the last argument; pixels of the output per second. Every row
// is there three times: the plain loop, one thread and two.
#define ZX_BENCH_ONE(function, name, ...)                                                                    \
  BENCHMARK_CAPTURE(function, name, __VA_ARGS__)                                                             \
      ->Arg(128)                                                                                             \
      ->Arg(1024)                                                                                            \
      ->Unit(benchmark::kMicrosecond)                                                                        \
      ->UseRealTime()
#define ZX_BENCH(function, name, type, mode, channels)                                                       \
  ZX_BENCH_ONE(function, name##_plain, plain<type>, Case{mode, channels, 1});                                \
  ZX_BENCH_ONE(function, name, kernels::resampleRows<type>, Case{mode, channels, 1});                        \
  ZX_BENCH_ONE(function, name##_2_threads, kernels::resampleRows<type>, Case{mode, channels, 2})
ZX_BENCH(timeByte, nearest, std::uint8_t, Interpolation::Nearest, 1);
ZX_BENCH(timeByte, linear, std::uint8_t, Interpolation::Linear, 1);
ZX_BENCH(timeByte, colour_nearest, std::uint8_t, Interpolation::Nearest, 4);
ZX_BENCH(timeByte, colour_linear, std::uint8_t, Interpolation::Linear, 4);
ZX_BENCH(timeShort, nearest, std::uint16_t, Interpolation::Nearest, 1);
ZX_BENCH(timeShort, linear, std::uint16_t, Interpolation::Linear, 1);
ZX_BENCH(timeFloat, nearest, float, Interpolation::Nearest, 1);
ZX_BENCH(timeFloat, linear, float, Interpolation::Linear, 1);
