#pragma once

#include "ResultFrame.h"
#include "ShownPair.h"
#include "SliceDrag.h"
#include "zxalign/QxAlignUndoRedo.h"
#include "zxalign/QxDrawAlignSlices.h"

#include <QCursor>
#include <QPainter>

/// State of the view and what it does with it.
struct QxDrawAlignSlices::Internals {
  explicit Internals(QxDrawAlignSlices& owner) : view(owner) {}

  // Which of the two slices the mouse edits.
  std::size_t edited() const { return editableSlice == SecondSlice ? 1 : 0; }
  SliceViewGeometry geometry() const;

  // Sets the ranges of the scroll bars for the zoomed slice; bars that appear change the viewport.
  void layOutScrollBars();
  // Has exactly one screen image of the visible size; one of that size is kept as it is.
  void fitScreenImage();
  void paint(QPainter& painter);
  // Asks for a repaint, while suppressed for the time when that is over.
  void requestPaint();

  void select(int landmark);
  void deselect();
  // Forgets a selection whose landmark is no longer there.
  void dropStaleSelection();
  std::size_t landmarkCount() const;

  void pressForTransform(const QMouseEvent& event);
  void pressForLandmarks(QPoint mouse);
  bool findEditedPixel(QPoint mouse, QPoint& pixel) const;
  void addLandmarkAt(QPoint pixel);
  void placeSelectedAt(QPoint pixel);
  void selectAt(QPoint mouse);
  SliceDrag::Scene dragScene() const;
  void endDrag();
  // Ends a drag without telling anyone, the transforms as they were before it.
  void cancelDrag();

  QxDrawAlignSlices& view;
  ShownPair pair;
  QImage screen;
  LandmarkPalette palette;
  std::optional<ResultFrame> frame;
  SliceDrag drag;
  QCursor rotateCursor;
  QPointer<QxAlignUndoRedo> undoRedo;

  int suppressed = 0;
  bool missedPaint = false; // asked for while suppressed
  int wheelAngle = 0;       // turned with Ctrl since the last step of the zoom, in eighths of a degree
  float zoom = 1.0f;
  int fieldSize = 50;
  int viewMode = QxDrawAlignSlices::InvertedOverlay;
  int shown = BothSlices;
  int editableSlice = SecondSlice;
  int editMode = EditTransform;
  int alignMode = 0;
  bool addPending = false;
  int selected = -1;
  int lastPlaced = -1;
};
