#include "QxDrawAlignSlicesInternals.h"

#include "qx/ZxResource.h"

#include <QCoreApplication>
#include <QPaintEngine>
#include <QPaintEvent>
#include <QPixmap>
#include <QScrollBar>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr int kScrollStep = 20; // pixels; a notch of the wheel scrolls three

McDArray<QxDrawAlignSlices*>& instances()
{
  static McDArray<QxDrawAlignSlices*> all;
  return all;
}

QCursor rotateCursor(const QWidget& widget)
{
  const QPixmap picture =
      ZxResource::readIcon("AlignRotate.png").pixmap(QSize(24, 24), widget.devicePixelRatioF());
  return picture.isNull() ? QCursor(Qt::PointingHandCursor) : QCursor(picture); // its hot spot is the centre
}

// One pixel wide and sharp at every scale of the screen.
void drawOutline(QPainter& painter, const QRect& r, QColor color)
{
  painter.fillRect(QRect(r.left(), r.top(), r.width(), 1), color);
  painter.fillRect(QRect(r.left(), r.bottom(), r.width(), 1), color);
  painter.fillRect(QRect(r.left(), r.top(), 1, r.height()), color);
  painter.fillRect(QRect(r.right(), r.top(), 1, r.height()), color);
}

// Black around the image, and a frame close around it, where the slice is smaller than the viewport.
void drawMargins(QPainter& painter, const SliceViewGeometry& geometry, const QRect& image)
{
  const QRect all(QPoint(0, 0), geometry.viewport);
  for (const QRect& part : QRegion(all).subtracted(image)) painter.fillRect(part, Qt::black);
  if (!image.isEmpty() && (geometry.zoomedWidth() < static_cast<float>(all.width()) ||
                           geometry.zoomedHeight() < static_cast<float>(all.height())))
    drawOutline(painter, image.adjusted(-1, -1, 1, 1), QColor(80, 80, 80));
}

bool hasAlphaChannel(const QPaintDevice* device)
{
  if (!device) return false;
  if (device->devType() == QInternal::Image) return static_cast<const QImage*>(device)->hasAlphaChannel();
  if (device->devType() == QInternal::Pixmap) return static_cast<const QPixmap*>(device)->hasAlphaChannel();
  return false;
}

// The unused byte of the screen image is 0. Copied into a picture with an alpha channel it would come out
// transparent; black behind it makes it opaque and changes no colour.
void makeOpaque(QPainter& painter, const QRect& rect)
{
  const QPaintEngine* const engine = painter.paintEngine();
  if (!engine || !hasAlphaChannel(engine->paintDevice())) return;
  painter.setCompositionMode(QPainter::CompositionMode_DestinationOver);
  painter.fillRect(rect, Qt::black);
  painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
}

} // namespace

QxDrawAlignSlices::QxDrawAlignSlices(QWidget* parent, const char* name)
  : QAbstractScrollArea(parent), m(std::make_unique<Internals>(*this))
{
  setObjectName(QString::fromUtf8(name));
  setFrameShape(QFrame::NoFrame);
  setFocusPolicy(Qt::NoFocus); // the keys are the window's
  setLayoutDirection(Qt::LeftToRight);
  viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
  viewport()->setAttribute(Qt::WA_StaticContents);
  horizontalScrollBar()->setSingleStep(kScrollStep);
  verticalScrollBar()->setSingleStep(kScrollStep);
  m->rotateCursor = rotateCursor(*this);
  viewport()->setCursor(Qt::SizeAllCursor);
  instances().append(this);
}

QxDrawAlignSlices::~QxDrawAlignSlices()
{
  McDArray<QxDrawAlignSlices*>& all = instances();
  all.remove(static_cast<std::size_t>(std::find(all.begin(), all.end(), this) - all.begin()));
}

const McDArray<QxDrawAlignSlices*>& QxDrawAlignSlices::allInstances() { return instances(); }

void QxDrawAlignSlices::setUndoRedo(QxAlignUndoRedo* undoRedo) { m->undoRedo = undoRedo; }

