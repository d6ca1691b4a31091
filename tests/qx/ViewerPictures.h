#pragma once

#include <QImage>

#include <cstdint>
#include <vector>

/// Grey values of a width x height image that no flip, turn or shift leaves as they are.
inline std::vector<std::uint8_t> unevenPicture(int width, int height)
{
  std::vector<std::uint8_t> grey;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      grey.push_back(static_cast<std::uint8_t>((x * 37 + y * 101 + x * y * 3) % 256));
  return grey;
}

/// Pixels whose colours differ by more than a tolerance in a channel; all of them when the sizes differ.
inline int differingPixels(const QImage& a, const QImage& b, int tolerance)
{
  if (a.size() != b.size()) return a.width() * a.height();
  int count = 0;
  for (int y = 0; y < a.height(); ++y)
    for (int x = 0; x < a.width(); ++x) {
      const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
      if (std::abs(qRed(p) - qRed(q)) > tolerance || std::abs(qGreen(p) - qGreen(q)) > tolerance ||
          std::abs(qBlue(p) - qBlue(q)) > tolerance)
        ++count;
    }
  return count;
}
