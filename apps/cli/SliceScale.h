#pragma once

#include "zx/ZxBox3.h"
#include "zxalign/ZxAlignControl.h"

#include <string>

namespace cli {

/// How the slices that an alignment was found on are reduced (or enlarged) against those that it is for: by a
/// whole number, or by one over a whole number.
///
/// Reduced by f, pixel (0, 0) is the mean of the block of the pixels 0 to f - 1. Its centre lies at (f - 1) /
/// 2, and so x of the reduced slice is f x + (f - 1) / 2 of the full one. A transform of the reduced slices
/// becomes the one of the full slices that does the same to the same tissue, exactly.
class SliceScale {
public:
  SliceScale() = default;
  enum class Allowed { Reduction, Both };
  /// From "1/4" or "0.25", and from "4" where that is allowed: the value of --scale. Throws Failure, saying
  /// what is allowed, when it is none of that.
  static SliceScale of(const std::string& text, Allowed allowed);

  /// True when it changes nothing.
  bool isOne() const noexcept { return m_reduction == 1 && m_enlargement == 1; }
  /// Pixels of the full slice along the side of one of the reduced slice; 1 where it is no reduction.
  int reduction() const noexcept { return m_reduction; }
  /// Pixels of the enlarged slice along the side of one of the slices that the alignment is for; else 1.
  int enlargement() const noexcept { return m_enlargement; }
  /// "1/4", "1" or "4".
  std::string text() const;

  /// Of slices whose reduction has this scale, and the other way round: found on `reduced` for `full`, and of
  /// `full` for `reduced`. Only width and height count.
  ZxAlignTransform toFull(const ZxAlignTransform& transform, const ZxDims& reduced, const ZxDims& full) const;
  ZxAlignTransform toReduced(const ZxAlignTransform& transform, const ZxDims& full,
                             const ZxDims& reduced) const;
  /// The pixel of a reduced slice that is nearest to one of the full slice.
  ZxAlignPoint toReduced(const ZxAlignPoint& point) const;

private:
  /// Pixels of the full slice along one of the reduced slice.
  double factor() const noexcept { return static_cast<double>(m_reduction) / m_enlargement; }

  int m_reduction = 1;
  int m_enlargement = 1;
};

} // namespace cli
