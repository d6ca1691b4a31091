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
  virtual void setEditableSlice(int side) = 0;
  /// The automatic method of the editor, by its number.
  virtual void changeAlignMode(int mode) = 0;
  virtual int getAlignMode() const = 0;
  /// 1: transforms are edited, 3: landmarks, others: nothing is edited with the mouse.
  virtual void chooseEditMode(int mode) = 0;
  virtual int getEditMode() = 0;
  /// 1 red/green, 2 checkerboard, 3 average, 4 inverted overlay. Others are ignored.
  virtual void chooseViewMode(int mode) = 0;

  // Alignment.
  virtual void doAutoAlign() = 0;
  virtual void doAllAutoAlign() = 0;
  virtual void mirror() = 0;
  virtual void reset() = 0;
  virtual void resetAll() = 0;
  virtual void read() = 0;
  virtual void save() = 0;
  /// Toggle what the menu items of these names show.
  virtual void transformAll() = 0;
  virtual void fixReference() = 0;

  // Views.
  virtual void draw() = 0;
  /// Adds to the number of reasons why the slice view is not composed anew; it is while there is none.
  virtual void inhibitRedraw(int delta) = 0;
  virtual void viewZoomIn() = 0;
  virtual void viewZoomOut() = 0;
  virtual void showTransformToolBar(bool visible) = 0;
  virtual void showCoronalView(bool visible) = 0;
  virtual void showSagittalView(bool visible) = 0;
  virtual void orthoViewZoomIn() = 0;
  virtual void orthoViewZoomOut() = 0;
  virtual int getSagittalViewSliceNumber() = 0;
  virtual void setSagittalViewSliceNumber(int x) = 0;
  virtual int getCoronalViewSliceNumber() = 0;
  virtual void setCoronalViewSliceNumber(int y) = 0;
  virtual void setOrthoViewLineWidth(int percent) = 0;
  /// Limits the orthogonal views to so many slices on either side of the current one; below 0 shows all.
  virtual void setOrthoViewZWindow(int halfWidth) = 0;
  virtual void setOrthoViewAutoUpdate(bool on) = 0;
  virtual void updateOrthogonalViews() = 0;
  /// Edge length of the checkerboard's tiles in screen pixels; positive.
  virtual void setChessFieldSize(int size) = 0;
  /// Writes a picture of the window without its toolbars, in the format that the file's name ends in. Empty,
  /// or one sentence that names the file and what is wrong.
  virtual std::string snapshot(const std::string& fileName) = 0;
};
