#pragma once

#include "mc/McTypedData2D.h"
#include "zx/ZxLattice.h"
#include "zxalign/OrthoOrientation.h"
#include "zxalign/QxViewAlignSlicesOrthogonalLineShape.h"

#include <QDockWidget>

class QxAlignSlices;
class QxImageViewer;

/// A dock window that shows the stack perpendicular to its slices: an image whose rows are the slices, in its
/// physical aspect ratio, with a marker at the slice that is being edited.
///
/// The image belongs to the view; the manager writes into it, possibly on another thread, and calls
/// everything here that touches it under its own mutex.
class QxViewAlignSlicesOrthogonal : public QDockWidget {
  Q_OBJECT
public:
  ~QxViewAlignSlicesOrthogonal() override;

  /// False when there was not enough memory for the image.
  bool hasImage() const noexcept { return m_image.data() != nullptr; }
  McTypedData2D& image() noexcept { return m_image; }
  QxImageViewer* viewer() const noexcept { return m_viewer; }
  const QxViewAlignSlicesOrthogonalLineShape& lineShape() const noexcept { return m_lineShape; }
  /// True when neither the user nor a program has closed the dock; independent of the page of the main window
  /// that it is on.
  bool isOpen() const { return !isHidden(); }

  /// Shows what the image holds now: colours, or grey values over the fixed range 0 to 255.
  void updateImageData();
  void setZoom(float zoom);
  /// Length of the marker in percent of the width, 0 to 100; others are ignored.
  void setOrthoViewLineWidth(int percent);
  /// Moves the marker to slice z.
  void updateLineShape(int z);
  /// Blanks the row of slice z.
  void clearLine(int z);
  /// Screen pixels that the slices take at zoom 1, margins included, at most 200.
  int getMinimumZSize() const;
  /// Gives the viewer its size policy and the minimum size that shows the stack at zoom 1, no larger than the
  /// editor's slice view.
  virtual void setDrawViewSize() = 0;
  /// Reduces the minimum size to half of the slice view as it is now, so that a large stack neither covers it
  /// nor makes the window grow.
  void leaveRoomForSliceView();

protected:
  QxViewAlignSlicesOrthogonal(QxAlignSlices* editor, ZxLattice* lattice, OrthoOrientation orientation);

  /// Screen pixels that the image takes along its horizontal axis at zoom 1, margins included, at most
  /// `available` - 10.
  int drawSize(int available) const;
  /// Titles by anatomy and by axes; the title follows the user's preference from now on.
  void setTitles(const QString& anatomical, const QString& axes);
  QxAlignSlices* editor() const noexcept { return m_editor; }

private:
  void showTitle();
  void showColor();
  void showGrey();

  static constexpr int kMargin = 5;
  static constexpr int kSizeReserve = 10;

  QxAlignSlices* m_editor; // borrowed
  McTypedData2D m_image;
  bool m_color;
  float m_scaleZ = 1.0f;   // screen pixels per slice at zoom 1; along the other axis it is 1
  QxImageViewer* m_viewer; // child
  QxViewAlignSlicesOrthogonalLineShape m_lineShape;
  QString m_anatomicalTitle;
  QString m_axesTitle;
  int m_settingsListener;
};
