#include "SliceResampling.h"

#include "AlignmentMatrix.h"
#include "MostFrequentColor.h"
#include "zx/ZxMessage.h"
#include "zxalign/ZxAlignSlices.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace {

/// About 10 ms of work: often enough to stop at once, seldom enough to cost nothing.
int bandRows(int width)
{
  constexpr int pixelsPerBand = 1 << 20;
  return std::max(1, pixelsPerBand / width);
}

void tellBackground(int k, int channels, const std::vector<float>& background)
{
  const auto value = [&](std::size_t i) { return static_cast<double>(background[i]); };
  if (channels == 1)
    ZxMessage::getTheMsg()->printf("Background color slice %d: %.0f", k, value(0));
  else
    ZxMessage::getTheMsg()->printf("Background color slice %d: %.0f %.0f %.0f %.0f", k, value(0), value(1),
                                   value(2), value(3));
}

} // namespace

bool holdsLabels(const ZxLattice& lattice)
{
  return dynamic_cast<const ZxLabelLattice*>(&lattice) != nullptr;
}

SliceResampling::SliceResampling(const ZxAlignSlices& module, const OutputBorders& borders)
  : m_transforms(module.getSlices().begin(), module.getSlices().end()), m_borders(borders),
    m_width(module.alignSettings().outputWidth), m_height(module.alignSettings().outputHeight),
    m_linear(module.portResampleMethod.getValue() == 1),
    m_mostFrequentBackground(module.alignSettings().mostFrequentBackground),
    m_background(module.alignSettings().background)
{
  std::copy_n(module.alignSettings().backgroundColour, 4, m_backgroundColour.begin());
}

kernels::ResampleFrame SliceResampling::frame(int k, const ZxDims& dims) const
{
  QTransform inverse;
  m_transforms[static_cast<std::size_t>(k)].getInverseMatrix(inverse, sliceCentre(dims.width),
                                                             sliceCentre(dims.height));
  return {dims.width, dims.height, m_width, m_height, m_borders.left, m_borders.top, toAffine(inverse)};
}

std::vector<float> SliceResampling::background(int k, const void* source, const ZxLatticeShape& input,
                                               Tell tell) const
{
  const int channels = input.numDataVars;
  std::vector<float> background(static_cast<std::size_t>(std::max(channels, 4)), 0.0f);
  if (channels == 1)
    background[0] = m_background;
  else
    std::copy(m_backgroundColour.begin(), m_backgroundColour.end(), background.begin());
  if (!m_mostFrequentBackground) return background;

  McDArray<float> colour;
  mostFrequentColor(source, input.dims.slicePixels(), channels, input.primType, colour);
  std::copy(colour.begin(), colour.end(), background.begin());
  if (tell == Tell::Yes && !colour.isEmpty()) tellBackground(k, channels, background);
  return background;
}

bool SliceResampling::image(const kernels::ResampleFrame& frame, const ZxLattice& input, const void* source,
                            const std::vector<float>& background, void* target, const BandDone& done) const
{
  const bool linear = m_linear && !holdsLabels(input);
  const auto interpolation = linear ? kernels::Interpolation::Linear : kernels::Interpolation::Nearest;
  const int band = bandRows(frame.outWidth);
  for (int row = 0; row < frame.outHeight; row += band) {
    const int end = std::min(row + band, frame.outHeight);
    mcVisit(input.primType(), [&](auto zero) {
      using T = decltype(zero);
      kernels::resampleRows(frame, static_cast<const T*>(source), input.getNumDataVars(), interpolation,
                            background.data(), static_cast<T*>(target), row, end);
    });
    if (!done(end)) return false;
  }
  return true;
}

void SliceResampling::labels(const kernels::ResampleFrame& frame, McPrimType type, const void* source,
                             void* target)
{
  mcVisit(type, [&](auto zero) {
    using T = decltype(zero);
    if constexpr (std::is_integral_v<T>)
      kernels::resampleLabelRows(frame, static_cast<const T*>(source), static_cast<T*>(target), 0,
                                 frame.outHeight);
  });
}
