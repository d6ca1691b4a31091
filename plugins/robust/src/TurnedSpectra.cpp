#include "TurnedSpectra.h"

#include "mc/McRound.h"

#include <algorithm>
#include <cmath>

namespace robust {
namespace {

// Width in samples of the peaks: they have to be met by an angle beside the right one.
constexpr double kPeakWidth = 1.2;
// Share of a side over which a slice fades out towards its border.
constexpr double kFade = 0.1;

double fadeAt(double x, int n)
{
  const double fromEnd = (std::min(x, n - 1.0 - x) + 0.5) / (kFade * n);
  return std::clamp(fromEnd, 0.0, 1.0);
}

/// The channel that shows most: grey, or a colour where the grey values are all alike.
std::size_t strongest(const std::vector<Field>& channels)
{
  std::vector<double> powers;
  for (const Field& channel : channels) {
    double sum = 0.0;
    for (const float v : channel.values) sum += static_cast<double>(v) * static_cast<double>(v);
    powers.push_back(sum);
  }
  return static_cast<std::size_t>(std::max_element(powers.begin(), powers.end()) - powers.begin());
}

std::size_t periodic(int i, int n) { return static_cast<std::size_t>((i % n + n) % n); }

} // namespace

TurnedSpectra::TurnedSpectra(const Level& reference, const Level& moved)
  : m_movedLevel(moved), m_pixel(reference.pixel),
    m_side(spectral::fastSide(
        mc::truncToInt(1.2 * std::max({reference.width, reference.height, moved.width, moved.height})))),
    m_channel(strongest(reference.flat)), m_transfer(spectral::gaussianTransfer(m_side, kPeakWidth)),
    m_reference(turned(reference, {}))
{
}

spectral::Spectrum TurnedSpectra::movedSpectrum(double degrees, bool mirrored) const
{
  return turned(m_movedLevel, {degrees, {}, mirrored});
}

spectral::Spectrum TurnedSpectra::turned(const Level& level, const RigidMotion& motion) const
{
  const auto side = static_cast<std::size_t>(m_side);
  spectral::Spectrum square(side * side), spectrum;
  const int half = m_side / 2;
  const Point origin = motion.mapInverse({0.0, 0.0}), unitX = motion.mapInverse({1.0, 0.0});
  const Point unitY = motion.mapInverse({0.0, 1.0});
  const Field& flat = level.flat[m_channel];
  for (int y = 0; y < m_side; ++y)
    for (int x = 0; x < m_side; ++x) {
      const double u = x - half, v = y - half;
      const double px = level.centre.x + origin.x + u * unitX.x + v * unitY.x;
      const double py = level.centre.y + origin.y + u * unitX.y + v * unitY.y;
      if (!(px >= 0.0 && py >= 0.0 && px < level.width - 1 && py < level.height - 1)) continue;
      const int column = mc::truncToIndex(px), row = mc::truncToIndex(py);
      const auto fx = static_cast<float>(px - column), fy = static_cast<float>(py - row);
      const float *a = flat.row(row) + column, *b = flat.row(row + 1) + column;
      const float upper = a[0] + (a[1] - a[0]) * fx, lower = b[0] + (b[1] - b[0]) * fx;
      const auto fade = static_cast<float>(fadeAt(px, level.width) * fadeAt(py, level.height));
      square[static_cast<std::size_t>(y) * side + static_cast<std::size_t>(x)] =
          (upper + (lower - upper) * fy) * level.relevant.row(row)[column] * fade;
    }
  spectral::Fourier(m_side, m_side).forward(square, spectrum);
  return spectrum;
}

TurnedSpectra::Peaks TurnedSpectra::peaksAt(double degrees, bool mirrored, const ShiftReach& reach,
                                            int count) const
{
  const spectral::Spectrum moved = movedSpectrum(degrees, mirrored);
  const auto side = static_cast<std::size_t>(m_side);
  spectral::Spectrum cross(moved.size()), surface;
  for (std::size_t y = 0; y < side; ++y)
    for (std::size_t x = 0; x < side; ++x) {
      const std::size_t i = y * side + x;
      const std::complex<float> a = m_reference[i], b = moved[i];
      const float size = std::sqrt((a.real() * a.real() + a.imag() * a.imag()) *
                                   (b.real() * b.real() + b.imag() * b.imag()));
      const float weight = m_transfer[y] * m_transfer[x] / (size + 1e-6f);
      // After half a turn the spectrum is its own conjugate: both surfaces, which are real, from one
      // transform.
      const std::complex<float> here = a * std::conj(b), opposite = a * b;
      cross[i] = {weight * (here.real() - opposite.imag()), weight * (here.imag() + opposite.real())};
    }
  spectral::Fourier(m_side, m_side).backward(cross, surface);
  return {highest(surface, false, reach, count), highest(surface, true, reach, count)};
}

std::vector<ShiftPeak> TurnedSpectra::highest(const spectral::Spectrum& surface, bool imaginary,
                                              const ShiftReach& reach, int count) const
{
  const auto at = [&](int x, int y) {
    const std::complex<float> v =
        surface[periodic(y, m_side) * static_cast<std::size_t>(m_side) + periodic(x, m_side)];
    return imaginary ? v.imag() : v.real();
  };
  const double distance = reach.distance / m_pixel;
  const double middleX = reach.middle.x / m_pixel, middleY = reach.middle.y / m_pixel;
  const int half = m_side / 2;
  std::vector<ShiftPeak> peaks;
  for (int y = 1 - half; y < half; ++y)
    for (int x = 1 - half; x < half; ++x) {
      if ((x - middleX) * (x - middleX) + (y - middleY) * (y - middleY) > distance * distance) continue;
      const float v = at(x, y);
      if (!peaks.empty() && static_cast<int>(peaks.size()) >= count &&
          v <= static_cast<float>(peaks.back().height))
        continue;
      if (v < at(x - 1, y) || v <= at(x + 1, y) || v < at(x, y - 1) || v <= at(x, y + 1)) continue;
      const ShiftPeak peak{{x * m_pixel, y * m_pixel}, static_cast<double>(v)};
      peaks.insert(
          std::upper_bound(peaks.begin(), peaks.end(), peak,
                           [](const ShiftPeak& a, const ShiftPeak& b) { return a.height > b.height; }),
          peak);
      if (static_cast<int>(peaks.size()) > count) peaks.pop_back();
    }
  return peaks;
}

} // namespace robust
