#pragma once

#include "mc/McDArray.h"
#include "mc/McVec2f.h"
#include "zxalign/SliceXForm.h"

#include <QAbstractScrollArea>
#include <QPoint>
#include <QPointer>

#include <memory>
#include <optional>

class QxAlignUndoRedo;
struct SliceInfo;

/// Shows the two slices of the pair on top of each other, each under its own transform, and edits them with
/// the mouse.
///
/// In the numbers of this class the first slice is the lower one of the pair, the second the upper one.
/// Zooming makes every slice pixel cover zoom x zoom device-independent pixels; the contents that can be
/// scrolled are the zoomed slice.
///
/// The view holds no truth: it draws its own copy of the transforms, which a drag changes, and tells the
/// outcome by a signal when the button is released. Only placing a landmark writes into a record, after
/// saving a state for undo. Whatever replaces what is dragged (another pair, transform(), another edit mode
/// or editable slice) drops the drag: nothing is emitted, and the copy is as it was before.
///
/// All repaints are requests that the event loop gathers, so any number of changes in one turn compose the
/// picture once.
class QxDrawAlignSlices : public QAbstractScrollArea {
  Q_OBJECT
public:
  /// The modes of composing the picture, see kernels/Compose.h.
  enum ViewMode { RedGreen = 1, Checkerboard = 2, Average = 3, InvertedOverlay = 4 };
  /// What the mouse edits; with any other number nothing.
  enum EditMode { EditTransform = 1, EditLandmarks = 3 };
  /// What displaySlice() and setEditableSlice() name.
  enum Shown { FirstSlice = -1, SecondSlice = 1, BothSlices = 2 };
  /// The align mode in which landmarks are drawn.
  static constexpr int kLandmarkAlignMode = 2;

  /// While one lives, the picture of a view is not composed anew; they nest. The view may be null, and may be
  /// deleted meanwhile.
  class UpdateSuppression;

  /// name becomes the object's name.
  explicit QxDrawAlignSlices(QWidget* parent = nullptr, const char* name = nullptr);
  ~QxDrawAlignSlices() override;

  /// The views that exist.
  static const McDArray<QxDrawAlignSlices*>& allInstances();

  /// Where a state is saved before a landmark is moved; borrowed, may be null, may be deleted at any time.
  void setUndoRedo(QxAlignUndoRedo* undoRedo);

  /// Shows a pair of slices of width x height pixels.
  ///
  /// The display images have bytesPerPixel bytes a pixel: 1 (grey) or 4 (red, green, blue, alpha); the grey
  /// images, which the red/green mode uses, 1. Images and records are borrowed: they stay alive and in place
  /// until the next call, forgetPair() or the end of the view. The transforms of the records are copied,
  /// their flips and landmarks are read whenever the picture is composed. firstIndex is kept only.
  void paintSlice(int width, int height, unsigned char* displayFirst, unsigned char* displaySecond,
                  unsigned char* greyFirst, unsigned char* greySecond, SliceInfo& first, SliceInfo& second,
                  int bytesPerPixel, int firstIndex);
  /// Says of the pair shown now how its slices lie in their images already, as projections do: drawn is only
  /// the motion since. None: as they are.
  void setPlaced(const std::optional<SliceXForm>& first, const std::optional<SliceXForm>& second);
  /// Forgets everything that is borrowed for the pair, and shows nothing. To be called before any of it goes
  /// away without a successor.
  void forgetPair();
  /// Shows another transform of the editable slice; landmarks and flip still come from its record.
  void transform(const SliceInfo& info);

  /// Shows one slice or both (Shown). Both are refused while landmarks are edited.
  void displaySlice(int shown);
  int displayedSlice() const;
  /// With a fixed reference a single shown slice is the second one, else the editable one. Does not repaint.
  void setFixReference(bool fixed);

  /// SecondSlice, or any other value for the first.
  int getEditableSlice() const;
  /// An EditMode, and a ViewMode.
  int getEditMode() const;
  int viewMode() const;
  /// Composes in a mode from now on; the size of the checkerboard's fields stays.
  void setViewMode(int mode);
  /// Screen pixels per slice pixel.
  float zoom() const;
  /// Number of the selected landmark, -1 for none.
  int selectedLandmark() const;

