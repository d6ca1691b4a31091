#pragma once

#include "mc/McDArray.h"
#include "zxalign/SliceXForm.h"

#include <QPoint>

/// What the module keeps of one slice: its transform and its landmarks.
///
/// All slices have the same number of landmarks, and landmark k of one marks the same structure as landmark k
/// of every other. Positions are pixels of the unflipped slice image.
struct SliceInfo : SliceXForm {
  McDArray<QPoint> landmarks;

  using SliceXForm::SliceXForm;
  SliceInfo() = default;
  SliceInfo(const SliceXForm& xform) : SliceXForm(xform) {}

  /// Replaces the transform and keeps the landmarks.
  void setXForm(const SliceXForm& xform) { SliceXForm::operator=(xform); }

  /// The landmarks as they appear in the displayed slice: where it is flipped, x becomes width - 1 - x. That
  /// mirrors pixels, whereas the transform mirrors about the centre: one pixel apart for even widths.
  void getLandmarks(McDArray<QPoint>& out, int width) const;

  /// Equal numbers, flips and landmarks; a record that holds NaN equals nothing.
  bool operator==(const SliceInfo& other) const;
};
