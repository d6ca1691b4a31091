#pragma once

#include <memory>

class ZxAlignEditorScripting;
class ZxAlignSlices;
struct SliceInfo;

/// What the module asks of its editor window. The window implements it; the module works without one.
class ZxAlignEditor {
public:
  /// Makes the editor window of a module; null in a program that has no main window for it.
  using Factory = std::unique_ptr<ZxAlignEditor> (*)(ZxAlignSlices& module);
  /// Says how editor windows are made; null: not at all.
  static void setFactory(Factory factory) noexcept;
  /// A window for a module, or null.
  static std::unique_ptr<ZxAlignEditor> create(ZxAlignSlices& module);

  virtual ~ZxAlignEditor() = default;

  /// What scripts ask of the window; null for one that answers no scripts.
  virtual ZxAlignEditorScripting* scripting() noexcept { return nullptr; }
  /// Redraws all views of the pair.
  virtual void updateViews() = 0;
  /// Shows another transform of the editable slice.
  virtual void setSliceInfo(const SliceInfo& info) = 0;
  /// Takes up a new input.
  virtual void reinitialise() = 0;
  virtual void setUseMaxIntProjection(bool on) = 0;
  /// Shows and activates the window, or puts it away.
  virtual void setActive(bool active) = 0;
  /// Closes the window after asking what to do with unsaved changes; false when it stays open.
  virtual bool cancel() = 0;
  /// Repaints the slice view at once.
  virtual void repaintSliceView() = 0;

  /// The module that the window edits.
  virtual ZxAlignSlices& module() = 0;
  /// Between them the slice view shows nothing of what changes; the calls nest. The last repaints it.
  virtual void suspendUpdates() = 0;
  virtual void resumeUpdates() = 0;
  /// Takes up the module's present pair: editable and reference slice and the editable side.
  virtual void showPair() = 0;

  // What the menu bar shows as possible.
  virtual void undoEmpty() = 0;
  virtual void undoNotEmpty() = 0;
  virtual void redoEmpty() = 0;
  virtual void redoNotEmpty() = 0;
};
