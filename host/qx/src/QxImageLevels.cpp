#include "QxImageLevels.h"

#include <algorithm>
#include <cstdint>

namespace {

template <int kChannels>
void halveRow(const std::uint8_t* upper, const std::uint8_t* lower, int width, std::uint8_t* out)
{
  for (int x = 0; x < (width + 1) / 2; ++x) {
    const int left = 2 * x * kChannels;
    const int right = std::min(2 * x + 1, width - 1) * kChannels;
    for (int c = 0; c < kChannels; ++c)
      out[x * kChannels + c] = static_cast<std::uint8_t>(
          (upper[left + c] + upper[right + c] + lower[left + c] + lower[right + c] + 2) / 4);
  }
}

QImage halved(const QImage& image)
{
  QImage half((image.width() + 1) / 2, (image.height() + 1) / 2, image.format());
  for (int y = 0; y < half.height(); ++y) {
    const std::uint8_t* upper = image.constScanLine(2 * y);
    const std::uint8_t* lower = image.constScanLine(std::min(2 * y + 1, image.height() - 1));
    if (image.format() == QImage::Format_Grayscale8)
      halveRow<1>(upper, lower, image.width(), half.scanLine(y));
    else
      halveRow<4>(upper, lower, image.width(), half.scanLine(y));
  }
  return half;
}

} // namespace

void QxImageLevels::setImage(QImage image)
{
  m_levels.clear();
  if (!image.isNull()) m_levels.push_back(std::move(image));
}

const QImage& QxImageLevels::level(int level)
{
  while (static_cast<int>(m_levels.size()) <= level) m_levels.push_back(halved(m_levels.back()));
  return m_levels[static_cast<std::size_t>(level)];
}

int QxImageLevels::levelFor(double devicePixelsPerPixel) const
{
  if (m_levels.empty()) return 0;
  int level = 0;
  int edge = std::max(m_levels[0].width(), m_levels[0].height());
  for (; devicePixelsPerPixel <= 0.5 && edge > 1; devicePixelsPerPixel *= 2.0) {
    ++level;
    edge = (edge + 1) / 2;
  }
  return level;
}
