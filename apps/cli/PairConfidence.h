#pragma once

#include <optional>
#include <string>

class ZxParamBundle;

namespace cli {

/// What a method that judges itself has said about a slice.
struct PairConfidence {
  int reference = 0;       ///< the slice that it was matched with
  double confidence = 0.0; ///< how likely the match is right, 0 to 1
  std::string reason;      ///< why the slice was left as it was; empty when it was aligned
};

/// Reads it from the parameters of a volume; none for slices that nothing was said about.
std::optional<PairConfidence> confidenceOf(const ZxParamBundle& parameters, int slice);

/// Hands what was said about all slices on to the parameters of another volume of the same slices.
void passConfidence(const ZxParamBundle& from, ZxParamBundle& to);

/// Forgets what was said about all slices.
void forgetConfidence(ZxParamBundle& parameters);

/// "confidence of slice 8: 0.97", or "confidence of slice 8: 0.12, another position fits nearly as well".
/// With several neighbours it is that of the slice against all of them.
std::string describe(int slice, const PairConfidence& confidence);

} // namespace cli
