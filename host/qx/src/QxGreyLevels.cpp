#include "QxGreyLevels.h"

#include "mc/McRound.h"

#include <cstddef>
#include <limits>
#include <type_traits>
#include <vector>

namespace {

/// The line through (black, 0) and (white, 255), evaluated in Real.
template <class Real>
struct GreyLine {
  GreyLine(float black, float white)
    : start(static_cast<Real>(black)),
      slope(white == black ? std::numeric_limits<Real>::infinity()
                           : static_cast<Real>(255.0 / (double(white) - double(black))))
  {
  }
  template <class T>
  std::uint8_t operator()(T value) const
  {
    return mc::truncToByte(static_cast<float>((static_cast<Real>(value) - start) * slope + Real(0.5)));
  }
  Real start;
  Real slope;
};

/// All values of an 8- or 16-bit type, so that a pixel costs one look-up.
template <class T>
struct GreyTable {
  using Index = std::make_unsigned_t<T>;
  GreyTable(float black, float white) : levels(std::size_t(std::numeric_limits<Index>::max()) + 1)
  {
    const GreyLine<float> line(black, white);
    for (std::size_t i = 0; i < levels.size(); ++i) levels[i] = line(static_cast<T>(static_cast<Index>(i)));
  }
  std::uint8_t operator()(T value) const { return levels[static_cast<Index>(value)]; }
  std::vector<std::uint8_t> levels;
};

// 32-bit integers and doubles have more digits than a float, which a narrow window would show as bands.
template <class T>
using GreyMap =
    std::conditional_t<std::is_integral_v<T> && sizeof(T) <= 2, GreyTable<T>,
                       GreyLine<std::conditional_t<sizeof(T) == 4 && !std::is_integral_v<T>, float, double>>>;

template <class T>
void convert(const T* values, float black, float white, QImage& image)
{
  const GreyMap<T> map(black, white);
  const auto width = static_cast<std::size_t>(image.width());
  for (int y = 0; y < image.height(); ++y) {
    const T* row = values + static_cast<std::size_t>(y) * width;
    std::uint8_t* grey = image.scanLine(y);
    for (std::size_t x = 0; x < width; ++x) grey[x] = map(row[x]);
  }
}

} // namespace

QImage greyImageOf(const void* values, McPrimType type, int width, int height, float black, float white)
{
  QImage image(width, height, QImage::Format_Grayscale8);
  if (image.isNull()) return image;
  mcVisit(type, [&](auto zero) {
    using T = decltype(zero);
    convert(static_cast<const T*>(values), black, white, image);
  });
  return image;
}
