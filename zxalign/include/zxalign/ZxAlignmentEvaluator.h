#pragma once

#include "mc/McHandable.h"
#include "zxalign/SliceXForm.h"

/// Tells how well two slices match under two transforms: 1 for equal grey values in the overlap, falling
/// towards 0 with the root-mean-square difference, and lowered when the overlap is small.
///
/// For methods that compare slices other than the module's current pair, or with masks. Images and masks are
/// borrowed: the caller keeps them alive while the evaluator is used.
class ZxAlignmentEvaluator : public McHandable {
public:
  ~ZxAlignmentEvaluator() override = default;

  /// Size in pixels of both images and their channels: 1 for grey, 4 for colour of four bytes a pixel, of
  /// which the first three count. Discards reduced images.
  virtual void setImageStackParams(int width, int height, int channels) = 0;
  /// Row-major images of that size, rows without padding. Discards reduced images.
  virtual void setImage0(unsigned char* image) = 0;
  virtual void setImage1(unsigned char* image) = 0;
  /// One byte a pixel, not zero where it counts; null for none. Masks have an effect only when both are set.
  virtual void setMask0(unsigned char* mask) = 0;
  virtual void setMask1(unsigned char* mask) = 0;
  /// The quality at full resolution (level 0) or on images reduced by 2^level.
  virtual float quality(SliceXForm xform0, SliceXForm xform1, int level) = 0;
  /// Releases the reduced images.
  virtual void releaseSubsampled() {}
};
