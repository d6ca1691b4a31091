#include "AlignmentQuality.h"

#include "AlignmentMatrix.h"

#include <cmath>

float alignmentQuality(const kernels::PairDifference& difference, int channels, std::uint64_t smallerPixels)
{
  if (difference.count == 0) return 0.0f;
  const double perPoint = channels == 4 ? 3.0 : 1.0;
  const double count = static_cast<double>(difference.count) * perPoint;
  const double squares = static_cast<double>(difference.squares);
  double quality = 1.0 - std::sqrt(squares / (count * 65025.0));
  const double coverage = count / (static_cast<double>(smallerPixels) * perPoint);
  if (coverage < 0.5) quality *= std::sqrt(2.0 * coverage);
  return static_cast<float>(quality);
}

kernels::Affine16 inverse16(const SliceXForm& xform, int width, int height,
                            const std::optional<SliceXForm>& placed)
{
  QTransform m;
  xform.getImageMatrix(m, placed, sliceCentre(width), sliceCentre(height));
  return toAffine16(m);
}
