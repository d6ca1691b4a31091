#pragma once

#include "reference/PlainCompose.h"
#include "support/Random.h"
#include "support/Waiting.h"
#include "zxalign/QxDrawAlignSlices.h"
#include "zxalign/SliceInfo.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <QMouseEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include <cmath>

/// A view of a pair of 61 x 47 pixels, and what it should show by plain loops.
class SliceViewTest : public testing::Test {
protected:
  static constexpr int kWidth = 61, kHeight = 47;

  SliceViewTest()
  {
    first.landmarks = second.landmarks = {QPoint(10, 8), QPoint(50, 40)};
    view.setObjectName("drawArea");
  }
  void open(int width, int height)
  {
    view.resize(width, height);
    view.show();
    ASSERT_TRUE(waitForExposed(&view));
    paintSlice();
  }
  void paintSlice()
  {
    auto* const a = bytesPerPixel == 4 ? colour[0].data() : grey[0].data();
    auto* const b = bytesPerPixel == 4 ? colour[1].data() : grey[1].data();
    view.paintSlice(kWidth, kHeight, a, b, grey[0].data(), grey[1].data(), first, second, bytesPerPixel, 0);
  }

  QSize viewport() const { return view.viewport()->size(); }
  /// What the view paints.
  QImage picture() { return view.viewport()->grab().toImage().convertToFormat(QImage::Format_ARGB32); }

  /// The positions of a slice's fixed-point walk over the zoomed contents.
  static kernels::Affine16 inverseOf(const SliceXForm& xform, double zoom)
  {
    const auto fixed = [](double v) { return static_cast<std::int64_t>(std::floor(v * 65536.0 + 0.5)); };
    QTransform m;
    xform.getInverseMatrix(m, kWidth / 2, kHeight / 2);
    return {fixed(m.m11() / zoom), fixed(m.m12() / zoom), fixed(m.m21() / zoom),
            fixed(m.m22() / zoom), fixed(m.dx()),         fixed(m.dy())};
  }
  /// The picture of the pair under two transforms, without landmarks.
  QImage expected(const SliceXForm& a, const SliceXForm& b)
  {
    const double zoom = view.zoom();
    const int mode = view.viewMode(), shown = view.displayedSlice();
    const bool isColour = bytesPerPixel == 4 && mode != QxDrawAlignSlices::RedGreen;
    kernels::Composition c;
    c.width = kWidth;
    c.height = kHeight;
    c.channels = isColour ? 4 : 1;
    c.first = {isColour ? colour[0].data() : grey[0].data(), inverseOf(a, zoom)};
    c.second = {isColour ? colour[1].data() : grey[1].data(), inverseOf(b, zoom)};
    c.mode = static_cast<kernels::ComposeMode>(mode - 1);
    c.show = shown == 2   ? kernels::ComposeShow::Both
             : shown == 1 ? kernels::ComposeShow::Second
                          : kernels::ComposeShow::First;
    c.fieldSize = fieldSize;
    const auto whole = [](double size) { return static_cast<int>(std::min(size, 2147483647.0)); };
    return placed(c, whole(kWidth * zoom), whole(kHeight * zoom));
  }

  /// Sends a mouse event to the viewport; buttons = those that are held afterwards.
  void mouse(QEvent::Type type, QPointF at, Qt::MouseButton button, Qt::MouseButtons buttons,
             Qt::KeyboardModifiers modifiers = Qt::NoModifier)
  {
    QMouseEvent event(type, at, view.viewport()->mapToGlobal(at), button, buttons, modifiers);
    QApplication::sendEvent(view.viewport(), &event);
  }
  void press(QPointF at, Qt::MouseButton button = Qt::LeftButton,
             Qt::KeyboardModifiers modifiers = Qt::NoModifier)
  {
    mouse(QEvent::MouseButtonPress, at, button, button, modifiers);
  }
  void moveTo(QPointF at, Qt::MouseButton held = Qt::LeftButton)
  {
    mouse(QEvent::MouseMove, at, Qt::NoButton, held);
  }
  void release(QPointF at, Qt::MouseButton button = Qt::LeftButton)
  {
    mouse(QEvent::MouseButtonRelease, at, button, Qt::NoButton);
  }
  void drag(QPointF from, QPointF to, Qt::MouseButton button = Qt::LeftButton,
            Qt::KeyboardModifiers modifiers = Qt::NoModifier)
  {
    press(from, button, modifiers);
    moveTo(to, button);
    release(to, button);
  }
  void click(QPointF at)
  {
    press(at);
    release(at);
  }

  QxDrawAlignSlices view;
  SliceInfo first{SliceXForm(4, -3, 12, false)}, second{SliceXForm(-6.75f, 2.5f, -20, true)};
  Random random{31};
  std::vector<std::uint8_t> grey[2] = {random.bytes(countOf(kWidth, kHeight)),
                                       random.bytes(countOf(kWidth, kHeight))};
  std::vector<std::uint8_t> colour[2] = {random.bytes(countOf(kWidth, kHeight, 4)),
                                         random.bytes(countOf(kWidth, kHeight, 4))};
  int bytesPerPixel = 1;
  int fieldSize = 50;

private:
  // Black all around; where the slice is smaller than the viewport, a grey frame close to it.
  QImage placed(kernels::Composition& c, int zoomedWidth, int zoomedHeight)
  {
    const int vw = viewport().width(), vh = viewport().height();
    const int w = std::min(vw, zoomedWidth), h = std::min(vh, zoomedHeight);
    c.left = zoomedWidth > vw ? view.horizontalScrollBar()->value() : 0;
    c.top = zoomedHeight > vh ? view.verticalScrollBar()->value() : 0;
    const auto offset = [](int visible, double all) {
      return visible > all ? static_cast<int>((visible - all) / 2) : 0;
    };
    const int x0 = offset(vw, kWidth * static_cast<double>(view.zoom()));
    const int y0 = offset(vh, kHeight * static_cast<double>(view.zoom()));
    QImage image(viewport(), QImage::Format_ARGB32);
    for (int y = 0; y < vh; ++y)
      for (int x = 0; x < vw; ++x) {
        const int i = x - x0, j = y - y0;
        QRgb value = 0;
        if (i >= 0 && i < w && j >= 0 && j < h)
          value = reference::plainPixel(c, c.left + i, c.top + j);
        else if (i >= -1 && i <= w && j >= -1 && j <= h)
          value = qRgb(80, 80, 80);
        image.setPixel(x, y, value | 0xff000000u);
      }
    return image;
  }
};

/// The first pixel that differs, or nothing.
inline std::string difference(const QImage& actual, const QImage& expected)
{
  if (actual.size() != expected.size()) return "sizes differ";
  for (int y = 0; y < actual.height(); ++y)
    for (int x = 0; x < actual.width(); ++x)
      if (actual.pixel(x, y) != expected.pixel(x, y))
        return QString::asprintf("pixel %d,%d is %08x, not %08x", x, y, actual.pixel(x, y),
                                 expected.pixel(x, y))
            .toStdString();
  return {};
}
