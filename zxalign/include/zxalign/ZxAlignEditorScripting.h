#pragma once

#include <QPoint>

#include <string>

/// What scripts ask of an open editor window: what a person does in it with mouse and keyboard, with the same
/// effect on module, menus, toolbars and views. Slices are counted from 0; a side is -1 for the lower slice
/// of the pair and +1 for the upper one.
class ZxAlignEditorScripting {
public:
  virtual ~ZxAlignEditorScripting() = default;

  // Pair and modes.
  /// Goes to a slice; one outside of the stack is refused.
  virtual void sliceChange(float slice) = 0;
  /// Chooses the slice of the pair that is edited.
  virtual void setEditableSlice(int side) = 0;
  /// The automatic method of the editor, by its number.
  virtual void changeAlignMode(int mode) = 0;
  /// Its number.
  virtual int getAlignMode() const = 0;
  /// 1: transforms are edited, 3: landmarks, others: nothing is edited with the mouse.
  virtual void chooseEditMode(int mode) = 0;
  /// As chooseEditMode().
  virtual int getEditMode() = 0;
  /// 1 red/green, 2 checkerboard, 3 average, 4 inverted overlay. Others are ignored.
  virtual void chooseViewMode(int mode) = 0;

  // Alignment. Refused while slices are being aligned; each change is one undo state.
  /// Aligns the current pair, and all slices outwards from the reference.
  virtual void doAutoAlign() = 0;
  virtual void doAllAutoAlign() = 0;
  /// Flips the current slice.
  virtual void mirror() = 0;
  /// Takes away the transform of the current slice, and those of all.
  virtual void reset() = 0;
  virtual void resetAll() = 0;
  /// Read the alignment from the input's parameters, and store it there.
  virtual void read() = 0;
  virtual void save() = 0;

  // Views.
  /// Asks for a repaint of the slice view.
  virtual void draw() = 0;
  /// Takes up a change of the editable slice, and of those that follow it, in toolbars and orthogonal views.
  virtual void showEdit() = 0;
  /// Adds to the number of reasons why the slice view is not composed anew; it is while there is none.
  virtual void inhibitRedraw(int delta) = 0;
  /// One step of the slice view's zoom.
  virtual void viewZoomIn() = 0;
  virtual void viewZoomOut() = 0;
  /// Show or hide the toolbar of numbers, the panel with the quality of all pairs, and the orthogonal views.
  virtual void showTransformToolBar(bool visible) = 0;
  virtual void showPairQuality(bool visible) = 0;
  virtual void showCoronalView(bool visible) = 0;
  virtual void showSagittalView(bool visible) = 0;
  /// One step of the zoom of both orthogonal views.
  virtual void orthoViewZoomIn() = 0;
  virtual void orthoViewZoomOut() = 0;
  /// Where the orthogonal views cut: column x and row y of the slices, in pixels.
  virtual int getSagittalViewSliceNumber() = 0;
  virtual void setSagittalViewSliceNumber(int x) = 0;
  virtual int getCoronalViewSliceNumber() = 0;
  virtual void setCoronalViewSliceNumber(int y) = 0;
  /// Width of the orthogonal views' lines.
  virtual void setOrthoViewLineWidth(int percent) = 0;
  /// Limits the orthogonal views to so many slices on either side of the current one; below 0 shows all.
  virtual void setOrthoViewZWindow(int halfWidth) = 0;
  /// Whether the orthogonal views follow every change.
  virtual void setOrthoViewAutoUpdate(bool on) = 0;
  /// Computes both orthogonal views anew.
  virtual void updateOrthogonalViews() = 0;
  /// Edge length of the checkerboard's tiles in screen pixels; positive.
  virtual void setChessFieldSize(int size) = 0;
  /// Writes a picture of the window without its toolbars, in the format that the file's name ends in. Empty,
  /// or one sentence that names the file and what is wrong.
  virtual std::string snapshot(const std::string& fileName) = 0;
};
