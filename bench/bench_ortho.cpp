// The orthogonal views: the loops of cuts and projections, and a whole update after one slice has been moved,
// each also as a multiple of the memory traffic that it needs: a copy of the same bytes, timed in the same
// run.
#include "kernels/CutLine.h"
#include "kernels/LineProjection.h"
#include "zx/ZxField3.h"
#include "zxalign/QxAlignSlices.h"
#include "zxalign/QxOrthoViewManager.h"
#include "zxalign/ZxAlignSlices.h"

#include "reference/PlainLines.h"
#include "support/Random.h"

#include <benchmark/benchmark.h>

#include <QApplication>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <vector>

namespace {

constexpr std::size_t kCacheLine = 64;

/// Median seconds of a run of f.
template <class F>
double secondsOf(const F& f)
{
  std::vector<double> times;
  for (int i = 0; i < 15; ++i) {
    const auto begin = std::chrono::steady_clock::now();
    f();
    times.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
  }
  std::nth_element(times.begin(), times.begin() + 7, times.end());
  return times[7];
}

/// Times f and tells how often a copy of so many bytes would fit in.
template <class F>
void timeAgainstCopy(benchmark::State& state, std::size_t bytes, const F& f)
{
  const std::vector<unsigned char> from(bytes, 7);
  std::vector<unsigned char> to(bytes);
  const double copy = secondsOf([&] {
    std::memcpy(to.data(), from.data(), bytes);
    benchmark::DoNotOptimize(to.data());
  });
  const double own = secondsOf(f);
  for (auto _ : state) f();
  state.counters["copies"] = own / copy;
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

kernels::Affine turned(int edge, bool turns)
{
  if (!turns) return {1, 0, 0, 1, 3.0, -2.0};
  return {0.99619470, 0.08715574, -0.08715574, 0.99619470, 0.04 * edge, -0.04 * edge};
}

/// A cut along y: one pixel of every row, each in a cache line of its own.
void cut(benchmark::State& state, bool turns)
{
  const int edge = static_cast<int>(state.range(0));
  const auto slice = Random(3).bytes(countOf(edge, edge));
  const kernels::Affine m = turned(edge, turns);
  const kernels::FrameLine line{false, edge / 2, edge};
  const kernels::VoxelBox box{slice.data(), static_cast<std::size_t>(edge), 1, 0, 0, edge, edge};
  std::vector<unsigned char> out(static_cast<std::size_t>(edge)), expected(out);
  reference::plainCut({slice.data(), McPrimType::UInt8, 1, edge, edge}, m, line, expected.data());
  kernels::cutLine(box, m, line, out.data());
  if (out != expected) return state.SkipWithError("wrong result");
  timeAgainstCopy(state, out.size() * kCacheLine, [&] {
    kernels::cutLine(box, m, line, out.data());
    benchmark::DoNotOptimize(out.data());
  });
}

/// All lines of a projection along x or y of one slice.
template <class T>
void project(benchmark::State& state, bool alongX, bool turns)
{
  const int edge = static_cast<int>(state.range(0));
  const auto bytes = Random(3).bytes(countOf(edge, edge));
  const std::vector<T> slice(bytes.begin(), bytes.end());
  std::vector<kernels::SampleLine> lines;
  const double last = edge - 1, slant = turns ? 0.08 * edge : 0.0;
  for (int i = 0; i < edge; ++i) {
    const double to = std::min(i + slant, last);
    lines.push_back(alongX ? kernels::sampleSegment(0, i, last, to) : kernels::sampleSegment(i, 0, to, last));
  }
  std::vector<T> out(static_cast<std::size_t>(edge)), expected(out);
  const reference::PlainSlice plain{slice.data(), mcPrimTypeOf<T>, 1, edge, edge};
  for (int i = 0; i < edge; ++i)
    reference::plainProjection(plain, lines[static_cast<std::size_t>(i)],
                               reinterpret_cast<unsigned char*>(&expected[static_cast<std::size_t>(i)]));
  const auto run = [&] {
    kernels::projectLines(slice.data(), edge, edge, 1, lines.data(), edge, out.data());
    benchmark::DoNotOptimize(out.data());
  };
  run();
  if (out != expected) return state.SkipWithError("wrong result");
  timeAgainstCopy(state, slice.size() * sizeof(T), run);
}

void projectBytes(benchmark::State& state, bool alongX, bool turns)
{
  project<std::uint8_t>(state, alongX, turns);
}

void projectFloats(benchmark::State& state, bool alongX, bool turns) { project<float>(state, alongX, turns); }

/// A deep stack of which all slices are the same memory.
class RepeatedSlice : public ZxVoxelSource {
public:
  explicit RepeatedSlice(int edge) : m_slice(Random(5).bytes(countOf(edge, edge))) {}
  bool readSlice(int, void* dst) override { return std::memcpy(dst, m_slice.data(), m_slice.size()); }
  bool readBox(const ZxBox3i&, void*) override { return false; }
  const void* sliceInMemory(int) const override { return m_slice.data(); }
  void* beginWrite(int) override { return nullptr; }
  bool endWrite(int) override { return false; }

private:
  std::vector<std::uint8_t> m_slice;
};

void makeApplication()
{
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  static int argc = 1;
  static char name[] = "bench_ortho";
  static char* argv[] = {name, nullptr};
  static QApplication application(argc, argv);
}

/// From the editor's call after one slice was moved to the views having the new image.
void moveOneSlice(benchmark::State& state, bool projects)
{
  makeApplication();
  const int edge = static_cast<int>(state.range(0)), slices = 500;
  const ZxLatticeShape shape{{edge, edge, slices}, 1, McPrimType::UInt8, ZxCoordType::Uniform};
  const auto field =
      ZxField3::create(std::make_unique<ZxLattice3>(shape, std::make_unique<RepeatedSlice>(edge)));
  // Looking for the range would read it all.
  field->parameters().setReals("DataWindow", {0.0, 255.0});
  const auto module = mcMake<ZxAlignSlices>();
  if (!module->portData.connect(field.get())) return state.SkipWithError("not connected");
  module->fire();
  QxAlignSlices editor(module.get());
  const auto views = mcMake<QxOrthoViewManager>(&editor, module->getDataLattice(), projects);
  views->showSagittalView(true);
  views->showCoronalView(true);
  int step = 0;
  const std::size_t bytes = projects ? shape.sliceBytes() : countOf(edge, slices, 2);
  timeAgainstCopy(state, bytes, [&] {
    SliceInfo& slice = module->getSlice(slices / 2);
    slice.translationX = static_cast<float>(++step % 7);
    slice.rotation = 5.0f;
    views->updateView(slices / 2, slices / 2, OrthoOrientation::Both, 1, 0, !projects, projects, false);
  });
}

} // namespace

#define ZX_BENCH(function, name, ...)                                                                        \
  BENCHMARK_CAPTURE(function, name, __VA_ARGS__)                                                             \
      ->Arg(128)                                                                                             \
      ->Arg(2048)                                                                                            \
      ->Unit(benchmark::kMicrosecond)                                                                        \
      ->UseRealTime()
ZX_BENCH(cut, straight, false);
ZX_BENCH(cut, turned, true);
ZX_BENCH(projectBytes, along_x, true, false);
ZX_BENCH(projectBytes, along_y, false, false);
ZX_BENCH(projectBytes, along_x_turned, true, true);
ZX_BENCH(projectBytes, along_y_turned, false, true);
ZX_BENCH(projectFloats, along_x, true, false);
ZX_BENCH(projectFloats, along_x_turned, true, true);
ZX_BENCH(moveOneSlice, cuts, false);
ZX_BENCH(moveOneSlice, projections, true);
