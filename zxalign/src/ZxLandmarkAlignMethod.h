#pragma once

#include "mc/McDArray.h"
#include "zxalign/ZxAutoAlignMethod.h"

#include <QPoint>

struct SliceInfo;

/// Brings the landmarks of the editable slice onto those of the reference slice: turned by the rigid fit of
/// both lists, shifted so that their centres coincide.
class ZxLandmarkAlignMethod : public ZxAutoAlignMethod {
public:
  using ZxAutoAlignMethod::ZxAutoAlignMethod;
  static constexpr const char* methodName = "LandmarkAlignMethod";
  static const char* getMethodName() { return methodName; }
  static ZxAutoAlignMethod* createMethod(ZxAlignSlices* module) { return new ZxLandmarkAlignMethod(module); }

  /// Without landmarks on one of the slices it says so, leaves the alignment as it is and returns 0.
  int doLayout() override;

private:
  bool haveLandmarks() const;
  /// The angle in degrees between the landmarks of both slices as displayed, before their rotation.
  double fittedAngle() const;
  static void computeCenter(const McDArray<QPoint>& landmarks, McVec2f& center);

  const SliceInfo& reference() const;
  const SliceInfo& editable() const;
};
