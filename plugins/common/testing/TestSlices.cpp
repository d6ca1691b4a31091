#include "TestSlices.h"

#include "mc/McMath.h"
#include "mc/McRound.h"

#include <QImage>

#include <cmath>
#include <cstdlib>
#include <random>

TestSlice readSlice(const std::string& name)
{
  const char* folder = std::getenv("ZX_TEST_DATA");
  const QImage image(QString::fromStdString((folder ? std::string(folder) : TEST_DATA) + "/" + name));
  if (image.isNull()) return {};
  const QImage grey = image.convertToFormat(QImage::Format_Grayscale8);
  TestSlice slice{grey.width(), grey.height(), {}};
  for (int y = 0; y < slice.height; ++y)
    slice.pixels.insert(slice.pixels.end(), grey.constScanLine(y), grey.constScanLine(y) + slice.width);
  return slice;
}

TestSlice madeSlice(int width, int height, unsigned seed)
{
  std::mt19937 random(seed);
  const auto next = [&random](double limit) { return static_cast<double>(random()) / 4294967296.0 * limit; };
  std::vector<double> sums(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 90.0);
  for (int blob = 0; blob < width * height / 150; ++blob) {
    const double cx = next(width), cy = next(height), size = 1.5 + next(4.0), strength = next(200.0) - 100.0;
    const int reach = mc::truncToInt(3.0 * size);
    for (int y = std::max(0, mc::truncToInt(cy) - reach); y < std::min(height, mc::truncToInt(cy) + reach);
         ++y)
      for (int x = std::max(0, mc::truncToInt(cx) - reach); x < std::min(width, mc::truncToInt(cx) + reach);
           ++x)
        sums[static_cast<std::size_t>(y * width + x)] +=
            strength * mc::exp(-((x - cx) * (x - cx) + (y - cy) * (y - cy)) / (2.0 * size * size));
  }
  TestSlice slice{width, height, {}};
  for (const double v : sums) slice.pixels.push_back(mc::roundHalfEven<unsigned char>(v));
  return slice;
}

TestSlice movedSlice(const TestSlice& slice, double degrees, double dx, double dy, double background)
{
  double sine = 0.0, cosine = 1.0;
  mc::sinCosDegrees(degrees, sine, cosine);
  const auto pixel = [&](int x, int y) {
    return static_cast<double>(slice.pixels[static_cast<std::size_t>(y * slice.width + x)]);
  };
  TestSlice moved{slice.width, slice.height, {}};
  const int cx = slice.width / 2, cy = slice.height / 2;
  for (int row = 0; row < slice.height; ++row)
    for (int column = 0; column < slice.width; ++column) {
      const double vx = column - cx, vy = row - cy;
      const double ux = cx + vx * cosine + vy * sine + dx, uy = cy - vx * sine + vy * cosine + dy;
      const int x = mc::floorToInt(ux), y = mc::floorToInt(uy);
      double value = background;
      if (x >= 0 && y >= 0 && x + 1 < slice.width && y + 1 < slice.height) {
        const double fx = ux - x, fy = uy - y;
        value = (pixel(x, y) * (1 - fx) + pixel(x + 1, y) * fx) * (1 - fy) +
                (pixel(x, y + 1) * (1 - fx) + pixel(x + 1, y + 1) * fx) * fy;
      }
      moved.pixels.push_back(mc::roundHalfEven<unsigned char>(value));
    }
  return moved;
}

double angleBetween(double a, double b) { return std::abs(std::remainder(a - b, 360.0)); }
