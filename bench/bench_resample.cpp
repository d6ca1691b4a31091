// Resampling of a slice: the kernel on one thread against the plain loop with a test of every pixel.

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

template <class T, class Resample>
void time(benchmark::State& state, const Resample& resample, Interpolation mode, int threads)
{
  const ResampleFrame frame = frameOf(static_cast<int>(state.range(0)));
  const std::vector<std::uint8_t> bytes =
      Random(3).bytes(static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height));
  const std::vector<T> source(bytes.begin(), bytes.end());
  std::vector<T> output(static_cast<std::size_t>(frame.outWidth) * static_cast<std::size_t>(frame.outHeight));
  std::vector<T> expected(output.size());
  const float background = 9.0f;
  plain(frame, source.data(), 1, mode, &background, expected.data(), 0, frame.outHeight);
  withThreads(threads, [&] {
    const auto run = [&] {
      resample(frame, source.data(), 1, mode, &background, output.data(), 0, frame.outHeight);
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
void timeByte(benchmark::State& state, const Resample& resample, Interpolation mode, int threads)
{
  time<std::uint8_t>(state, resample, mode, threads);
}

template <class Resample>
void timeFloat(benchmark::State& state, const Resample& resample, Interpolation mode, int threads)
{
  time<float>(state, resample, mode, threads);
}

} // namespace

#define ZX_BENCH(function, name, ...)                                                                        \
  BENCHMARK_CAPTURE(function, name, __VA_ARGS__)                                                             \
      ->Arg(128)                                                                                             \
      ->Arg(1024)                                                                                            \
      ->Unit(benchmark::kMicrosecond)                                                                        \
      ->UseRealTime()
ZX_BENCH(timeByte, nearest_plain, plain<std::uint8_t>, Interpolation::Nearest, 1);
ZX_BENCH(timeByte, nearest, kernels::resampleRows<std::uint8_t>, Interpolation::Nearest, 1);
ZX_BENCH(timeByte, linear_plain, plain<std::uint8_t>, Interpolation::Linear, 1);
ZX_BENCH(timeByte, linear, kernels::resampleRows<std::uint8_t>, Interpolation::Linear, 1);
ZX_BENCH(timeByte, linear_2_threads, kernels::resampleRows<std::uint8_t>, Interpolation::Linear, 2);
ZX_BENCH(timeFloat, linear_plain, plain<float>, Interpolation::Linear, 1);
ZX_BENCH(timeFloat, linear, kernels::resampleRows<float>, Interpolation::Linear, 1);
