// Composing the picture of a pair: time as a multiple of copying a picture of the same size.

#include "Timing.h"
#include "kernels/Compose.h"

#include "mc/McMath.h"
#include "mc/McRound.h"
#include "reference/PlainCompose.h"
#include "support/Random.h"
#include "support/Threads.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>

namespace {

using kernels::Affine16;
using kernels::ComposeMode;
using kernels::Composition;
using Picture = std::vector<std::uint32_t>;

// A turn about the centre of a square slice, seen at zoom 1.
Affine16 turn(int edge, double degrees)
{
  double s = 0, c = 1;
  mc::sinCosDegrees(degrees, s, c);
  const double centre = edge / 2;
  return {mc::toFixed16(c),
          mc::toFixed16(s),
          mc::toFixed16(-s),
          mc::toFixed16(c),
          mc::toFixed16(centre - c * centre + s * centre),
          mc::toFixed16(centre - s * centre - c * centre)};
}

// The middle of a square pair, in a picture of 16:9, on a 4096 x 4096 pair one of 1920 x 1080.
struct Setup {
  Setup(int edge, int channels, double firstDegrees, double secondDegrees)
    : a(Random(1).bytes(countOf(edge, edge, channels))), b(Random(2).bytes(a.size())), width(edge * 15 / 32),
      height(width * 9 / 16), composed(countOf(width, height)), other(composed.size())
  {
    composition.width = composition.height = edge;
    composition.channels = channels;
    composition.first = {a.data(), turn(edge, firstDegrees)};
    composition.second = {b.data(), turn(edge, secondDegrees)};
    composition.left = (edge - width) / 2;
    composition.top = (edge - height) / 2;
  }
  void compose() { kernels::composePair(composition, composed.data(), width, height, width); }
  void copy() { std::memcpy(other.data(), composed.data(), composed.size() * sizeof(std::uint32_t)); }
  bool isRight()
  {
    compose();
    reference::plainCompose(composition, other.data(), width, height, width);
    return other == composed && std::count(other.begin(), other.end(), 0u) * 2 < width * height;
  }

  std::vector<std::uint8_t> a, b;
  int width, height;
  Picture composed, other;
  Composition composition;
};

// Both are taken at their best of one run, in turns: what else the machine does disturbs them alike.
void time(benchmark::State& state, ComposeMode mode, int channels, double first, double second, int threads)
{
  Setup setup(static_cast<int>(state.range(0)), channels, first, second);
  setup.composition.mode = mode;
  withThreads(threads, [&] {
    if (!setup.isRight()) {
      state.SkipWithError("wrong result");
      return;
    }
    double composing = 1e9, copying = 1e9;
    for (auto _ : state) {
      const double seconds = secondsOf([&] { setup.compose(); });
      state.SetIterationTime(seconds);
      composing = std::min(composing, seconds);
      copying = std::min(copying, secondsOf([&] { setup.copy(); }));
    }
    state.counters["copies"] = composing / copying;
    state.counters["best_ms"] = composing * 1e3;
    state.counters["copy_ms"] = copying * 1e3;
  });
}

} // namespace

// Argument: edge length of the slices. "copies" is the best time over the best time of one memcpy.
#define ZX_BENCH(name, ...)                                                                                  \
  BENCHMARK_CAPTURE(time, name, __VA_ARGS__)                                                                 \
      ->Arg(256)                                                                                             \
      ->Arg(4096)                                                                                            \
      ->Unit(benchmark::kMillisecond)                                                                        \
      ->UseManualTime()
ZX_BENCH(overlay_grey, ComposeMode::InvertedOverlay, 1, 5.0, 3.0, 1);
ZX_BENCH(overlay_grey_2_threads, ComposeMode::InvertedOverlay, 1, 5.0, 3.0, 2);
ZX_BENCH(overlay_grey_steep_2_threads, ComposeMode::InvertedOverlay, 1, 90.0, -60.0, 2);
ZX_BENCH(overlay_grey_unturned_2_threads, ComposeMode::InvertedOverlay, 1, 0.0, 3.0, 2);
ZX_BENCH(red_green_2_threads, ComposeMode::RedGreen, 1, 5.0, 3.0, 2);
ZX_BENCH(checkerboard_grey_2_threads, ComposeMode::Checkerboard, 1, 5.0, 3.0, 2);
ZX_BENCH(overlay_colour, ComposeMode::InvertedOverlay, 4, 5.0, 3.0, 1);
ZX_BENCH(overlay_colour_2_threads, ComposeMode::InvertedOverlay, 4, 5.0, 3.0, 2);
ZX_BENCH(overlay_colour_steep_2_threads, ComposeMode::InvertedOverlay, 4, 90.0, -60.0, 2);
