#include "PolarSpectrum.h"

#include "mc/McMath.h"
#include "mc/McRound.h"

#include <algorithm>
#include <utility>

namespace spectral {
namespace {

/// Between the four values of a square around a position; 0 outside.
float sample(const std::vector<float>& square, int side, double x, double y)
{
  const int column = mc::floorToInt(x), row = mc::floorToInt(y);
  if (column < 0 || row < 0 || column + 1 >= side || row + 1 >= side) return 0.0f;
  const float fx = static_cast<float>(x - column), fy = static_cast<float>(y - row);
  const float* p = square.data() + static_cast<std::ptrdiff_t>(row) * side + column;
  const float* q = p + side;
  return (p[0] + (p[1] - p[0]) * fx) * (1.0f - fy) + (q[0] + (q[1] - q[0]) * fx) * fy;
}

/// The logarithms of the magnitudes with frequency 0 in the middle.
std::vector<float> magnitudesOf(const Spectrum& spectrum, int side)
{
  std::vector<float> magnitudes(spectrum.size());
  const int half = side / 2;
  for (int y = 0; y < side; ++y)
    for (int x = 0; x < side; ++x) {
      const auto from = static_cast<std::size_t>((y + half) % side) * static_cast<std::size_t>(side) +
                        static_cast<std::size_t>((x + half) % side);
      const auto to =
          static_cast<std::size_t>(y) * static_cast<std::size_t>(side) + static_cast<std::size_t>(x);
      magnitudes[to] = static_cast<float>(mc::log(1.0 + static_cast<double>(std::abs(spectrum[from]))));
    }
  return magnitudes;
}

/// Cosine and sine of every angle of the grid.
std::vector<std::pair<double, double>> directionsOf(int angles)
{
  std::vector<std::pair<double, double>> directions;
  for (int a = 0; a < angles; ++a) {
    double sine = 0.0, cosine = 1.0;
    mc::sinCosDegrees(180.0 * a / angles, sine, cosine);
    directions.emplace_back(cosine, sine);
  }
  return directions;
}

} // namespace

Field polarSpectrum(const Spectrum& spectrum, int side, const PolarGrid& grid)
{
  Field polar{grid.radii, grid.angles, {}};
  polar.values.reserve(static_cast<std::size_t>(grid.radii) * static_cast<std::size_t>(grid.angles));
  const std::vector<float> magnitudes = magnitudesOf(spectrum, side);
  const auto directions = directionsOf(grid.angles);
  const int half = side / 2;
  for (int r = 0; r < grid.radii; ++r) {
    const double share = (r + 0.5) / grid.radii;
    const double radius = half * grid.lowest * mc::exp(share * mc::log(grid.highest / grid.lowest));
    const auto begin = static_cast<std::ptrdiff_t>(polar.values.size());
    double sum = 0.0;
    for (const auto& [cosine, sine] : directions) {
      polar.values.push_back(sample(magnitudes, side, half + radius * cosine, half + radius * sine));
      sum += static_cast<double>(polar.values.back());
    }
    const auto mean = static_cast<float>(sum / grid.angles);
    // Faded out at the ends of the radii, which are no neighbours of each other; angles are periodic.
    const auto weight = static_cast<float>(0.5 - 0.5 * mc::cos(2.0 * mc::kPi * share));
    for (auto v = polar.values.begin() + begin; v != polar.values.end(); ++v) *v = (*v - mean) * weight;
  }
  return polar;
}

std::vector<double> highestOfRow(const float* row, int n, int count)
{
  const auto at = [&](int i) { return static_cast<double>(row[(i + n) % n]); };
  std::vector<int> maxima;
  for (int i = 0; i < n; ++i)
    if (at(i) > at(i - 1) && at(i) >= at(i + 1)) maxima.push_back(i);
  std::stable_sort(maxima.begin(), maxima.end(), [&](int a, int b) { return at(a) > at(b); });
  maxima.resize(std::min(maxima.size(), static_cast<std::size_t>(count)));
  std::vector<double> places;
  for (const int i : maxima) places.push_back(i + topBetween(at(i - 1), at(i), at(i + 1)).offset);
  return places;
}

} // namespace spectral
