#include "samples/Phantom.h"

#include "mc/McMath.h"
#include "mc/McRound.h"
#include "phantom/PhantomSection.h"

#include <algorithm>
#include <cmath>

namespace samples {

namespace {

constexpr int kMostSlices = 65535;
constexpr int kLeastSize = 16;
constexpr int kMostSize = 65535;
constexpr double kMostAngle = 180.0;
constexpr double kMostNoise = 128.0;

constexpr int kArea = 128; // pixels; the objects of so large a square are looked up at once
constexpr int kPart = 16;  // pixels; the side of a square that is rendered with one short list of objects

/// What differs between the slices beside the tissue. The numbers are part of every phantom.
enum Property : std::int64_t { Displacement = 100, Staining = 101, Noise = 102 };

std::uint64_t sliceKey(std::uint64_t seed, Property property, int slice)
{
  return siteKey(scramble(seed), property, slice, 1);
}

double limited(double v, double most) { return v >= 0.0 ? std::fmin(v, most) : 0.0; }

bool isWithin(double v, double most) { return v >= 0.0 && v <= most; }

/// Roughly normally distributed with deviation 1: the sum of four 16-bit numbers, whose deviation is 65536 /
/// sqrt(3).
double noiseOf(std::uint64_t bits)
{
  const auto sum = (bits & 0xFFFF) + ((bits >> 16) & 0xFFFF) + ((bits >> 32) & 0xFFFF) + (bits >> 48);
  return (static_cast<double>(sum) - 131070.0) * (1.7320508075688772 / 65536.0);
}

/// From the pixels of a slice to the tissue.
class Mapping {
public:
  Mapping(const PhantomTransform& transform, int size) : m_wholeCentre(size / 2), m_centre(m_wholeCentre)
  {
    mc::sinCosDegrees(static_cast<double>(transform.angleDegrees), m_sine, m_cosine);
    m_shiftX = m_centre + static_cast<double>(transform.tx);
    m_shiftY = m_centre + static_cast<double>(transform.ty);
  }
  Place operator()(double x, double y) const
  {
    const double u = x - m_centre, v = y - m_centre;
    return {u * m_cosine + v * m_sine + m_shiftX, v * m_cosine - u * m_sine + m_shiftY, 0.0};
  }

private:
  int m_wholeCentre; ///< rounded down for odd sizes
  double m_centre, m_sine = 0, m_cosine = 1, m_shiftX, m_shiftY;
};

/// A square of pixels, cut off at the border of the slice.
struct Square {
  int left, top, right, bottom; ///< right and bottom are outside

  Square(int x, int y, int side, int endX, int endY)
    : left(x), top(y), right(std::min(x + side, endX)), bottom(std::min(y + side, endY))
  {
  }
  Disc around(const Mapping& mapping) const
  {
    const double width = right - left, height = bottom - top;
    const Place middle = mapping(left + 0.5 * width, top + 0.5 * height);
    return {middle.x, middle.y, 0.5 * length({width, height, 0}) + 1.0};
  }
};

/// Renders one slice square by square.
class Renderer {
public:
  Renderer(const PhantomOptions& options, const PhantomTransform& transform, int slice, std::uint8_t* pixels)
    : m_size(options.size), m_noise(options.noise), m_noiseKey(sliceKey(options.seed, Noise, slice)),
      m_mapping(transform, options.size), m_section(options.seed, slice), m_pixels(pixels)
  {
    PhantomRandom staining(sliceKey(options.seed, Staining, slice));
    m_contrast = staining.within(0.88, 1.08);
    m_brightness = staining.within(-8.0, 8.0);
  }
  void render()
  {
    for (int y = 0; y < m_size; y += kArea)
      for (int x = 0; x < m_size; x += kArea) renderArea(Square(x, y, kArea, m_size, m_size));
  }

private:
  void renderArea(const Square& area)
  {
    m_section.gather(area.around(m_mapping));
    for (int y = area.top; y < area.bottom; y += kPart)
      for (int x = area.left; x < area.right; x += kPart)
        renderPart(Square(x, y, kPart, area.right, area.bottom));
  }
  void renderPart(const Square& part)
  {
    m_section.focus(part.around(m_mapping));
    for (int y = part.top; y < part.bottom; ++y)
      for (int x = part.left; x < part.right; ++x) {
        const auto index = static_cast<std::uint64_t>(y) * static_cast<std::uint64_t>(m_size) +
                           static_cast<std::uint64_t>(x);
        m_pixels[index] = pixel(m_mapping(x, y), index);
      }
  }
  std::uint8_t pixel(const Place& place, std::uint64_t index)
  {
    const double stained = 128.0 + (m_section.grey(place.x, place.y) - 128.0) * m_contrast + m_brightness;
    const double noisy = stained + m_noise * noiseOf(scramble(m_noiseKey + index * 0xD6E8FEB86659FD93ull));
    return mc::roundHalfEven<std::uint8_t>(noisy);
  }

  int m_size;
  double m_noise;
  double m_contrast = 1.0;
  double m_brightness = 0.0;
  std::uint64_t m_noiseKey;
  Mapping m_mapping;
  PhantomSection m_section;
  std::uint8_t* m_pixels;
};

} // namespace

std::string check(const PhantomOptions& options)
{
  const auto whole = [](int v) { return std::to_string(v); };
  if (options.slices < 1 || options.slices > kMostSlices)
    return "The number of slices must lie within 1 and " + whole(kMostSlices) + ".";
  if (options.size < kLeastSize || options.size > kMostSize)
    return "The size must lie within " + whole(kLeastSize) + " and " + whole(kMostSize) + " pixels.";
  if (!isWithin(options.maxShift, options.size))
    return "The largest shift must lie within 0 and the size, " + whole(options.size) + " pixels.";
  if (!isWithin(options.maxAngle, kMostAngle)) return "The largest angle must lie within 0 and 180 degrees.";
  if (!isWithin(options.noise, kMostNoise)) return "The noise must lie within 0 and 128 grey levels.";
  return {};
}

Phantom::Phantom(const PhantomOptions& options) : m_options(options)
{
  m_options.slices = std::clamp(options.slices, 1, kMostSlices);
  m_options.size = std::clamp(options.size, kLeastSize, kMostSize);
  m_options.maxShift = limited(options.maxShift, m_options.size);
  m_options.maxAngle = limited(options.maxAngle, kMostAngle);
  m_options.noise = limited(options.noise, kMostNoise);
  for (int k = 0; k < m_options.slices; ++k) {
    PhantomRandom random(sliceKey(m_options.seed, Displacement, k));
    const auto within = [&random](double most) {
      return static_cast<float>(most * random.within(-1.0, 1.0));
    };
    PhantomTransform transform;
    transform.tx = within(m_options.maxShift);
    transform.ty = within(m_options.maxShift);
    transform.angleDegrees = within(m_options.maxAngle);
    m_truth.push_back(transform);
  }
}

void Phantom::renderSlice(int k, std::uint8_t* pixels) const
{
  Renderer(m_options, m_truth[static_cast<std::size_t>(k)], k, pixels).render();
}

} // namespace samples
