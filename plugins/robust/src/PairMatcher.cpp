#include "PairMatcher.h"

#include "zx/ZxWorkArea.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignSlices.h"

namespace robust {
namespace {

/// One byte a pixel from one bit a pixel; empty without a mask.
std::vector<std::uint8_t> maskOf(const std::vector<std::uint8_t>& bits, std::size_t pixels)
{
  std::vector<std::uint8_t> mask;
  if (bits.empty()) return mask;
  mask.reserve(pixels);
  for (std::size_t i = 0; i < pixels; ++i)
    mask.push_back(static_cast<std::uint8_t>(bits[i / 8] >> (i % 8) & 1));
  return mask;
}

SliceImage imageOf(ZxAlignSlices& module, int slice, const unsigned char* grey, const unsigned char* colour)
{
  const ZxDims& dims = module.getDataLattice()->getDims();
  ZxAlignData& data = module.sliceData();
  const std::size_t pixels = static_cast<std::size_t>(dims.width) * static_cast<std::size_t>(dims.height);
  const bool isColour = data.isColorField();
  return {dims.width, dims.height, isColour ? 4 : 1, isColour ? colour : grey,
          maskOf(data.getMaskBitfield(slice), pixels)};
}

} // namespace

RigidMotion placementOf(const SliceXForm& t)
{
  return {static_cast<double>(t.rotation),
          {static_cast<double>(t.translationX), static_cast<double>(t.translationY)},
          t.flip};
}

SliceXForm transformOf(const RigidMotion& p)
{
  return {static_cast<float>(p.shift.x), static_cast<float>(p.shift.y), static_cast<float>(p.degrees),
          p.mirrored};
}

PairMatcher::PairMatcher(ZxAlignSlices& module, const RobustSettings& settings)
  : m_module(module), m_settings(settings)
{
}

bool PairMatcher::interrupted() { return ZxWorkArea::getTheWorkArea()->wasInterrupted(1); }

const Pyramid& PairMatcher::editable()
{
  if (!m_editable) {
    ZxAlignData& data = m_module.sliceData();
    m_editable.emplace(imageOf(m_module, m_module.getEditableSlice(), m_module.getComputedEditableSlicePtr(),
                               data.getEditableColorPtr()));
  }
  return *m_editable;
}

Limits PairMatcher::limitsFrom(int reference) const
{
  const RigidMotion present = placementOf(m_module.getSlice(reference))
                                  .inverse()
                                  .after(placementOf(m_module.getSlice(m_module.getEditableSlice())));
  Limits limits;
  limits.middle = present;
  limits.largestDegrees = m_module.alignSettings().rotationAllowed ? m_settings.largestAngle : 0.0;
  limits.largestShift = m_settings.largestShift / 100.0;
  limits.upright = !present.mirrored || m_settings.flip;
  limits.mirrored = present.mirrored || m_settings.flip;
  return limits;
}

Finding PairMatcher::match(int reference)
{
  m_module.setReferenceSlice(reference);
  const Pyramid pyramid(imageOf(m_module, reference, m_module.getComputedReferenceSlicePtr(),
                                m_module.sliceData().getReferenceColorPtr()));
  return findMotion(pyramid, editable(), limitsFrom(reference), &PairMatcher::interrupted);
}

} // namespace robust
