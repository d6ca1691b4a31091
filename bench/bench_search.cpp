// A whole least-squares run on two neighbouring sections against the plain search, which compares one
// candidate after the other over all of its points. "run/<edge>" and "run_plain/<edge>" belong together.

// Before the toolkit, whose macros it does not bear.
#include "support/Threads.h"

#include "io/Volume.h"
#include "reference/PlainLeastSquares.h"
#include "samples/Phantom.h"
#include "support/TestData.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <map>

namespace {

using Pixels = std::vector<std::uint8_t>;

struct Sections {
  std::string name;
  Pixels reference, editable;
};

std::size_t at(int edge, int x, int y)
{
  return static_cast<std::size_t>(y) * static_cast<std::size_t>(edge) + static_cast<std::size_t>(x);
}

/// Twice the edge length; between pixels their average.
Pixels enlarged(const Pixels& image, int edge)
{
  Pixels out(image.size() * 4);
  for (int y = 0; y < 2 * edge; ++y)
    for (int x = 0; x < 2 * edge; ++x) {
      const int x1 = std::min((x + 1) / 2, edge - 1), y1 = std::min((y + 1) / 2, edge - 1);
      const int sum = image[at(edge, x / 2, y / 2)] + image[at(edge, x1, y / 2)] +
                      image[at(edge, x / 2, y1)] + image[at(edge, x1, y1)];
      out[at(2 * edge, x, y)] = static_cast<std::uint8_t>(sum / 4);
    }
  return out;
}

/// Two sections as they were imaged, or, without the data, two of a phantom.
Sections readSections(int edge, const std::vector<std::string>& files)
{
  Sections s{"phantom", Pixels(at(edge, 0, edge)), Pixels(at(edge, 0, edge))};
  if (!std::filesystem::exists(files.front())) {
    samples::PhantomOptions options;
    options.slices = 2;
    options.size = edge;
    const samples::Phantom phantom(options);
    phantom.renderSlice(0, s.reference.data());
    phantom.renderSlice(1, s.editable.data());
    return s;
  }
  const McHandle<ZxField3> field = io::readVolume(files);
  s.name = "sections of " + std::filesystem::path(files.front()).parent_path().filename().string();
  field->getLattice()->readSlice(0, s.reference.data());
  field->getLattice()->readSlice(1, s.editable.data());
  return s;
}

Sections makeSections(int edge)
{
  const std::string em = (testDataFolder() / "em").string();
  if (edge == 512)
    return readSections(edge, {em + "/isbi2012_sstem_train/0.png", em + "/isbi2012_sstem_train/1.png"});
  if (edge == 1024)
    return readSections(edge, {em + "/vnc_sstem_stack1/00.tif", em + "/vnc_sstem_stack1/01.tif"});
  Sections s = makeSections(edge / 2);
  s.name += ", enlarged";
  s.reference = enlarged(s.reference, edge / 2);
  s.editable = enlarged(s.editable, edge / 2);
  return s;
}

const Sections& sections(int edge)
{
  static std::map<int, Sections> all;
  const auto found = all.find(edge);
  return found != all.end() ? found->second : all.emplace(edge, makeSections(edge)).first->second;
}

struct Run {
  explicit Run(int edge)
    : pair{sections(edge).reference.data(), sections(edge).editable.data(), edge, edge, 1}
  {
    // As the module sets it for an input.
    settings.rotationStep = static_cast<float>(360.0 / (3.14159265358979323846 * edge));
  }
  reference::PlainLeastSquares plain() const
  {
    reference::PlainLeastSquares search(pair, settings, {}, {});
    search.run();
    return search;
  }
  bool fastEquals(const reference::PlainLeastSquares& plain) const
  {
    LeastSquaresSearch search(pair, settings, {}, {});
    if (search.allocate()) return false;
    search.run([] { return false; });
    const SliceXForm& a = search.editable();
    const SliceXForm& b = plain.editable;
    return a.translationX == b.translationX && a.translationY == b.translationY && a.rotation == b.rotation &&
           search.quality() == plain.best && search.numAcceptedMoves() == plain.accepted;
  }
  ImagePair pair;
  ZxAlignSettings settings;
};

const reference::PlainLeastSquares& plainResult(int edge)
{
  static std::map<int, reference::PlainLeastSquares> all;
  const auto found = all.find(edge);
  return found != all.end() ? found->second : all.emplace(edge, Run(edge).plain()).first->second;
}

void run(benchmark::State& state, int threads)
{
  const int edge = static_cast<int>(state.range(0));
  const Run run(edge);
  const reference::PlainLeastSquares& expected = plainResult(edge);
  withThreads(threads, [&] {
    if (expected.accepted == 0 || !run.fastEquals(expected)) {
      state.SkipWithError("wrong result");
      return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(run.fastEquals(expected));
  });
  state.SetLabel(sections(edge).name);
}

void run_plain(benchmark::State& state)
{
  const Run run(static_cast<int>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(run.plain().best);
}

} // namespace

#define ZX_SIZES Arg(512)->Arg(1024)->Arg(2048)->Unit(benchmark::kMillisecond)->UseRealTime()
BENCHMARK(run_plain)->ZX_SIZES;
BENCHMARK_CAPTURE(run, 1_thread, 1)->ZX_SIZES;
BENCHMARK_CAPTURE(run, 2_threads, 2)->ZX_SIZES;
