#pragma once

#include "zxalign/ZxAutoAlignMethod.h"

namespace robust {
class PairMatcher;
struct Outcome;
struct RigidMotion;
struct RobustSettings;
} // namespace robust

/// Aligns the editable slice wherever it lies, to a fraction of a pixel, and says how sure it is.
///
/// A pair whose confidence is below the limit is left as it was. With several neighbours the slice is matched
/// with as many slices before it, and all slices of the run are solved for at once; those that were aligned
/// before move a little then.
class RobustAlignMethod : public ZxAutoAlignMethod {
public:
  using ZxAutoAlignMethod::ZxAutoAlignMethod;
  static const char* const methodName;
  static const char* getMethodName() { return methodName; }
  static ZxAutoAlignMethod* createMethod(ZxAlignSlices* module);

  /// 0, after a message, when the pair was left as it was.
  int doLayout() override;

private:
  int alignPair(robust::PairMatcher& matcher, const robust::RobustSettings& settings);
  int alignInChain(robust::PairMatcher& matcher, const robust::RobustSettings& settings);
  /// Moves the editable slice to a placement, and the slices beyond it with it.
  void place(const robust::RigidMotion& placement);
  /// Stores the outcome, and says so when the pair was left.
  void report(const robust::Outcome& outcome);
};
