#include "Content.h"

#include "Hull.h"

#include <algorithm>
#include <cstring>
#include <map>

namespace robust {
namespace {

// A colour is looked at when it takes this share of the border.
constexpr double kBorderShare = 0.04;
// Corners of a picture that was turned and cut off by the slice's frame: at most eight, and one for
// roughness.
constexpr int kMostCorners = 9;
constexpr double kFilledShare = 0.985;

/// Access to the colour of a pixel as one number.
class Colours {
public:
  explicit Colours(const SliceImage& slice) : m_slice(slice) {}
  std::uint32_t at(std::size_t pixel) const
  {
    if (m_slice.channels == 1) return m_slice.samples[pixel];
    const unsigned char* p = m_slice.samples + 4 * pixel;
    return static_cast<std::uint32_t>(p[0]) << 16 | static_cast<std::uint32_t>(p[1]) << 8 | p[2];
  }

private:
  const SliceImage& m_slice;
};

/// The pixels on the border, clockwise from the first.
std::vector<std::size_t> borderPixels(int width, int height)
{
  const auto index = [width](int x, int y) {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
  };
  std::vector<std::size_t> border;
  for (int x = 0; x < width; ++x) border.push_back(index(x, 0));
  for (int y = 1; y < height; ++y) border.push_back(index(width - 1, y));
  for (int x = width - 2; x >= 0; --x) border.push_back(index(x, height - 1));
  for (int y = height - 2; y > 0; --y) border.push_back(index(0, y));
  return border;
}

/// The border pixels of the colour that most of them have; empty when that is rare.
std::vector<std::size_t> plainBorder(const Colours& colours, const std::vector<std::size_t>& border)
{
  std::map<std::uint32_t, int> counts;
  for (const std::size_t p : border) ++counts[colours.at(p)];
  const auto most = std::max_element(counts.begin(), counts.end(),
                                     [](const auto& a, const auto& b) { return a.second < b.second; });
  std::vector<std::size_t> plain;
  if (most->second < kBorderShare * static_cast<double>(border.size())) return plain;
  std::copy_if(border.begin(), border.end(), std::back_inserter(plain),
               [&](std::size_t p) { return colours.at(p) == most->first; });
  return plain;
}

/// 1 where a pixel is connected with the seeds over pixels of their colour.
std::vector<std::uint8_t> flooded(const Colours& colours, int width, int height,
                                  const std::vector<std::size_t>& seeds)
{
  const auto w = static_cast<std::size_t>(width), n = w * static_cast<std::size_t>(height);
  std::vector<std::uint8_t> inside(n, 0);
  std::vector<std::size_t> open;
  const std::uint32_t colour = colours.at(seeds.front());
  const auto visit = [&](std::size_t p) {
    if (inside[p] || colours.at(p) != colour) return;
    inside[p] = 1;
    open.push_back(p);
  };
  for (const std::size_t p : seeds) visit(p);
  while (!open.empty()) {
    const std::size_t p = open.back();
    open.pop_back();
    const std::size_t x = p % w;
    if (x > 0) visit(p - 1);
    if (x + 1 < w) visit(p + 1);
    if (p >= w) visit(p - w);
    if (p + w < n) visit(p + w);
  }
  return inside;
}

/// The outermost pixels of each row that are not outside.
std::vector<HullPoint> rims(const std::vector<std::uint8_t>& outside, int width, int height)
{
  std::vector<HullPoint> points;
  for (int y = 0; y < height; ++y) {
    const std::uint8_t* row = outside.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    const auto* first =
        static_cast<const std::uint8_t*>(std::memchr(row, 0, static_cast<std::size_t>(width)));
    if (!first) continue;
    int last = width - 1;
    while (row[last]) --last;
    points.push_back({static_cast<double>(first - row), static_cast<double>(y)});
    points.push_back({static_cast<double>(last), static_cast<double>(y)});
  }
  return points;
}

/// Whether what is not outside is a polygon, filled, with the few corners of a moved picture.
bool isMovedPicture(const std::vector<std::uint8_t>& outside, int width, int height)
{
  const std::vector<HullPoint> hull = convexHull(rims(outside, width, height));
  if (hull.size() < 3) return false;
  const auto filled = static_cast<double>(std::count(outside.begin(), outside.end(), 0));
  if (filled < kFilledShare * hullArea(hull)) return false;
  const double tolerance = std::max(1.2, 0.006 * std::max(width, height));
  return static_cast<int>(simplified(hull, tolerance).size()) <= kMostCorners;
}

} // namespace

Content contentOf(const SliceImage& slice)
{
  Content content{Field(slice.width, slice.height, 1.0f), Field(slice.width, slice.height, 1.0f)};
  const Colours colours(slice);
  const std::vector<std::size_t> seeds = plainBorder(colours, borderPixels(slice.width, slice.height));
  if (!seeds.empty()) {
    const std::vector<std::uint8_t> outside = flooded(colours, slice.width, slice.height, seeds);
    const bool padding = isMovedPicture(outside, slice.width, slice.height);
    Field& excluded = padding ? content.valid : content.relevant;
    for (std::size_t i = 0; i < outside.size(); ++i)
      if (outside[i]) excluded.values[i] = 0.0f;
  }
  for (std::size_t i = 0; i < slice.mask.size(); ++i)
    if (!slice.mask[i]) content.valid.values[i] = 0.0f;
  return content;
}

} // namespace robust