  /// Outlines the extent of a result image, as long as nothing else is said: `light` shows the outline, else
  /// it is taken back. At most one is shown, and it follows zoom and size of the view.
  ///
  /// scaleX and scaleY are the result's size over the slice's; below 1.0 nothing is drawn. (x, y) is how far
  /// the result reaches beyond the slice's left and top edge in pixels; with -1 for either it is centred.
  void drawImageSize(float scaleX, float scaleY, bool light, int x, int y);

  /// Shows, while transforms are edited, the cursor of turning or of moving.
  void setRotateCursor(bool on);
  /// False when no landmark was selected.
  bool clearSelection();
  /// The position in the aligned frame, in pixels of the slice, below a pixel of the viewport.
  McVec2f mapWindowToImage(int x, int y) const;
  /// Whether a position of the zoomed contents lies strictly in the marker of a landmark of the editable
  /// slice.
  bool insideLandmark(QPoint mouse, QPoint landmark) const;

  /// Between the two the picture is not composed anew, however often it is asked for; the calls nest. A paint
  /// that falls between shows the last picture and is made up for by the last resumeUpdates().
  void suppressUpdates();
  /// Adds to the number of suppressUpdates() that have not been resumed, which never falls below 0.
  void addSuppression(int delta);
  void resumeUpdates();
  /// Asks for a repaint of the viewport.
  void updateViewport();

Q_SIGNALS:
  /// A mouse button went down on the viewport; comes before everything else.
  void click();
  /// The editable slice was moved to a translation in pixels; together = the other slice moved with it.
  void translated(float x, float y, bool together);
  /// The editable slice was turned to an angle in degrees; together = the other slice turned with it.
  void rotated(float angle, bool together);
  /// A new landmark at a pixel of the editable slice.
  void addPoint(QPoint point);
  /// For the editor; never emitted by the view.
  void removePoint(QPoint point);
  /// Landmark number `index` is to be removed from all slices.
  void removePoint(int index);
  /// For the editor; never emitted by the view.
  void movePoints(QPoint shift, int index);
  /// Whether a landmark is selected that may be removed.
  void enableRemove(bool enable);
  /// The wheel was turned with Ctrl by one notch: +1 asks for the next larger zoom, -1 for the next smaller.
  void zoomStepRequested(int direction);

public Q_SLOTS:
  /// Shows the slices larger or smaller, scrolled to their centre. A zoom that is not above zero is ignored.
  void setZoom(float zoom);
  /// The slice that the mouse edits (Shown). While landmarks are edited it alone is shown.
  void setEditableSlice(int slice);
  /// What the mouse edits (EditMode): landmarks show the editable slice alone, transforms show both.
  void setEditMode(int mode);
  /// Landmarks are drawn in the mode kLandmarkAlignMode only.
  void changeAlignMode(int mode);
  /// Composes in the mode of its name from now on, as the three below.
  void redGreen();
  /// fieldSize: edge of the checkerboard's fields in device-independent pixels; below 1 counts as 1.
  void chess(int fieldSize);
  /// As chess(), but only where the checkerboard is shown already.
  void updateChessFieldSize(int fieldSize);
  /// Average, and inverted overlay.
  void avg();
  void invert();
  /// Asks for the removal of the selected landmark; only while at least three exist.
  void removeLandmark();
  /// Makes the next click into the slice add a landmark.
  void addLandmark();

protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void hideEvent(QHideEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
  struct Internals;
  std::unique_ptr<Internals> m;
};

class QxDrawAlignSlices::UpdateSuppression {
public:
  explicit UpdateSuppression(QxDrawAlignSlices* view) : m_view(view)
  {
    if (m_view) m_view->suppressUpdates();
  }
  ~UpdateSuppression()
  {
    if (m_view) m_view->resumeUpdates();
  }
  UpdateSuppression(const UpdateSuppression&) = delete;
  UpdateSuppression& operator=(const UpdateSuppression&) = delete;

private:
  QPointer<QxDrawAlignSlices> m_view;
};
