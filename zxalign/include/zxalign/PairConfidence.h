#pragma once

#include "mc/McDArray.h"
#include "zx/ZxBox3.h"
#include "zxalign/SliceInfo.h"

#include <array>
#include <optional>
#include <string>

class ZxParamBundle;

/// What an automatic method has said of a slice when it matched it last with another one.
struct PairConfidence {
  /// Where the corners (0, 0), (width, 0) and (0, height) of the slice lie, in pixels of the other one: x, y
  /// of each.
  using Corners = std::array<double, 6>;

  double value = 0.0;             ///< how sure it was, 0 to 1
  int reference = -1;             ///< the slice that it was matched with
  std::string reason;             ///< why it was left as it was, a clause; empty when it was aligned
  std::optional<Corners> corners; ///< as the pair lay then; none where nobody has noted it

  static Corners cornersOf(const SliceXForm& slice, const SliceXForm& reference, const ZxDims& dims);
  /// Whether the two slices still lie to each other as they did then, but for a rounding; true where that is
  /// not known.
  bool isOf(const SliceXForm& slice, const SliceXForm& reference, const ZxDims& dims) const;
  bool operator==(const PairConfidence&) const = default;
};

/// The confidences in the parameters of an input: bundle "AlignConfidence", in it "slice%04d" with
/// "confidence" (real), "reference" (integer) and "reason" (text), as methods leave them, and "corners" (six
/// reals), which is noted here when the method is done. A pair that is moved by hand afterwards is thus told
/// from one that lies as the method has left it, also when the move is taken back.
class PairConfidences {
public:
  /// The parameters outlive this object; there may be none.
  PairConfidences(ZxParamBundle* parameters, const ZxDims& dims);

  bool isEmpty() const noexcept { return !m_all; }
  /// What was said of a slice; none where nothing was, or nothing that can be understood.
  std::optional<PairConfidence> find(int slice) const;
  /// Takes the slices to lie as what was said of them is about, where that is not noted yet.
  void adopt(const McDArray<SliceInfo>& slices);
  /// A method has worked on a slice, of which this was said before, and laid the slices as they are now.
  /// Where it has said something itself, that is of the slices as they are now, as is what was right before.
  void follow(int slice, const std::optional<PairConfidence>& before, const McDArray<SliceInfo>& slicesBefore,
              const McDArray<SliceInfo>& slices);

private:
  void note(int slice, int reference, const McDArray<SliceInfo>& slices);

  ZxParamBundle* m_all = nullptr; // borrowed
  ZxDims m_dims;
};
