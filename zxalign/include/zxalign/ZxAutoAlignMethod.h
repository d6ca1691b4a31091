#pragma once

#include "mc/McVec2f.h"

class ZxAlignSlices;

/// An automatic method: moves the editable slice of a module towards its reference slice.
///
/// A method reads the two slices from the module and changes the alignment only through the module's
/// whole-stack operations. It is created for one run and deleted by its caller.
class ZxAutoAlignMethod {
public:
  explicit ZxAutoAlignMethod(ZxAlignSlices* module) : m_module(module) {}
  virtual ~ZxAutoAlignMethod() = default;
  ZxAutoAlignMethod(const ZxAutoAlignMethod&) = delete;
  ZxAutoAlignMethod& operator=(const ZxAutoAlignMethod&) = delete;

  /// Runs once on the current pair. 1 when it has changed the alignment, else 0.
  virtual int doLayout() = 0;

protected:
  /// Centre of gravity (pixels) and direction across the principal axis (radians, mirrored in x when flipped
  /// is not 0) of an 8-bit image of the module's slice size, grey values being the weights. An image without
  /// weight has centre (0, 0).
  void computeCenterAndOrientation(const unsigned char* image, McVec2f& center, float& angle,
                                   int flipped) const;

  ZxAlignSlices* m_module; // borrowed
};
