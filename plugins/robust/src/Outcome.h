#pragma once

#include <string>

class ZxParamBundle;

namespace robust {

/// What the method has to say about one slice.
struct Outcome {
  int reference = 0;       ///< the slice that it was matched with
  double confidence = 0.0; ///< 0 to 1
  std::string reason;      ///< why it was left as it was, a clause; empty when it was aligned
};

/// Keeps the outcome of a slice in the bundle "AlignConfidence" of the input's parameters, where reports and
/// scripts read it: "slice%04d" with "confidence" (real), "reference" (integer) and "reason" (text).
void storeOutcome(ZxParamBundle& parameters, int slice, const Outcome& outcome);

} // namespace robust
