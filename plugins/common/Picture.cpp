#include "Picture.h"

#include <algorithm>
#include <cstddef>

namespace spectral {

Picture pictureOf(const unsigned char* slice, int width, int height, bool mirrored)
{
  Picture p{width, height, static_cast<double>(width / 2), static_cast<double>(height / 2), 1.0, {}};
  const std::size_t n = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  p.values.assign(slice, slice + n);
  if (!mirrored) return p;
  for (std::size_t row = 0; row < n; row += static_cast<std::size_t>(width))
    std::reverse(p.values.begin() + static_cast<std::ptrdiff_t>(row),
                 p.values.begin() + static_cast<std::ptrdiff_t>(row) + width);
  p.centreX = width - 1 - p.centreX;
  return p;
}

Picture reduced(const Picture& picture, int maxSide)
{
  const int factor = (std::max(picture.width, picture.height) + maxSide - 1) / maxSide;
  if (factor <= 1) return picture;
  Picture r;
  r.width = picture.width / factor;
  r.height = picture.height / factor;
  const double half = (factor - 1) / 2.0;
  r.centreX = (picture.centreX - half) / factor;
  r.centreY = (picture.centreY - half) / factor;
  r.pixelSize = picture.pixelSize * factor;
  r.values.assign(static_cast<std::size_t>(r.width) * static_cast<std::size_t>(r.height), 0.0f);
  const float share = 1.0f / (static_cast<float>(factor) * static_cast<float>(factor));
  for (int y = 0; y < r.height * factor; ++y) {
    const float* in = picture.values.data() + static_cast<std::ptrdiff_t>(y) * picture.width;
    float* out = r.values.data() + static_cast<std::ptrdiff_t>(y / factor) * r.width;
    for (int x = 0; x < r.width * factor; ++x) out[x / factor] += in[x] * share;
  }
  return r;
}

} // namespace spectral
