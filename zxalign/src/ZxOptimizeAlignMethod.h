#pragma once

#include "LeastSquaresSearch.h"
#include "zxalign/SliceXForm.h"
#include "zxalign/ZxAutoAlignMethod.h"

/// Moves and, where allowed, turns the editable slice so that the quality of the pair becomes as high as
/// LeastSquaresSearch can find.
class ZxOptimizeAlignMethod : public ZxAutoAlignMethod {
public:
  using ZxAutoAlignMethod::ZxAutoAlignMethod;
  static constexpr const char* methodName = "OptimizeAlignMethod";
  static const char* getMethodName() { return methodName; }
  static ZxAutoAlignMethod* createMethod(ZxAlignSlices* module) { return new ZxOptimizeAlignMethod(module); }

  int doLayout() override;

private:
  ImagePair readPair();
  void apply(const SliceXForm& editable);
};
