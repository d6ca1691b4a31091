#pragma once

#include "zxalign/ZxAutoAlignMethod.h"

/// Aligns the editable slice by phase correlation: turn over the full circle and displacement up to a third
/// of the slice, without a start near the match. Slices that show the same structures in other grey values
/// match, too; those that share little do not, and are left as they are.
class PhaseCorrelationAlignMethod : public ZxAutoAlignMethod {
public:
  using ZxAutoAlignMethod::ZxAutoAlignMethod;
  static const char* const methodName;
  static const char* getMethodName() { return methodName; }
  static ZxAutoAlignMethod* createMethod(ZxAlignSlices* module);

  /// 0, after a message, when no peak stands out.
  int doLayout() override;
};
