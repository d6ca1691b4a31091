#pragma once

#include "mc/McDArray.h"
#include "zxalign/SliceInfo.h"

#include <QMainWindow>

class ZxAlignSlices;

/// The editor window of one module: a page of the main window's centre.
class QxAlignSlices : public QMainWindow {
  Q_OBJECT
public:
  explicit QxAlignSlices(ZxAlignSlices* module);
  ~QxAlignSlices() override;

  /// The module that the window edits.
  ZxAlignSlices& module() const noexcept { return *m_module; }
  /// The module's slice records, one per slice.
  McDArray<SliceInfo>& getTransform();
  /// Size of the slice view in pixels.
  int getDrawAreaWidth() const;
  int getDrawAreaHeight() const;

private:
  ZxAlignSlices* m_module; // borrowed
};
