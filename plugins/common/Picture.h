#pragma once

#include <vector>

namespace spectral {

/// A grey picture, row-major, and where the centre of the slice lies in it.
///
/// Positions count from the centre of the first pixel, x to the right, y downwards. A reduced picture keeps
/// the centre of the slice it was made from, between pixels where need be, so that results of all reductions
/// agree.
struct Picture {
  int width = 0;
  int height = 0;
  double centreX = 0.0;
  double centreY = 0.0;
  double pixelSize = 1.0; ///< in pixels of the slice
  std::vector<float> values;
};

/// A slice as a picture, its centre (width / 2, height / 2) with integer halves. mirrored turns it over in x
/// about that centre, as the transform of a flipped slice does.
Picture pictureOf(const unsigned char* slice, int width, int height, bool mirrored);

/// The picture with its longer side at most maxSide pixels, reduced by the mean of whole blocks.
Picture reduced(const Picture& picture, int maxSide);

} // namespace spectral