void QxDrawAlignSlices::paintSlice(int width, int height, unsigned char* displayFirst,
                                   unsigned char* displaySecond, unsigned char* greyFirst,
                                   unsigned char* greySecond, SliceInfo& first, SliceInfo& second,
                                   int bytesPerPixel, int firstIndex)
{
  m->cancelDrag();
  if (m->pair.size != QSize(width, height)) m->frame.reset();
  m->pair = {QSize(width, height),
             bytesPerPixel,
             {displayFirst, displaySecond},
             {greyFirst, greySecond},
             {&first, &second},
             {first, second},
             {},
             firstIndex};
  m->palette.buildIfEmpty(first.landmarks.size());
  m->fitScreenImage();
  m->layOutScrollBars();
  m->dropStaleSelection();
  viewport()->update();
}

void QxDrawAlignSlices::setPlaced(const std::optional<SliceXForm>& first,
                                  const std::optional<SliceXForm>& second)
{
  m->pair.placed = {first, second};
  m->requestPaint();
}

void QxDrawAlignSlices::forgetPair()
{
  m->cancelDrag();
  m->frame.reset();
  m->pair = {};
  m->screen = {};
  m->layOutScrollBars();
  viewport()->update();
}

void QxDrawAlignSlices::transform(const SliceInfo& info)
{
  m->cancelDrag();
  m->pair.transforms[m->edited()] = info;
  m->requestPaint();
}

void QxDrawAlignSlices::displaySlice(int shown)
{
  if (shown == m->shown || (shown == BothSlices && m->editMode == EditLandmarks)) return;
  m->shown = shown;
  viewport()->update();
}

int QxDrawAlignSlices::displayedSlice() const { return m->shown; }

void QxDrawAlignSlices::setFixReference(bool fixed)
{
  if (m->shown != BothSlices) m->shown = fixed ? int{SecondSlice} : m->editableSlice;
}

int QxDrawAlignSlices::getEditableSlice() const { return m->editableSlice; }

int QxDrawAlignSlices::getEditMode() const { return m->editMode; }

int QxDrawAlignSlices::viewMode() const { return m->viewMode; }

void QxDrawAlignSlices::setViewMode(int mode)
{
  m->viewMode = mode;
  updateViewport();
}

float QxDrawAlignSlices::zoom() const { return m->zoom; }

int QxDrawAlignSlices::selectedLandmark() const { return m->selected; }

void QxDrawAlignSlices::drawImageSize(float scaleX, float scaleY, bool light, int x, int y)
{
  m->frame.reset();
  if (light) m->frame = ResultFrame{scaleX, scaleY, x, y};
  viewport()->update();
}

McVec2f QxDrawAlignSlices::mapWindowToImage(int x, int y) const
{
  return m->geometry().windowToImage({x, y});
}

void QxDrawAlignSlices::addSuppression(int delta)
{
  const bool wasSuppressed = m->suppressed > 0;
  const auto sum = static_cast<std::int64_t>(m->suppressed) + delta;
  m->suppressed = static_cast<int>(
      std::clamp(sum, std::int64_t{0}, static_cast<std::int64_t>(std::numeric_limits<int>::max() / 2)));
  if (wasSuppressed && m->suppressed == 0) updateViewport();
}

void QxDrawAlignSlices::suppressUpdates() { ++m->suppressed; }

void QxDrawAlignSlices::resumeUpdates()
{
  if (m->suppressed == 0 || --m->suppressed > 0) return;
  if (std::exchange(m->missedPaint, false)) viewport()->update();
}

void QxDrawAlignSlices::updateViewport()
{
  if (viewport()) viewport()->update();
}

void QxDrawAlignSlices::setZoom(float zoom)
{
  if (!(zoom > 0.0f) || !std::isfinite(zoom)) return;
  m->zoom = zoom;
  m->fitScreenImage();
  {
    const UpdateSuppression suppression(this);
    m->layOutScrollBars();
    const QSize hidden = m->geometry().contents() - viewport()->size();
    if (hidden.width() > 0 || hidden.height() > 0) {
      horizontalScrollBar()->setValue(hidden.width() / 2);
      verticalScrollBar()->setValue(hidden.height() / 2);
    }
  }
  viewport()->update();
}

