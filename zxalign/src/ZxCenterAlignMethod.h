#pragma once

#include "zxalign/SliceXForm.h"
#include "zxalign/ZxAutoAlignMethod.h"

/// Brings the grey-value centres of gravity of both slices together and, where rotation is allowed, makes
/// their principal axes parallel.
///
/// An axis has two directions: of the two turns, half a circle apart, the one with the higher quality is
/// taken, the first one where both are equal.
class ZxCenterAlignMethod : public ZxAutoAlignMethod {
public:
  using ZxAutoAlignMethod::ZxAutoAlignMethod;
  static constexpr const char* methodName = "CenterAlignMethod";
  static const char* getMethodName() { return methodName; }
  static ZxAutoAlignMethod* createMethod(ZxAlignSlices* module) { return new ZxCenterAlignMethod(module); }

  int doLayout() override;

private:
  void measure();
  float bestTurn() const;
  SliceXForm turned(float degrees) const;
  McVec2f wayToReference(const SliceXForm& editable) const;

  const SliceXForm& reference() const;
  const SliceXForm& editable() const;

  McVec2f m_referenceCentre, m_editableCentre;     // pixels of the slices
  float m_referenceAngle = 0, m_editableAngle = 0; // of the axes, radians, as displayed before rotation
};
