#pragma once

#include "mc/McBox2i.h"
#include "mc/McHandable.h"
#include "zx/ZxLattice.h"
#include "zx/ZxMutex.h"
#include "zxalign/OrthoColumns.h"
#include "zxalign/OrthoOrientation.h"

#include <atomic>
#include <memory>
#include <vector>

class QTransform;
class QxAlignSlices;
class QxViewAlignSlicesCoronal;
class QxViewAlignSlicesOrthogonal;
class QxViewAlignSlicesOrthogonalCommonToolBar;
class QxViewAlignSlicesSagittal;
class UpdateOrthogonalViewsThread;

/// Shows the stack perpendicular to its slices, each slice under its present transform: cuts, or
/// maximum-intensity projections, along x (sagittal) and y (coronal). Owns the two views and their toolbar.
///
/// Each row of a view's image (called a column, as the slices stand upright in the stack) comes from one
/// slice. The manager knows which columns are stale and computes them: at once, or on a thread of its own
/// where the Tcl variable ZxAlign_useThreads holds an integer other than 0.
///
/// Used by the GUI thread, except for updateLine() and what it calls. One mutex guards what both threads
/// touch: column states, up-to-date boxes, the transforms that go with them, and the images of the views. It
/// is held for moments only; the module's data mutex is held while a column is computed, and is never asked
/// for under the other one. A column that was changed while it was computed is not stored.
class QxOrthoViewManager : public McHandable {
public:
  /// The editor and the lattice outlive the manager, or are replaced with init() before it is used again.
  QxOrthoViewManager(QxAlignSlices* editor, ZxLattice* lattice, bool useMaxIntProj);
  ~QxOrthoViewManager() override;

  /// Takes up other data: everything back to its default except zoom and line width; views that exist are
  /// made anew. A null lattice is one without slices.
  void init(ZxLattice* lattice, bool useMaxIntProj);

  /// Create a view, docked into the editor window, or delete it. The toolbar comes with the first view and
  /// goes with the last.
  void showSagittalView(bool show);
  void showCoronalView(bool show);
  /// The views, or null.
  QxViewAlignSlicesSagittal* getSagittalView() const;
  QxViewAlignSlicesCoronal* getCoronalView() const;
  /// The toolbar, or null.
  QxViewAlignSlicesOrthogonalCommonToolBar* getToolBar() const;

  /// Positions of the cuts and the slice that the marker shows. A position outside of the stack is refused
  /// with a message.
  void setSliceNumberSagittal(int x);
  void setSliceNumberCoronal(int y);
  void setSliceNumberAxial(int z);
  int getSliceNumberSagittal() const noexcept { return m_cutX; }
  int getSliceNumberCoronal() const noexcept { return m_cutY; }
  int getSliceNumberAxial() const noexcept { return m_axial; }

  /// Limits of the slices that are shown, both included. A limit outside of the stack or on the wrong side of
  /// the other one is refused with a message.
  void setVisibleRangeZMin(int z);
  void setVisibleRangeZMax(int z);
  int getVisibleRangeZMin() const noexcept { return m_zMin; }
  int getVisibleRangeZMax() const noexcept { return m_zMax; }
  /// The z window: while it is on, only so many slices on both sides of the axial one are shown.
  void setShowZRange(bool show);
  void setZRange(int halfWidth);
  bool getShowZRange() const noexcept { return m_showZRange; }
  int getZRange() const noexcept { return m_zHalfWidth; }
  /// Sets the visible range that follows from z window and axial slice.
  void updateZRange();
  /// Clamps a range of slices to the visible one; from > to when nothing is left.
  void getRangeToUpdate(int& from, int& to) const;

  /// Projections along x and y (true) or cuts.
  void setUseMaxIntProj(bool on);
  bool getUseMaxIntProj() const noexcept { return m_projects; }
  /// Length of the marker lines in both views in percent of the width, 0 to 100.
  void setOrthoViewLineWidth(int percent);
  /// Views want the size of the stack. What the window does not have they do without: it must not grow beyond
  /// the screen, and the slice view keeps half of its width. To be called when anything else wants room, too.
  void keepInWindow();
  /// The next larger or smaller zoom of both views: 1, 2, 3, 4, 6, 9, 14 ... and halves below 1.
  void zoomIn();
  void zoomOut();
  float getZoom() const noexcept { return m_zoom; }

  /// To be called after every change of the transforms of the slices from ... to: moved by (dx, dy) pixels
  /// (rounded), turned, mirrored; with no flag set a change of any kind.
  void updateView(int from, int to, OrthoOrientation orientation, int dx, int dy, bool translated,
                  bool rotated, bool mirrored);
  /// After a change of any kind of all slices.
  void updateView();

  // Steps of it. Where a range of slices is taken, from and to are included and lie inside of the stack.

