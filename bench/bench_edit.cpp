// The editor window while a slice is dragged, with both orthogonal views open: from a move of the mouse to
// the repainted window, as a multiple of copying a picture of the size of the slice view.

// Before the toolkit, whose macros it does not bear.
#include "support/Threads.h"

#include "Timing.h"
#include "qx/QxMainWindow.h"
#include "support/Random.h"
#include "support/Volumes.h"
#include "zx/ZxObjectPool.h"
#include "zxalign/AlignEditorFactory.h"
#include "zxalign/QxAlignSlices.h"
#include "zxalign/QxDrawAlignSlices.h"
#include "zxalign/QxOrthoViewManager.h"
#include "zxalign/ZxAlignEditor.h"
#include "zxalign/ZxAlignSlices.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QMouseEvent>
#include <QWindow>

#include <algorithm>
#include <cstring>

namespace {

// Windows are shown nowhere unless the environment names a platform.
void needApplication()
{
  static int argc = 1;
  static char name[] = "bench_edit";
  static char* argv[] = {name, nullptr};
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  // Never destroyed: devices of the toolkit outlive what the end of a program destroys.
  [[maybe_unused]] static QApplication& application = *new QApplication(argc, argv);
}

int texture(int x, int y, int k, int) { return (x * 7 + y * 13 + (x ^ y) * 5 + k * 31) & 255; }

/// An editor of a stack of four square slices, its upper slice held by the mouse.
struct Drag {
  explicit Drag(int edge) : stack(makeField<std::uint8_t>({edge, edge, 4}, 1, texture))
  {
    ZxAlignEditor::setFactory(&makeAlignEditor);
    window.resize(1920, 1080);
    module->portData.connect(stack.get());
    module->fire();
    module->doIt(1);
    editor = dynamic_cast<QxAlignSlices*>(module->editor());
    editor->showSagittalView(true);
    editor->showCoronalView(true);
    window.show();
    while (!window.windowHandle()->isExposed()) QApplication::processEvents();
    QApplication::processEvents();
    send(QEvent::MouseButtonPress, 0);
  }
  ~Drag()
  {
    send(QEvent::MouseButtonRelease, 0);
    module->setModified(false);
  }
  QWidget* viewport() { return editor->drawArea()->viewport(); }
  void send(QEvent::Type type, int step)
  {
    const QPointF at(viewport()->width() / 2 + step % 100, viewport()->height() / 2 + step % 70);
    QMouseEvent event(type, at, at, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport(), &event);
  }
  void frame(int step)
  {
    send(QEvent::MouseMove, step);
    QApplication::processEvents(); // All that has asked for it is painted.
  }
  // A drag that shows nothing new is not worth timing.
  bool shows()
  {
    frame(0);
    const QImage before = viewport()->grab().toImage();
    frame(1);
    return before != viewport()->grab().toImage();
  }

  QxMainWindow window;
  McHandle<ZxField3> stack;
  McHandle<ZxAlignSlices> module = mcMake<ZxAlignSlices>();
  QxAlignSlices* editor = nullptr;
};

// Arguments: edge length of the slices, threads.
void drag(benchmark::State& state)
{
  needApplication();
  withThreads(static_cast<int>(state.range(1)), [&] {
    Drag drag(static_cast<int>(state.range(0)));
    if (!drag.shows()) {
      state.SkipWithError("wrong result");
      return;
    }
    const std::vector<std::uint8_t> from(countOf(drag.viewport()->width(), drag.viewport()->height(), 4), 1);
    std::vector<std::uint8_t> to(from.size());
    double painting = 1e9, worst = 0.0, copying = 1e9;
    int step = 0;
    for (auto _ : state) {
      const double seconds = secondsOf([&] { drag.frame(++step); });
      state.SetIterationTime(seconds);
      painting = std::min(painting, seconds);
      worst = std::max(worst, seconds);
      copying = std::min(copying, secondsOf([&] { std::memcpy(to.data(), from.data(), from.size()); }));
    }
    state.counters["copies"] = painting / copying;
    state.counters["best_ms"] = painting * 1e3;
    state.counters["worst_ms"] = worst * 1e3;
  });
}

} // namespace

BENCHMARK(drag)->ArgsProduct({{256, 4096}, {1, 2}})->Unit(benchmark::kMillisecond)->UseManualTime();
