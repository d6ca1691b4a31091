#include "zxalign/ZxDefaultAlignmentEvaluator.h"

#include "AlignmentQuality.h"
#include "kernels/BlockAverage.h"

#include <algorithm>

namespace {

constexpr int maxLevel = 30; // 2^31 is no int any more; no image has a pixel left long before.

std::uint64_t pixels(int width, int height)
{
  return static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
}

} // namespace

void ZxDefaultAlignmentEvaluator::setImageStackParams(int width, int height, int channels)
{
  m_size0 = m_size1 = {width, height};
  m_channels = channels;
  releaseSubsampled();
}

void ZxDefaultAlignmentEvaluator::setDimensions0(int width, int height) { m_size0 = {width, height}; }

void ZxDefaultAlignmentEvaluator::setDimensions1(int width, int height) { m_size1 = {width, height}; }

void ZxDefaultAlignmentEvaluator::setImage0(unsigned char* image)
{
  m_image0 = image;
  releaseSubsampled();
}

void ZxDefaultAlignmentEvaluator::setImage1(unsigned char* image)
{
  m_image1 = image;
  releaseSubsampled();
}

void ZxDefaultAlignmentEvaluator::releaseSubsampled()
{
  m_level = 0;
  m_reduced0.release();
  m_reduced1.release();
}

void ZxDefaultAlignmentEvaluator::reduce(unsigned char* image, Size size, int factor,
                                         McDArray<unsigned char>& reduced) const
{
  // Sized for the finest reduced level, which is enough for every other.
  const std::size_t bytes = pixels(size.width / 2, size.height / 2) * static_cast<std::size_t>(m_channels);
  if (reduced.size() < bytes) reduced.resize(bytes);
  kernels::blockAverage(image, size.width, size.height, m_channels, factor, reduced.data());
}

void ZxDefaultAlignmentEvaluator::createSubsampledImages(int level)
{
  const int factor = 1 << std::clamp(level, 1, maxLevel);
  reduce(m_image0, m_size0, factor, m_reduced0);
  reduce(m_image1, m_size1, factor, m_reduced1);
  m_reducedSize0 = {m_size0.width / factor, m_size0.height / factor};
  m_reducedSize1 = {m_size1.width / factor, m_size1.height / factor};
  m_level = level;
}

float ZxDefaultAlignmentEvaluator::computeQuality(unsigned char* image0, unsigned char* image1, int width0,
                                                  int height0, int width1, int height1,
                                                  const SliceXForm& xform0, const SliceXForm& xform1) const
{
  const kernels::PairImage a{image0, width0, height0};
  const kernels::PairImage b{image1, width1, height1};
  const kernels::Affine16 ma = inverse16(xform0, width0, height0);
  const kernels::Affine16 mb = inverse16(xform1, width1, height1);
  const int gridWidth = std::max(width0, width1);
  const int gridHeight = std::max(height0, height1);
  const std::uint64_t smaller = pixels(std::min(width0, width1), std::min(height0, height1));
  if (!m_mask0 || !m_mask1)
    return alignmentQuality(kernels::pairDifference(a, ma, b, mb, gridWidth, gridHeight, m_channels),
                            m_channels, smaller);
  const kernels::PairMask maskA{m_mask0, m_size0.width, m_size0.height};
  const kernels::PairMask maskB{m_mask1, m_size1.width, m_size1.height};
  return alignmentQuality(
      kernels::pairDifferenceMasked(a, ma, maskA, b, mb, maskB, gridWidth, gridHeight, m_channels),
      m_channels, smaller);
}

float ZxDefaultAlignmentEvaluator::quality(SliceXForm xform0, SliceXForm xform1, int level)
{
  if (level <= 0)
    return computeQuality(m_image0, m_image1, m_size0.width, m_size0.height, m_size1.width, m_size1.height,
                          xform0, xform1);
  if (level != m_level) createSubsampledImages(level);
  const auto factor = static_cast<float>(1 << std::clamp(level, 1, maxLevel));
  for (SliceXForm* x : {&xform0, &xform1}) {
    x->translationX /= factor;
    x->translationY /= factor;
  }
  return computeQuality(m_reduced0.data(), m_reduced1.data(), m_reducedSize0.width, m_reducedSize0.height,
                        m_reducedSize1.width, m_reducedSize1.height, xform0, xform1);
}
