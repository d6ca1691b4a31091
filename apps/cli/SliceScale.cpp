#include "SliceScale.h"

#include "Failure.h"
#include "SlicePlacement.h"
#include "Text.h"
#include "mc/McRound.h"

#include <cmath>
#include <optional>

namespace cli {
namespace {

constexpr int kLargest = 4096;

/// A whole number from 1 on, or none.
std::optional<int> wholeNumber(double value)
{
  const int whole = mc::roundHalfUp(value);
  const bool is = whole >= 1 && whole <= kLargest && std::abs(value - whole) <= 1e-6 * whole;
  return is ? std::optional(whole) : std::nullopt;
}

std::optional<double> ratioOf(const std::string& text)
{
  const std::size_t slash = text.find('/');
  if (slash == std::string::npos) return parseReal(text);
  const std::optional<double> above = parseReal(text.substr(0, slash));
  const std::optional<double> below = parseReal(text.substr(slash + 1));
  return above && below && *below > 0.0 ? std::optional(*above / *below) : std::nullopt;
}

/// The transform with which slices of the size `to` do what `transform` does to those of the size `from`,
/// where x of the latter is the position factor x + offset of the former.
///
/// With R the turn and c, c' the centres of the two sizes, p -> R(p - c) + t + c becomes, conjugated,
/// p -> R(p - q) + factor t + q about the point q = factor c + offset, which is the centre c' where the sizes
/// divide without rest and seldom elsewhere. About c' it is the same with factor t + d - R d, d = q - c'.
ZxAlignTransform conjugated(const ZxAlignTransform& transform, const ZxDims& from, const ZxDims& to,
                            double factor)
{
  const double offset = (factor - 1.0) / 2.0;
  const SlicePoint d{factor * (from.width / 2) + offset - to.width / 2,
                     factor * (from.height / 2) + offset - to.height / 2};
  // Slices of the size 1 x 1 have their centre at (0, 0): without a shift the map is R alone.
  const SlicePoint turned = SlicePlacement({0.0f, 0.0f, transform.angleDegrees, transform.flip}, 1, 1).map(d);
  ZxAlignTransform result = transform;
  result.tx = static_cast<float>(factor * static_cast<double>(transform.tx) + d.x - turned.x);
  result.ty = static_cast<float>(factor * static_cast<double>(transform.ty) + d.y - turned.y);
  return result;
}

} // namespace

SliceScale SliceScale::of(const std::string& text, Allowed allowed)
{
  SliceScale scale;
  const std::optional<double> ratio = ratioOf(text);
  const std::optional<int> above = ratio ? wholeNumber(*ratio) : std::nullopt;
  const std::optional<int> below = ratio && *ratio > 0.0 ? wholeNumber(1.0 / *ratio) : std::nullopt;
  const std::string largest = std::to_string(kLargest);
  if (allowed == Allowed::Reduction && !below)
    throw Failure("--scale of align only reduces: it takes 1, 1/2, 1/3 and so on to 1/" + largest +
                  ", or the same as 0.5, 0.25, not \"" + text + "\".");
  if (!above && !below)
    throw Failure("--scale takes one over a whole number up to " + largest +
                  " (1/4, 0.25) or such a number, not \"" + text + "\".");
  scale.m_enlargement = above.value_or(1);
  scale.m_reduction = below.value_or(1);
  return scale;
}

std::string SliceScale::text() const
{
  return m_reduction > 1 ? "1/" + std::to_string(m_reduction) : std::to_string(m_enlargement);
}

ZxAlignTransform SliceScale::toFull(const ZxAlignTransform& transform, const ZxDims& reduced,
                                    const ZxDims& full) const
{
  return isOne() ? transform : conjugated(transform, reduced, full, factor());
}

ZxAlignTransform SliceScale::toReduced(const ZxAlignTransform& transform, const ZxDims& full,
                                       const ZxDims& reduced) const
{
  return isOne() ? transform : conjugated(transform, full, reduced, 1.0 / factor());
}

ZxAlignPoint SliceScale::toReduced(const ZxAlignPoint& point) const
{
  const double offset = (factor() - 1.0) / 2.0;
  return {mc::roundHalfUp((point.x - offset) / factor()), mc::roundHalfUp((point.y - offset) / factor())};
}

} // namespace cli