  /// Mark columns to be recomputed or to be cleared; with "Auto update" on this is done at once.
  void updateSlices(int from, int to, OrthoOrientation orientation);
  void clearSlices(int from, int to, OrthoOrientation orientation);
  /// Blanks columns now and shows it.
  void clearLineImmediate(int from, int to, OrthoOrientation orientation);
  /// Takes up a move by whole pixels. Projections are shifted; only what the move uncovers is recomputed.
  void translateSlices(int from, int to, int dx, int dy, OrthoOrientation orientation);
  /// Brings all stale columns up to date: with the thread, or here with a progress display, which can be
  /// stopped; what is left then stays stale for the next time.
  void updateLines();
  /// Brings the columns of one slice up to date; false when there was nothing to do. Any thread.
  bool updateLine(int z);
  /// Computes the columns of a slice that are marked for it, as cuts or as projections; nothing in the other
  /// mode. Any thread, without the data mutex.
  void updateLineCrossSection(int z);
  void updateLineMaximumIntensityProjection(int z);
  /// Blanks the columns of a slice that are marked for it.
  void clearLine(int z);
  /// Makes the views show their present images.
  void updateImageData();
  /// True when the columns are to be computed by the thread, which exists then.
  bool useThread();
  bool hasThread() const noexcept { return m_thread != nullptr; }
  /// Waits until the thread, if there is one, has nothing to do. False when that takes longer.
  bool waitForUpdate(unsigned long milliseconds);

  // Up-to-date boxes: in projection mode the part of each slice's columns that is valid, rows of the sagittal
  // one as y range and columns of the coronal one as x range.
  /// Gives every slice a box in which nothing is valid.
  void createUpToDateBoxes();
  /// Takes the boxes away; nothing counts as valid then.
  void deleteUpToDateBoxes();
  /// Makes nothing of these slices' columns valid in a view: their y ranges, x ranges, or both.
  void resetUpToDateBoxes(int from, int to, OrthoOrientation orientation);
  /// The box of a slice; all -1 without boxes.
  McBox2i getUpToDateBox(int z) const;
  /// The voxels of slice z that a line of the aligned frame can touch; false when it misses the slice.
  bool getIntersectionBoxOfLineWithImage(int z, OrthoCoordinate coordinate, int position, McBox2i& box) const;

private:
  struct Job;
  using View = QxViewAlignSlicesOrthogonal;

  // QxOrthoViewManager.cpp: views, limits, modes.
  void adoptLattice(ZxLattice* lattice);
  void createView(OrthoOrientation orientation);
  void placeView(View& created);
  void deleteView(OrthoOrientation orientation);
  void createToolBar();
  void showCutSlider(OrthoOrientation orientation, bool show);
  View* view(OrthoOrientation orientation) const;
  bool hasView() const;
  int widthOf(OrthoOrientation orientation) const noexcept;
  void setVisibleRange(int min, int max);
  bool changeZMin(int z);
  bool changeZMax(int z);
  void setZoom(float zoom);
  void showZoom();
  void deleteThread();

  // QxOrthoViewManagerLines.cpp: what is stale, and its computation.
  void mark(int from, int to, OrthoOrientation orientation, OrthoColumns::State state);
  void blankColumn(OrthoOrientation orientation, int z); // m_mutex is held
  /// Whether columns are further off than a rounding: moves of less than half a pixel have added up.
  bool areOff(int from, int to, OrthoOrientation orientation);
  /// Notes a move of a column's pixels; false when it then stands for another translation than the slice's.
  bool countMove(OrthoOrientation moved, int z, int distance);
  void translateProjections(int from, int to, int distance, OrthoOrientation moved,
                            OrthoOrientation selection);
  void takeTransforms(int from, int to); // m_mutex is held
  void updateLinesIfAutomatic();
  void updateLinesHere();
  float progressAt(int z) const;
  // The data mutex is held by who calls these.
  bool isInputPresent() const;
  bool beginJob(int z, OrthoOrientation orientation, bool projects, Job& job);
  void commitJob(const Job& job);
  void computeCut(Job& job);
  void computeProjection(Job& job, const void* slice);
  const void* readSlice(int z);

  QxAlignSlices* m_editor;        // borrowed
  ZxLattice* m_lattice = nullptr; // borrowed; this and its shape change only while the thread rests
  ZxLatticeShape m_shape;
  int m_updateFrequency;
  int m_axial = 0;
  int m_cutX = 0; // the cuts are written under m_mutex
  int m_cutY = 0;
  int m_zMin = 0;
  int m_zMax = -1;
  bool m_showZRange = false;
  int m_zHalfWidth = 10;
  float m_zoom = 1.0f;
  bool m_projects = false; // written under m_mutex
  int m_lineWidth = 50;
  bool m_updating = false;
  bool m_updateAgain = false;
  std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
  std::atomic<int> m_unreadableSlice{-1};
  std::vector<unsigned char> m_voxels; // of a slice that is not in memory; guarded by the data mutex

  mutable ZxMutex m_mutex;
  OrthoColumns m_columns; // guarded by m_mutex
  bool m_outdated[2] = {false,
                        false}; // images, sagittal and coronal, that a view does not show yet; likewise
  // Children of the editor window that are deleted here. The pointers are written, and the images used, under
  // m_mutex.
  QxViewAlignSlicesSagittal* m_sagittalView = nullptr;
  QxViewAlignSlicesCoronal* m_coronalView = nullptr;
  QxViewAlignSlicesOrthogonalCommonToolBar* m_toolBar = nullptr;
  std::unique_ptr<UpdateOrthogonalViewsThread> m_thread;
};
