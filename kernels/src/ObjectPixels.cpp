#include "kernels/ObjectPixels.h"

#include "kernels/Parallel.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <vector>

namespace kernels {

namespace {

constexpr int kEdgeReach = 3;  // of the square around a pixel of a ray
constexpr int kEdgePixels = 5; // an edge has more object pixels than that

const std::uint8_t* pixelAt(const ObjectImage& image, std::int64_t x, std::int64_t y)
{
  return image.pixels + (y * image.width + x) * image.channels;
}

template <int Channels>
int greyOf(const std::uint8_t* p)
{
  return Channels == 4 ? (p[0] + p[1] + p[2]) / 3 : p[0];
}

// The first of begin, begin + step, ... that is not below limit.
std::int64_t firstFrom(std::int64_t begin, std::int64_t step, std::int64_t limit)
{
  return begin >= limit ? begin : begin + (limit - begin + step - 1) / step * step;
}

// Object pixels of one square's rows, summed per column with the stride of the square: entry x counts the
// columns x, x - step, x - 2 step, ... The count of a square is then a difference of two entries. Column 0
// never counts. Below 2^32, since no side exceeds 65,535.
template <int Channels>
void sumColumns(const ObjectImage& image, const ObjectTest& test, const ObjectSquare& square, std::int64_t y,
                std::vector<std::uint32_t>& sums)
{
  std::fill(sums.begin(), sums.end(), 0U);
  const std::int64_t last = std::min<std::int64_t>(y + square.half, image.height - 1);
  for (std::int64_t row = firstFrom(y - square.half, square.step, 1); row <= last; row += square.step) {
    const std::uint8_t* p = pixelAt(image, 0, row);
    for (std::size_t x = 0; x < sums.size(); ++x, p += Channels)
      sums[x] += test(greyOf<Channels>(p)) ? 1U : 0U;
  }
  sums[0] = 0;
  const auto stride = static_cast<std::size_t>(square.step);
  for (std::size_t x = stride; x < sums.size(); ++x) sums[x] += sums[x - stride];
}

// Object pixels of the square around column x.
std::int64_t countSquare(const std::vector<std::uint32_t>& sums, const ObjectSquare& square, std::int64_t x)
{
  const std::int64_t step = square.step;
  const std::int64_t first = firstFrom(x - square.half, step, 0);
  const std::int64_t limit =
      std::min<std::int64_t>(x + square.half, static_cast<std::int64_t>(sums.size()) - 1);
  if (first > limit) return 0;
  const std::int64_t last = first + (limit - first) / step * step;
  const std::int64_t before = first - step;
  const std::int64_t all = sums[static_cast<std::size_t>(last)];
  return before < 0 ? all : all - sums[static_cast<std::size_t>(before)];
}

template <int Channels>
ObjectPoints pointsOfRow(const ObjectImage& image, const ObjectTest& test, const ObjectSquare& square,
                         std::int64_t y, std::vector<std::uint32_t>& sums)
{
  sumColumns<Channels>(image, test, square, y, sums);
  ObjectPoints points;
  for (std::int64_t x = 0; x < image.width; x += square.raster)
    if (countSquare(sums, square, x) > square.limit) points = points + ObjectPoints{1, x, y};
  return points;
}

template <int Channels>
ObjectPoints pointsOfImage(const ObjectImage& image, const ObjectTest& test, const ObjectSquare& square)
{
  const int rows = (image.height - 1) / square.raster + 1;
  return sumRows<ObjectPoints>(0, rows, rowGrain(image.width), [&](int begin, int end) {
    std::vector<std::uint32_t> sums(static_cast<std::size_t>(image.width));
    ObjectPoints points;
    for (int i = begin; i < end; ++i)
      points = points + pointsOfRow<Channels>(image, test, square, std::int64_t{i} * square.raster, sums);
    return points;
  });
}

bool isObject(const ObjectImage& image, const ObjectTest& test, int x, int y)
{
  const std::uint8_t* p = pixelAt(image, x, y);
  if (image.channels != 4) return test(p[0]);
  return test(p[0]) && test(p[1]) && test(p[2]);
}

bool isEdge(const ObjectImage& image, const ObjectTest& test, PixelPosition at)
{
  int count = 0;
  const int right = std::min(at.x + kEdgeReach, image.width - 1);
  const int bottom = std::min(at.y + kEdgeReach, image.height - 1);
  for (int y = std::max(at.y - kEdgeReach, 0); y <= bottom; ++y)
    for (int x = std::max(at.x - kEdgeReach, 0); x <= right; ++x)
      if (isObject(image, test, x, y) && ++count > kEdgePixels) return true;
  return false;
}

} // namespace

ObjectPoints objectPoints(const ObjectImage& image, const ObjectTest& test, const ObjectSquare& square)
{
  if (image.width <= 0 || image.height <= 0) return {};
  return image.channels == 4 ? pointsOfImage<4>(image, test, square) : pointsOfImage<1>(image, test, square);
}

std::array<std::uint64_t, 256> greyHistogram(const ObjectImage& image, int margin)
{
  std::array<std::uint64_t, 256> counts{};
  for (int y = margin; y < image.height - margin; ++y) {
    const std::uint8_t* p = pixelAt(image, margin, y);
    for (int x = margin; x < image.width - margin; ++x, p += image.channels)
      ++counts[static_cast<std::size_t>(image.channels == 4 ? greyOf<4>(p) : greyOf<1>(p))];
  }
  return counts;
}

bool findEdge(const ObjectImage& image, const ObjectTest& test, PixelPosition from, PixelPosition to,
              PixelPosition& edge)
{
  // Bresenham's line for all octants: error counts how far the pixel lies from the ideal line.
  const int dx = std::abs(to.x - from.x);
  const int dy = -std::abs(to.y - from.y);
  const int stepX = from.x < to.x ? 1 : -1;
  const int stepY = from.y < to.y ? 1 : -1;
  int error = dx + dy;
  PixelPosition at = from;
  while (!isEdge(image, test, at)) {
    if (at == to) return false;
    const int twice = 2 * error;
    if (twice >= dy) {
      error += dy;
      at.x += stepX;
    }
    if (twice <= dx) {
      error += dx;
      at.y += stepY;
    }
  }
  edge = at;
  return true;
}

} // namespace kernels