void QxDrawAlignSlices::changeAlignMode(int mode)
{
  m->alignMode = mode;
  viewport()->update();
}

void QxDrawAlignSlices::redGreen() { setViewMode(RedGreen); }

void QxDrawAlignSlices::chess(int fieldSize)
{
  m->fieldSize = std::max(1, fieldSize);
  setViewMode(Checkerboard);
}

void QxDrawAlignSlices::updateChessFieldSize(int fieldSize)
{
  if (m->viewMode == Checkerboard) chess(fieldSize);
}

void QxDrawAlignSlices::avg() { setViewMode(Average); }

void QxDrawAlignSlices::invert() { setViewMode(InvertedOverlay); }

void QxDrawAlignSlices::paintEvent(QPaintEvent* event)
{
  QPainter painter(viewport());
  painter.setClipRegion(event->region());
  m->paint(painter);
}

void QxDrawAlignSlices::resizeEvent(QResizeEvent*)
{
  m->layOutScrollBars();
  m->fitScreenImage();
  // The image moves with the middle of the viewport.
  viewport()->update();
}

// The landmarks' arrows and the frame do not simply move along, so the picture is made anew.
void QxDrawAlignSlices::scrollContentsBy(int, int) { viewport()->update(); }

SliceViewGeometry QxDrawAlignSlices::Internals::geometry() const
{
  return {view.viewport()->size(), pair.size, zoom,
          QPoint(view.horizontalScrollBar()->value(), view.verticalScrollBar()->value())};
}

void QxDrawAlignSlices::Internals::layOutScrollBars()
{
  const QSize contents = geometry().contents();
  const auto setRange = [](QScrollBar& bar, int all, int visible) {
    bar.setPageStep(visible);
    bar.setRange(0, std::max(0, all - visible));
  };
  // A bar that appears takes its width from the viewport, which may make the other one appear.
  for (int pass = 0; pass < 3; ++pass) {
    const QSize whole = view.maximumViewportSize();
    const bool fits = contents.width() <= whole.width() && contents.height() <= whole.height();
    const QSize visible = fits ? whole : view.viewport()->size();
    setRange(*view.horizontalScrollBar(), contents.width(), visible.width());
    setRange(*view.verticalScrollBar(), contents.height(), visible.height());
    // The bars would come and go in the next turn of the event loop only, too late for centring.
    QEvent layOut(QEvent::LayoutRequest);
    QCoreApplication::sendEvent(&view, &layOut);
    if (view.viewport()->size() == visible) return;
  }
}

void QxDrawAlignSlices::Internals::requestPaint()
{
  if (suppressed > 0)
    missedPaint = true;
  else
    view.viewport()->update();
}

void QxDrawAlignSlices::Internals::fitScreenImage()
{
  const QSize size = pair.isEmpty() ? QSize(0, 0) : geometry().screen();
  if (screen.size() == size) return;
  screen = size.isEmpty() ? QImage() : QImage(size, QImage::Format_RGB32);
  screen.fill(0);
}

void QxDrawAlignSlices::Internals::paint(QPainter& painter)
{
  const SliceViewGeometry now = geometry();
  if (suppressed > 0) {
    missedPaint = true;
  } else {
    fitScreenImage();
    const bool hasLandmarks = alignMode == kLandmarkAlignMode;
    if (!screen.isNull())
      composePicture(pair, now, {viewMode, shown, fieldSize, selected, hasLandmarks}, palette, screen);
  }
  const QRect image = screen.isNull() ? QRect() : QRect(now.offset(), screen.size());
  drawMargins(painter, now, image);
  painter.drawImage(image.topLeft(), screen);
  makeOpaque(painter, image);
  if (const auto outline = frame ? frame->outline(now) : std::nullopt)
    drawOutline(painter, *outline, QColor(200, 200, 200));
}
