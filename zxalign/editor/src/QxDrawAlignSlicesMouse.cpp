// What the mouse does on the view, and the editing that goes with it.

#include "QxDrawAlignSlicesInternals.h"

#include "LandmarkMarker.h"

#include "mc/McRound.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

#include <cstdlib>

namespace {

constexpr std::size_t kFewestRemovable = 3; // every slice keeps two landmarks
constexpr int kNotch = 120;                 // of the wheel, in eighths of a degree

QPoint positionOf(const QMouseEvent& event)
{
  return {mc::truncToInt(event.position().x()), mc::truncToInt(event.position().y())};
}

SliceDrag::Kind dragOf(const QMouseEvent& event)
{
  const bool left = event.buttons() & Qt::LeftButton;
  if (left && !(event.modifiers() & Qt::ControlModifier)) return SliceDrag::Kind::Translation;
  return left || (event.buttons() & Qt::MiddleButton) ? SliceDrag::Kind::Rotation : SliceDrag::Kind::None;
}

bool isLeftAlone(const QMouseEvent& event)
{
  return event.buttons() == Qt::LeftButton && (event.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
}

} // namespace

void QxDrawAlignSlices::setEditableSlice(int slice)
{
  if (slice != m->editableSlice) m->cancelDrag();
  m->editableSlice = slice;
  if (m->editMode == EditLandmarks) m->shown = slice;
  m->requestPaint();
}

void QxDrawAlignSlices::setEditMode(int mode)
{
  m->cancelDrag();
  m->editMode = mode;
  if (mode == EditLandmarks) {
    m->shown = m->editableSlice;
    viewport()->unsetCursor();
  } else {
    m->shown = BothSlices;
    m->selected = -1;
    viewport()->setCursor(Qt::SizeAllCursor);
    Q_EMIT enableRemove(false);
  }
  viewport()->update();
}

void QxDrawAlignSlices::setRotateCursor(bool on)
{
  if (m->editMode == EditTransform) viewport()->setCursor(on ? m->rotateCursor : QCursor(Qt::SizeAllCursor));
}

bool QxDrawAlignSlices::clearSelection()
{
  if (m->selected < 0) return false;
  m->deselect();
  return true;
}

bool QxDrawAlignSlices::insideLandmark(QPoint mouse, QPoint landmark) const
{
  const std::size_t slice = m->edited();
  const auto from = slice == 0 ? LandmarkMarker::From::Below : LandmarkMarker::From::Above;
  return LandmarkMarker::contains(m->pair.landmarkInContents(slice, landmark, m->zoom), from,
                                  {static_cast<float>(mouse.x()), static_cast<float>(mouse.y())});
}

void QxDrawAlignSlices::removeLandmark()
{
  m->dropStaleSelection();
  const int index = m->selected;
  if (index < 0 || m->landmarkCount() < kFewestRemovable) return;
  const QPointer<QxDrawAlignSlices> alive(this);
  Q_EMIT removePoint(index);
  if (!alive) return;
  m->palette.remove(static_cast<std::size_t>(index));
  m->deselect();
}

void QxDrawAlignSlices::addLandmark()
{
  m->addPending = true;
  m->deselect();
}

void QxDrawAlignSlices::hideEvent(QHideEvent* event)
{
  m->cancelDrag(); // the release of the button goes elsewhere
  QAbstractScrollArea::hideEvent(event);
}

// The arrow keys move the slice, not the scroll bars.
void QxDrawAlignSlices::keyPressEvent(QKeyEvent* event) { event->ignore(); }

void QxDrawAlignSlices::wheelEvent(QWheelEvent* event)
{
  if (!(event->modifiers() & Qt::ControlModifier)) return QAbstractScrollArea::wheelEvent(event);
  event->accept();
  const int angle = event->angleDelta().y();
  m->wheelAngle = (angle < 0) == (m->wheelAngle < 0) ? m->wheelAngle + angle : angle;
  const QPointer<QxDrawAlignSlices> alive(this);
  while (alive && std::abs(m->wheelAngle) >= kNotch) {
    const int direction = m->wheelAngle > 0 ? 1 : -1;
    m->wheelAngle -= direction * kNotch;
    Q_EMIT zoomStepRequested(direction);
  }
}

void QxDrawAlignSlices::mousePressEvent(QMouseEvent* event)
{
  const QPointer<QxDrawAlignSlices> alive(this);
  Q_EMIT click();
  if (!alive || m->pair.isEmpty()) return;
  if (m->editMode == EditTransform) m->pressForTransform(*event);
  if (m->editMode == EditLandmarks && isLeftAlone(*event)) m->pressForLandmarks(positionOf(*event));
}

void QxDrawAlignSlices::mouseDoubleClickEvent(QMouseEvent* event) { mousePressEvent(event); }

void QxDrawAlignSlices::mouseMoveEvent(QMouseEvent* event)
{
  if (m->drag.kind() == SliceDrag::Kind::None) return;
  m->drag.moveTo(m->dragScene(), m->pair.transforms, positionOf(*event));
  viewport()->update();
}

void QxDrawAlignSlices::mouseReleaseEvent(QMouseEvent*) { m->endDrag(); }

void QxDrawAlignSlices::Internals::select(int landmark)
{
  selected = landmark;
  view.viewport()->update();
  Q_EMIT view.enableRemove(landmarkCount() >= kFewestRemovable);
}

void QxDrawAlignSlices::Internals::deselect()
{
  selected = -1;
  view.viewport()->update();
  Q_EMIT view.enableRemove(false);
}

void QxDrawAlignSlices::Internals::dropStaleSelection()
{
  if (selected >= 0 && static_cast<std::size_t>(selected) >= landmarkCount()) deselect();
}

std::size_t QxDrawAlignSlices::Internals::landmarkCount() const
{
  return pair.isEmpty() ? 0 : pair.records[edited()]->landmarks.size();
}

SliceDrag::Scene QxDrawAlignSlices::Internals::dragScene() const
{
  return {view.viewport()->size(), pair.size, zoom, edited() == 1};
}

void QxDrawAlignSlices::Internals::pressForTransform(const QMouseEvent& event)
{
  if (drag.kind() != SliceDrag::Kind::None) {
    if (event.buttons() != event.button()) return; // another button beside the one that drags
    cancelDrag();                                  // whose release went elsewhere
  }
  const SliceDrag::Kind kind = dragOf(event);
  const bool together = event.modifiers() & Qt::ShiftModifier;
  if (kind == SliceDrag::Kind::None ||
      !drag.begin(kind, dragScene(), pair.transforms, positionOf(event), together))
    return;
  if (kind == SliceDrag::Kind::Rotation) view.viewport()->setCursor(rotateCursor);
}

void QxDrawAlignSlices::Internals::endDrag()
{
  const SliceXForm dragged = pair.transforms[edited()];
  switch (drag.finish()) {
  case SliceDrag::Kind::None:
    return;
  case SliceDrag::Kind::Translation:
    Q_EMIT view.translated(dragged.translationX, dragged.translationY, drag.isTogether());
    return;
  case SliceDrag::Kind::Rotation:
    view.viewport()->setCursor(Qt::SizeAllCursor);
    Q_EMIT view.rotated(dragged.rotation, drag.isTogether());
  }
}

void QxDrawAlignSlices::Internals::cancelDrag()
{
  const SliceDrag::Kind was = drag.cancel(pair.transforms);
  if (was == SliceDrag::Kind::Rotation) view.viewport()->setCursor(Qt::SizeAllCursor);
  if (was != SliceDrag::Kind::None) view.viewport()->update();
}

// The pixel of the editable slice under the mouse; false outside the slice. The row is cut off towards zero,
// so that the half row above the slice belongs to its first row; columns are rounded properly.
bool QxDrawAlignSlices::Internals::findEditedPixel(QPoint mouse, QPoint& pixel) const
{
  const McVec2f centre = pair.centre();
  const McVec2f p = pair.transform(edited()).mapInverse(geometry().windowToImage(mouse), centre.x, centre.y);
  pixel = {mc::roundHalfUp(p.x), mc::addHalfAndTrunc(p.y)};
  return QRect(QPoint(0, 0), pair.size).contains(pixel);
}

void QxDrawAlignSlices::Internals::pressForLandmarks(QPoint mouse)
{
  QPoint pixel;
  view.viewport()->update();
  if (!findEditedPixel(mouse, pixel)) return;
  dropStaleSelection();
  if (addPending)
    addLandmarkAt(pixel);
  else if (selected >= 0)
    placeSelectedAt(pixel);
  else
    selectAt(mouse);
}

void QxDrawAlignSlices::Internals::addLandmarkAt(QPoint pixel)
{
  palette.extendBeyond(landmarkCount());
  addPending = false;
  view.viewport()->unsetCursor();
  Q_EMIT view.addPoint(pixel);
}

void QxDrawAlignSlices::Internals::placeSelectedAt(QPoint pixel)
{
  if (undoRedo) undoRedo->saveState();
  const auto index = static_cast<std::size_t>(selected);
  if (index < landmarkCount()) pair.records[edited()]->landmarks[index] = pixel;
  lastPlaced = selected;
  deselect();
}

void QxDrawAlignSlices::Internals::selectAt(QPoint mouse)
{
  const McDArray<QPoint>& landmarks = pair.records[edited()]->landmarks;
  if (landmarks.isEmpty()) return;
  const QPoint position = geometry().windowToContents(mouse);
  for (std::size_t i = 0; i < landmarks.size(); ++i)
    if (view.insideLandmark(position, landmarks[i])) return select(static_cast<int>(i));
  // Beside all landmarks: on to the one after the last that was placed.
  const int next = lastPlaced + 1;
  select(static_cast<std::size_t>(next) < landmarks.size() ? next : 0);
}
