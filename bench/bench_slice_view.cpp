// The slice view while a slice is dragged: one step of the mouse and the paint that follows, as a multiple of
// copying a picture of the same size.

#include "Timing.h"
#include "support/Random.h"
#include "support/Threads.h"
#include "zxalign/QxDrawAlignSlices.h"
#include "zxalign/SliceInfo.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QMouseEvent>
#include <QWindow>

#include <algorithm>
#include <cstring>

namespace {

using View = QxDrawAlignSlices;

// Windows are shown nowhere unless the environment names a platform.
void needApplication()
{
  static int argc = 1;
  static char name[] = "bench_slice_view";
  static char* argv[] = {name, nullptr};
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  // Never destroyed: devices of the toolkit outlive what the end of a program destroys.
  [[maybe_unused]] static QApplication& application = *new QApplication(argc, argv);
}

// A view of 16:9 on a square pair, on a 4096 x 4096 pair one of 1920 x 1080.
struct Drag {
  Drag(int edge, int bytesPerPixel)
    : a(Random(1).bytes(countOf(edge, edge, bytesPerPixel))), b(Random(2).bytes(a.size()))
  {
    view.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.resize(edge * 15 / 32, edge * 135 / 512);
    view.show();
    while (!view.windowHandle()->isExposed()) QApplication::processEvents();
    view.paintSlice(edge, edge, a.data(), b.data(), a.data(), b.data(), first, second, bytesPerPixel, 0);
    view.setZoom(1.0f);
    send(QEvent::MouseButtonPress, 0);
  }
  void send(QEvent::Type type, int step)
  {
    const QPointF at(view.width() / 2 + step % 100, view.height() / 2 + step % 70);
    QMouseEvent event(type, at, at, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view.viewport(), &event);
  }
  void frame(int step)
  {
    send(QEvent::MouseMove, step);
    view.viewport()->repaint();
  }
  // A drag that shows nothing new is not worth timing.
  bool shows()
  {
    frame(0);
    const QImage before = view.viewport()->grab().toImage();
    frame(1);
    return before != view.viewport()->grab().toImage();
  }

  std::vector<std::uint8_t> a, b;
  SliceInfo first{SliceXForm(0, 0, 5, false)}, second{SliceXForm(0, 0, 3, false)};
  View view;
};

void time(benchmark::State& state, int bytesPerPixel, int threads)
{
  needApplication();
  withThreads(threads, [&] {
    Drag drag(static_cast<int>(state.range(0)), bytesPerPixel);
    if (!drag.shows()) {
      state.SkipWithError("wrong result");
      return;
    }
    const std::vector<std::uint8_t> from(countOf(drag.view.width(), drag.view.height(), 4), 1);
    std::vector<std::uint8_t> to(from.size());
    double painting = 1e9, copying = 1e9;
    int step = 0;
    for (auto _ : state) {
      const double seconds = secondsOf([&] { drag.frame(++step); });
      state.SetIterationTime(seconds);
      painting = std::min(painting, seconds);
      copying = std::min(copying, secondsOf([&] { std::memcpy(to.data(), from.data(), from.size()); }));
    }
    state.counters["copies"] = painting / copying;
    state.counters["best_ms"] = painting * 1e3;
    state.counters["frames_per_second"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
  });
}

} // namespace

// Argument: edge length of the slices.
#define ZX_BENCH(name, ...)                                                                                  \
  BENCHMARK_CAPTURE(time, name, __VA_ARGS__)                                                                 \
      ->Arg(256)                                                                                             \
      ->Arg(4096)                                                                                            \
      ->Unit(benchmark::kMillisecond)                                                                        \
      ->UseManualTime()
ZX_BENCH(drag_grey, 1, 1);
ZX_BENCH(drag_grey_2_threads, 1, 2);
ZX_BENCH(drag_colour, 4, 1);
ZX_BENCH(drag_colour_2_threads, 4, 2);
